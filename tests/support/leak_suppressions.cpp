// The one loss of memory that the library means: the leak sanitizer asks every program for these by name.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() { return "leak:Norvala_RandUniform_BW8\n"; }
