# What ctest runs in build/: the tests of every build that has its own, and those that see several builds or packages.
subdirs(linux64 linux32 sanitize sanitize32 windows)

add_test(same_bits_everywhere python3 ../tests/whole/compare_checksums.py ../tests/whole/checksums.txt
  linux64/checksums -- linux32/checksums -- clang/checksums -- clang32/checksums
  -- qemu-aarch64 -L /usr/aarch64-linux-gnu linux-arm64/checksums
  -- ../cmake/wine-run windows/checksums.exe -- ../cmake/wine64-run windows64/checksums.exe -- sanitize/checksums)
add_test(clang32.whole_hostile_test ./whole_hostile_test --gtest_brief=1)
set_tests_properties(clang32.whole_hostile_test PROPERTIES WORKING_DIRECTORY clang32)
add_test(windows64.tables python3 ../tests/tables/check_tables.py ../include/norvala.h windows64/Norvala.dll
  x86_64-w64-mingw32-objdump)
add_test(windows64.lld_host ../../cmake/wine64-run lld_host.exe)
set_tests_properties(windows64.lld_host PROPERTIES WORKING_DIRECTORY windows64)
add_test(thread_sanitizer threads/whole_threads_test --gtest_brief=1)

add_test(windows.package python3 ../tests/package/check_package.py windows windows-again ../cmake)
add_test(windows64.package python3 ../tests/package/check_package.py windows64 windows64-again ../cmake)

add_test(fuzz ../dev fuzz 30)
set_tests_properties(fuzz PROPERTIES COST 1000)  # the longest one goes first
