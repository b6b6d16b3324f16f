// The load routine of Norvala.dll: reports success and does nothing else.

extern "C" int __stdcall DllMain(void*, unsigned long, void*) { return 1; }
