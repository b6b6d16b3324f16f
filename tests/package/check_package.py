"""Checks that two builds packed equal archives, unpacks one elsewhere, checks its sums, builds C and C++ hosts against it
and runs them.

usage: check_package.py BUILD BUILD_AGAIN CMAKE_FOLDER      (CMAKE_FOLDER holds the toolchains and what runs Wine)
"""

import filecmp
import glob
import hashlib
import os
import shutil
import subprocess
import sys
import zipfile

CMAKE = """cmake_minimum_required(VERSION 3.25)
project(Hosts C CXX)
set(CMAKE_CXX_STANDARD 20)
find_package(Norvala 1.0 REQUIRED)
foreach(language c cpp)
  configure_file(host.c linked.${language} COPYONLY)
  add_executable(linked_${language} ${PROJECT_BINARY_DIR}/linked.${language})
  target_link_libraries(linked_${language} PRIVATE Norvala::Norvala)
  target_link_options(linked_${language} PRIVATE -static-libgcc)
endforeach()
add_executable(loaded ${NORVALA_EXAMPLES}/loaded.c)
target_include_directories(loaded PRIVATE $<TARGET_PROPERTY:Norvala::Norvala,INTERFACE_INCLUDE_DIRECTORIES>)
"""

HOST = """#include <norvala.h>
#include <stdio.h>
#include <string.h>

int main(void) {
  BW8 image[3][4] = {{1, 2, 3, 4}, {5, 6, 7, 8}, {9, 10, 11, 12}};
  double mean = 0;
  if (strcmp(Norvala_GetVersion(), "%s.0") != 0) return 1;
  if (Norvala_MeanBW8_C1R(&image[0][0], 4, 4, 3, &mean) != 0) return 2;
  printf("%%.2f\\n", mean);
  return 0;
}
"""

# By the bitness in the archive's name: the toolchain, and what runs its programs.
TARGETS = {"win32": ("i686-w64-mingw32.cmake", "wine-run"), "win64": ("x86_64-w64-mingw32.cmake", "wine64-run")}


def main():
    build, build_again, cmake_folder = (os.path.abspath(argument) for argument in sys.argv[1:])
    archive, = glob.glob(os.path.join(build, "norvala-*.zip"))
    again, = glob.glob(os.path.join(build_again, "norvala-*.zip"))
    assert filecmp.cmp(archive, again, shallow=False), "the archive is not reproducible"
    folder = os.path.join(build, "package-test")
    shutil.rmtree(folder, ignore_errors=True)
    with zipfile.ZipFile(archive) as file:
        file.extractall(folder)
    name = os.path.splitext(os.path.basename(archive))[0]
    root = os.path.join(folder, name)
    version, target = name.split("-")[1:]
    toolchain, wine = (os.path.join(cmake_folder, file) for file in TARGETS[target])
    with open(os.path.join(root, "SHA256SUMS"), encoding="utf-8") as sums:
        lines = sums.read().splitlines()
    for line in lines:
        wanted, name = line.split(maxsplit=1)
        with open(os.path.join(root, name), "rb") as file:
            assert hashlib.sha256(file.read()).hexdigest() == wanted, name
    for name in ("bin/Norvala.dll", "lib/Norvala.lib", "lib/libNorvala.dll.a", "lib/Norvala.def", "docs/index.html"):
        assert any(line.endswith("  " + name) for line in lines), name

    hosts = os.path.join(folder, "hosts")
    os.makedirs(hosts)
    for name, text in (("CMakeLists.txt", CMAKE), ("host.c", HOST % version)):
        with open(os.path.join(hosts, name), "w", encoding="utf-8") as file:
            file.write(text)

    def configure(build, toolchain):
        return subprocess.run(["cmake", "-S", hosts, "-B", build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release",
                               "-DCMAKE_TOOLCHAIN_FILE=" + toolchain, "-DCMAKE_PREFIX_PATH=" + root,
                               "-DNORVALA_EXAMPLES=" + os.path.join(root, "examples")],
                              capture_output=True, text=True)

    build = os.path.join(folder, "build")
    configured = configure(build, toolchain)
    assert configured.returncode == 0, configured.stderr
    subprocess.run(["cmake", "--build", build], check=True, stdout=subprocess.DEVNULL)
    shutil.copy(os.path.join(root, "bin/Norvala.dll"), build)

    other, = (os.path.join(cmake_folder, TARGETS[name][0]) for name in TARGETS if name != target)
    refused = configure(os.path.join(folder, "refused"), other)
    assert refused.returncode != 0 and f"{version} for {target[3:]}-bit programs" in refused.stderr, refused.stderr

    def run(name):
        result = subprocess.run([wine, os.path.join(build, name)], capture_output=True, text=True, cwd=build)
        return result.stdout.replace("\r", "")

    assert run("linked_c.exe") == run("linked_cpp.exe") == "6.50\n"
    smoothed = run("loaded.exe")
    print(smoothed)
    # The bright pixel of 240 spreads by the weights 1 2 1, 2 4 2, 1 2 1 over 16.
    assert smoothed.splitlines()[1].split() == ["0", "30", "60", "30", "0", "0"], smoothed
    subprocess.run([wine, os.path.join(root, "examples/gallery.exe"), os.path.join(root, "bin/Norvala.dll"),
                    os.path.join(root, "examples/coffee.png"), os.path.join(folder, "gallery")], check=True, stdout=subprocess.DEVNULL)
    assert os.path.getsize(os.path.join(folder, "gallery/index.html")) > 1000
    print(f"{len(lines)} files, hosts ran")


if __name__ == "__main__":
    main()
