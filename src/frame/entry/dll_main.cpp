// The load routine of Norvala.dll: reports success and does nothing else.

extern "C" __attribute__((stdcall, force_align_arg_pointer)) int DllMain(void*, unsigned long, void*) { return 1; }
