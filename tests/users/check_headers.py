"""Compiles the public headers as hosts do: in every language version, beside names of their own, with every warning.

usage: check_headers.py HEADERS GENERATED_HEADERS COMPILER...
COMPILER is a C compiler, with options after commas (clang,--target=i686-w64-mingw32).
"""

import concurrent.futures
import os
import pathlib
import re
import subprocess
import sys

OPTIONS = "-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -fsyntax-only".split()
VERSIONS = ("c99", "c11", "c17", "c2x", "c++11", "c++14", "c++17", "c++20")
HEADERS = '#include "norvala.h"\n#include "norvala_helpers.h"\n'
USE = """
int32_t Use(const BW8* src, BW8* dst) {
  const NorvalaRect rect = {0, 0, 8, 8};
  const int32_t interpolation = NORVALA_LINEAR | NORVALA_SMOOTH_EDGES;
  const double quad[8] = {0, 0, 7, 0, 7, 7, 0, 7};
  return Norvala_WarpAffineQuad(src, 8, 8, 8, &rect, quad, dst, 8, &rect, quad, interpolation) +
         Norvala_FilterGauss(src, 8, dst, 8, 4, 4, NORVALA_GAUSS_3X3) + NorvalaLayerSize(8, 2.5F);
}
"""
# All headers and the short names; norvala_load.h includes windows.h behind the others where there is one.
ALL = HEADERS + '#include "norvala_load.h"\n' + USE + """
static RegionSize size = {1, 2};
static Rect region = {1, 2, 3, 4};
static const INT32 number = -1;
int32_t Sum(void) { return size.width + region.x + number; }
"""
OWN_NAMES = "#define NORVALA_NO_SHORT_NAMES\n" + HEADERS + USE


def programs(compiler, version):
    yield "alone", ALL
    yield "own names", "typedef long INT32;\nstruct Rect { float x; };\n" + OWN_NAMES + "struct Rect own = {1.0F};\n"
    if "++" in version:
        yield "own namespace", "namespace host { struct Rect { float x; }; using INT32 = long; }\n" \
            "using namespace host;\n" + OWN_NAMES + "Rect own = {1.0F};\nINT32 number = 1;\n"
    if version in ("c++17", "c++20") and not compiler.startswith("clang,"):  # which finds no C++ library
        yield "norvala.hpp", '#include "norvala.hpp"\n' + USE
    if "mingw" in compiler:
        yield "after windows.h", "#include <windows.h>\n" + ALL
        yield "after windows.h with NOMINMAX", "#define NOMINMAX\n#include <windows.h>\n" + ALL


def compile_one(compiler, version, name, source):
    command = [*compiler.split(","), "-std=" + version, *OPTIONS, *("-I" + folder for folder in sys.argv[1:3])]
    result = subprocess.run([*command, "-x", "c++" if "++" in version else "c", "-"], input=source, capture_output=True,
                            text=True, check=False)
    assert result.returncode == 0, f"{compiler} {version}, {name}:\n{result.stderr}"


def main():
    thrown = re.findall(r'\b(Norvala_\w+)[(,][^;{]*?"(Norvala_\w+)"|"(Norvala_\w+)", (Norvala_\w+)',
                        pathlib.Path(sys.argv[1], "norvala.hpp").read_text("utf-8"))
    for pair in thrown:
        assert (pair[0] or pair[2]) == (pair[1] or pair[3]), f"norvala.hpp names {pair} for one function"
    jobs = [(compiler, version, *program) for compiler in sys.argv[3:] for version in VERSIONS
            for program in programs(compiler, version)]
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        list(pool.map(compile_one, *zip(*jobs)))
    print(f"{len(jobs)} programs compile, {len(thrown)} calls throw by their own name")
    assert len(thrown) >= 40


if __name__ == "__main__":
    main()
