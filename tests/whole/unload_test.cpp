#include <gtest/gtest.h>

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

// The program does not link the library itself, so every round really loads and unloads it.
TEST(UnloadTest, LeavesNothing) {
  for (int i = 0; i < 100; ++i) {
#ifdef _WIN32
    const HMODULE library = LoadLibraryA("Norvala.dll");
    ASSERT_NE(GetProcAddress(library, "Norvala_GetVersion"), nullptr);
    ASSERT_NE(FreeLibrary(library), 0);
    ASSERT_EQ(GetModuleHandleA("Norvala.dll"), nullptr);
#else
    void* const library = dlopen("./libNorvala.so", RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr);
    ASSERT_NE(dlsym(library, "Norvala_GetVersion"), nullptr);
    ASSERT_EQ(dlclose(library), 0);
    ASSERT_EQ(dlopen("./libNorvala.so", RTLD_NOW | RTLD_NOLOAD), nullptr);
#endif
  }
}
