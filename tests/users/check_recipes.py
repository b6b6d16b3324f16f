"""Checks that the code of the recipes is code that runs: every block of docs/recipes.md is the body of a function of
examples/reference.c, a program that calls them all.

usage: check_recipes.py REPOSITORY PROGRAM
"""

import os
import re
import subprocess
import sys
import textwrap


def main():
    root, program = sys.argv[1:]
    with open(os.path.join(root, "docs", "recipes.md"), encoding="utf-8") as file:
        blocks = re.findall(r"^```c\n(.*?)^```$", file.read(), re.MULTILINE | re.DOTALL)
    with open(os.path.join(root, "examples", "reference.c"), encoding="utf-8") as file:
        bodies = {textwrap.dedent(body) for body in re.findall(r"^static int \w+\(void\) {\n(.*?)^}", file.read(),
                                                               re.MULTILINE | re.DOTALL)}
    problems = ["not in examples/reference.c:\n" + block for block in blocks if block not in bodies]
    if subprocess.run([program], stdout=subprocess.DEVNULL, check=False).returncode != 0:
        problems.append("the program fails")
    print("\n".join(problems) or f"{len(blocks)} recipes, {len(bodies)} functions")
    return 1 if problems or not blocks else 0


if __name__ == "__main__":
    sys.exit(main())
