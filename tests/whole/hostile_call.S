// The road to an export through a hostile host: the arguments are copied to a stack that keeps only 4-byte alignment,
// and the floating-point units are in a state of the host's choice. Counts the calls that changed that state.

#define JOIN2(a, b) a##b
#define JOIN(a, b) JOIN2(a, b)
#define NAME(symbol) JOIN(__USER_LABEL_PREFIX__, symbol)

// Takes the export's arguments behind the return address, up to 24 words of them.
    .text
    .globl NAME(norvala_hostile_call)
NAME(norvala_hostile_call):
    pushl %ebp
    movl %esp, %ebp
    pushl %esi
    pushl %edi
    pushl %ebx
    subl $16, %esp
    movl NAME(norvala_hostile_target), %edx
    fnstcw -16(%ebp)
    stmxcsr -20(%ebp)
    fldcw NAME(norvala_hostile_x87)
    ldmxcsr NAME(norvala_hostile_mxcsr)
    leal 8(%ebp), %esi
    andl $-16, %esp
    subl $96, %esp
    subl NAME(norvala_hostile_shift), %esp
    movl %esp, %edi
    movl $24, %ecx
    cld
    rep movsl
    call *%edx
    fnstcw -24(%ebp)
    stmxcsr -28(%ebp)
    movw -24(%ebp), %cx
    cmpw NAME(norvala_hostile_x87), %cx
    jne 1f
    movl -28(%ebp), %ecx
    xorl NAME(norvala_hostile_mxcsr), %ecx
    andl $0xFFFFFFC0, %ecx  // all but the sticky exception flags
    jz 2f
1:  incl NAME(norvala_hostile_violations)
2:  fldcw -16(%ebp)
    ldmxcsr -20(%ebp)
    leal -12(%ebp), %esp
    popl %ebx
    popl %edi
    popl %esi
    popl %ebp
    ret

#ifdef __linux__
    .section .note.GNU-stack,"",@progbits
#endif
