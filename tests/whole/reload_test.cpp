#include <gtest/gtest.h>

#ifdef _WIN32
#include <windows.h>

#include <psapi.h>
#else
#include <dlfcn.h>
#include <unistd.h>

#include <fstream>
#endif

namespace {

#ifdef _WIN32
bool LoadAndUnload() {
  HMODULE library = LoadLibraryA("Norvala.dll");
  return library != nullptr && GetProcAddress(library, "Norvala_GetVersion") != nullptr && FreeLibrary(library) != 0;
}
std::size_t UsedBytes() {
  PROCESS_MEMORY_COUNTERS counters{};
  GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
  return counters.PagefileUsage;
}
#else
bool LoadAndUnload() {
  void* library = dlopen("./libNorvala.so", RTLD_NOW | RTLD_LOCAL);
  return library != nullptr && dlsym(library, "Norvala_GetVersion") != nullptr && dlclose(library) == 0;
}
std::size_t UsedBytes() {
  std::size_t total = 0;
  std::size_t resident = 0;
  std::ifstream("/proc/self/statm") >> total >> resident;
  return total * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}
#endif

// The program does not link the library itself, so every round really loads and unloads it.
TEST(ReloadTest, AThousandTimesWithoutGrowth) {
  for (int i = 0; i < 100; ++i) ASSERT_TRUE(LoadAndUnload());
  const std::size_t before = UsedBytes();
  for (int i = 0; i < 1000; ++i) ASSERT_TRUE(LoadAndUnload());
  const std::size_t after = UsedBytes();
  ASSERT_GT(before, 0U);
  EXPECT_LE(after, before + 256 * 1024);
}

}  // namespace
