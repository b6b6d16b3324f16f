"""Unpacks the package elsewhere, checks its sums, builds a C and a C++ host against it and runs them.

usage: check_package.py ZIP FOLDER CMAKE_FOLDER      (CMAKE_FOLDER holds the toolchain file and wine-run)
"""

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
add_executable(linked linked.cpp)
target_link_libraries(linked PRIVATE Norvala::Norvala)
target_link_options(linked PRIVATE -static-libgcc -static-libstdc++)
add_executable(loaded ${NORVALA_EXAMPLES}/smooth.c)
target_include_directories(loaded PRIVATE $<TARGET_PROPERTY:Norvala::Norvala,INTERFACE_INCLUDE_DIRECTORIES>)
"""

LINKED = """#include <norvala.h>

#include <cstdio>
#include <cstring>

int main() {
  BW8 image[3][4] = {{1, 2, 3, 4}, {5, 6, 7, 8}, {9, 10, 11, 12}};
  double mean = 0;
  if (std::strcmp(Norvala_GetVersion(), "1.0.0.0") != 0) return 1;
  if (Norvala_MeanBW8_C1R(&image[0][0], 4, 4, 3, &mean) != 0) return 2;
  std::printf("%.2f\\n", mean);
  return 0;
}
"""



def main():
    archive, folder, cmake_folder = (os.path.abspath(argument) for argument in sys.argv[1:])
    shutil.rmtree(folder, ignore_errors=True)
    with zipfile.ZipFile(archive) as file:
        file.extractall(folder)
    root = os.path.join(folder, os.path.splitext(os.path.basename(archive))[0])
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
    for name, text in (("CMakeLists.txt", CMAKE), ("linked.cpp", LINKED)):
        with open(os.path.join(hosts, name), "w", encoding="utf-8") as file:
            file.write(text)
    build = os.path.join(folder, "build")
    subprocess.run(["cmake", "-S", hosts, "-B", build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release",
                    "-DCMAKE_TOOLCHAIN_FILE=" + os.path.join(cmake_folder, "i686-w64-mingw32.cmake"),
                    "-DNorvala_DIR=" + os.path.join(root, "lib/cmake/Norvala"),
                    "-DNORVALA_EXAMPLES=" + os.path.join(root, "examples")], check=True, stdout=subprocess.DEVNULL)
    subprocess.run(["cmake", "--build", build], check=True, stdout=subprocess.DEVNULL)
    shutil.copy(os.path.join(root, "bin/Norvala.dll"), build)

    def run(name):
        result = subprocess.run([os.path.join(cmake_folder, "wine-run"), os.path.join(build, name)],
                                check=True, capture_output=True, text=True, cwd=build)
        return result.stdout.replace("\r", "")

    assert run("linked.exe") == "6.50\n"
    smoothed = run("loaded.exe")
    print(smoothed)
    # The bright pixel of 240 spreads by the weights 1 2 1, 2 4 2, 1 2 1 over 16.
    assert smoothed.splitlines()[1].split() == ["0", "30", "60", "30", "0", "0"], smoothed
    subprocess.run([os.path.join(cmake_folder, "wine-run"), os.path.join(root, "examples/gallery.exe"),
                    os.path.join(root, "bin/Norvala.dll"), os.path.join(root, "examples/coffee.png"),
                    os.path.join(folder, "gallery")], check=True, stdout=subprocess.DEVNULL)
    assert os.path.getsize(os.path.join(folder, "gallery/index.html")) > 1000
    print(f"{len(lines)} files, hosts ran")


if __name__ == "__main__":
    main()
