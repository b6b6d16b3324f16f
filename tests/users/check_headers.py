"""Compiles the public headers as hosts do: in every language version, beside names of their own, with every warning.

usage: check_headers.py HEADERS GENERATED_HEADERS COMPILER...
COMPILER is a C compiler, with options after commas (clang,--target=i686-w64-mingw32); ++ makes it one for C++.
"""

import concurrent.futures
import os
import re
import subprocess
import sys

WARNINGS = "-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -fsyntax-only".split()
HEADERS = '#include "norvala.h"\n#include "norvala_helpers.h"\n'
ALL = HEADERS + '#include "norvala_load.h"\n'  # includes windows.h behind the others where there is one
USE = """
static int32_t Use(const BW8* src, BW8* dst) {
  const NorvalaRect rect = {0, 0, 8, 8};
  const int32_t interpolation = NORVALA_LINEAR | NORVALA_SMOOTH_EDGES;
  const double quad[8] = {0, 0, 7, 0, 7, 7, 0, 7};
  return Norvala_WarpAffineQuad(src, 8, 8, 8, &rect, quad, dst, 8, &rect, quad, interpolation) +
         Norvala_FilterGauss(src, 8, dst, 8, 4, 4, NORVALA_GAUSS_3X3) + NorvalaLayerSize(8, 2.5F);
}
int main(void) { return Use(0, 0); }
"""
SHORT = "static RegionSize size = {1, 2};\nstatic Rect region = {1, 2, 3, 4};\nstatic const INT32 number = -1;\n" \
        "int32_t Sum(void) { return size.width + region.x + number; }\n"
SOURCES = {
    "alone": ALL + USE + SHORT,
    "own names": "typedef long INT32;\nstruct Rect { float x; };\n#define NORVALA_NO_SHORT_NAMES\n" + HEADERS + USE +
                 "struct Rect own = {1.0F};\n",
}
WINDOWS_SOURCES = {
    "after windows.h": "#include <windows.h>\n" + ALL + USE + SHORT,
    "after windows.h with NOMINMAX": "#define NOMINMAX\n#include <windows.h>\n" + ALL + USE + SHORT,
}
CXX_SOURCES = {
    "own namespace": "namespace host { struct Rect { float x; }; using INT32 = long; }\nusing namespace host;\n"
                     "#define NORVALA_NO_SHORT_NAMES\n" + HEADERS + USE + "Rect own = {1.0F};\nINT32 number = 1;\n",
}
C_VERSIONS = ("c99", "c11", "c17", "c2x")
CXX_VERSIONS = ("c++11", "c++14", "c++17", "c++20")


def compile_one(compiler, folders, version, name, source):
    command, *options = compiler.split(",")
    language = "c"
    if "++" in version:
        language = "c++"
        command = re.sub(r"(g)cc|(clang)", r"\1\2++", command)
    result = subprocess.run([command, *options, "-std=" + version, *WARNINGS, *["-I" + folder for folder in folders],
                             "-x", language, "-"], input=source, capture_output=True, text=True, check=False)
    return result.returncode == 0, f"{compiler} {version}, {name}:\n{result.stderr}"


def main():
    folders, compilers = sys.argv[1:3], sys.argv[3:]
    with open(os.path.join(folders[0], "norvala.hpp"), encoding="utf-8") as file:
        thrown = re.findall(r'\b(Norvala_\w+)[(,][^;{]*?"(Norvala_\w+)"|"(Norvala_\w+)", (Norvala_\w+)', file.read())
    problems = [f"norvala.hpp names {pair} for one function" for pair in thrown
                if (pair[0] or pair[2]) != (pair[1] or pair[3])]
    jobs = []
    for compiler in compilers:
        sources = {**SOURCES, **(WINDOWS_SOURCES if "mingw" in compiler else {})}
        for version in C_VERSIONS + CXX_VERSIONS:
            more = CXX_SOURCES if "++" in version else {}
            if version in ("c++17", "c++20") and not compiler.startswith("clang,"):  # which finds no C++ library
                more = {**more, "norvala.hpp": '#include "norvala.hpp"\n' + USE}
            jobs += [(compiler, folders, version, name, source) for name, source in {**sources, **more}.items()]
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        results = list(pool.map(lambda job: compile_one(*job), jobs))
    problems += [text for good, text in results if not good]
    print("\n".join(problems) or f"{len(jobs)} programs compile, {len(thrown)} calls throw by their own name")
    return 1 if problems or len(thrown) < 40 else 0


if __name__ == "__main__":
    sys.exit(main())
