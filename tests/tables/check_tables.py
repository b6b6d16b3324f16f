"""Checks what a built library exports and imports against the public header.

usage: check_tables.py HEADER LIBRARY OBJDUMP
"""

import re
import subprocess
import sys


def declared(header):
    with open(header, encoding="utf-8") as file:
        return sorted(re.findall(r"NORVALA_CALL\s+(Norvala_\w+)\s*\(", file.read()))


def main():
    header, library, objdump = sys.argv[1:]
    windows = library.endswith(".dll")
    command = [objdump, "-p" if windows else "-T", library]
    dump = subprocess.run(command, check=True, capture_output=True, text=True).stdout
    problems = []
    if windows:
        table = dump[dump.index("[Ordinal/Name Pointer] Table"):]
        exported = re.findall(r"^\s*\[\s*\d+\](?: \+base\[\s*\d+\]\s+[0-9a-f]+)? (\S+)$", table, re.MULTILINE)
        imports = sorted(re.findall(r"DLL Name: (\S+)", dump))
        if imports != ["KERNEL32.dll", "msvcrt.dll"]:
            problems.append(f"imports {imports}")
        bitness = "NO_SEH" if "pei-i386" in dump else "HIGH_ENTROPY_VA"
        for flag in ("DYNAMIC_BASE", "NX_COMPAT", bitness):
            if flag not in dump:
                problems.append(f"lacks the flag {flag}")
        if not re.search(r"^Entry 2 (?!0+ )\S+ \S+ Resource Directory", dump, re.MULTILINE):
            problems.append("lacks a version resource")
    else:
        exported = [line.split()[-1] for line in dump.splitlines() if " g " in line and "*UND*" not in line]
    names = declared(header)
    missing = sorted(set(names) - set(exported))
    extra = sorted(set(exported) - set(names))
    if missing:
        problems.append(f"does not export {missing}")
    if extra:
        problems.append(f"exports {extra}")
    if len(names) != len(set(names)):
        problems.append("a name is declared twice")
    print(f"{library}: {len(exported)} exports, {len(names)} declared")
    for problem in problems:
        print(f"{library} {problem}")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
