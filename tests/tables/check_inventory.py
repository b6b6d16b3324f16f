"""Checks that docs/inventory.md lists exactly the primitive tables that the headers declare.

usage: check_inventory.py REPOSITORY
"""

import glob
import os
import re
import sys

EXPECTED = 73


def main():
    root = sys.argv[1]
    declared = {}
    for header in sorted(glob.glob(os.path.join(root, "src", "*", "**", "*.h"), recursive=True)):
        with open(header, encoding="utf-8") as file:
            for table, entries in re.findall(r"inline constexpr PrimitiveTable (k\w+)\{([^}]*)\}", file.read()):
                declared[table] = "own" if "," in entries else "portable"
    with open(os.path.join(root, "docs", "inventory.md"), encoding="utf-8") as file:
        listed = dict(re.findall(r"^\| `(k\w+)` \|.*\| (own|portable) \|$", file.read(), re.MULTILINE))
    problems = [f"{table}: declared {declared.get(table)}, listed {listed.get(table)}"
                for table in sorted(declared.keys() | listed.keys()) if declared.get(table) != listed.get(table)]
    if len(declared) != EXPECTED:
        problems.append(f"{len(declared)} tables, expected {EXPECTED}")
    print("\n".join(problems) or f"{len(declared)} tables, all listed")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
