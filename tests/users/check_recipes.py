"""Checks that the code of the recipes is code that runs: every block of docs/recipes.md is the body of a function of
examples/reference.c, a program that calls them all.

usage: check_recipes.py REPOSITORY PROGRAM
"""

import pathlib
import re
import subprocess
import sys
import textwrap


def find(path, pattern):
    return re.findall(pattern, pathlib.Path(sys.argv[1], path).read_text("utf-8"), re.MULTILINE | re.DOTALL)


blocks = find("docs/recipes.md", r"^```c\n(.*?)^```$")
bodies = {textwrap.dedent(body) for body in find("examples/reference.c", r"^static int \w+\(void\) {\n(.*?)^}")}
for block in blocks:
    assert block in bodies, "not in examples/reference.c:\n" + block
assert blocks, "no recipes"
subprocess.run([sys.argv[2]], stdout=subprocess.DEVNULL, check=True)
print(f"{len(blocks)} recipes, {len(bodies)} functions")
