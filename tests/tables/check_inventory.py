"""Checks docs/inventory.md against the sources: it lists exactly the primitive tables that the headers declare, each
with its implementation at level 3 and with a file that defines its portable implementation. The exports call primitives
through these tables alone.

usage: check_inventory.py REPOSITORY
"""

import glob
import os
import re
import sys


def read(path):
    with open(path, encoding="utf-8") as file:
        return file.read()


def defines(source, function):
    return re.search(rf"^[A-Za-z][\w:<>* ]*\b{function}\([^;{{]*\) \{{", source, re.MULTILINE) is not None


def main():
    root = sys.argv[1]
    declared = {}
    for header in sorted(glob.glob(os.path.join(root, "src", "**", "*.h"), recursive=True)):
        for table, function, rest in re.findall(r"inline constexpr PrimitiveTable (k\w+)\{(\w+)([^}]*)\}", read(header)):
            declared[table] = (function, "own" if "," in re.sub(r"<[^>]*>", "", rest) else "portable")
    inventory = read(os.path.join(root, "docs", "inventory.md"))
    listed = {table: (path, level3) for table, path, level3 in
              re.findall(r"^\| `(k\w+)` \| `(src/[\w/]+\.(?:cpp|h))` \| (own|portable) \|$", inventory, re.MULTILINE)}
    sources = {os.path.relpath(path, root): read(path)
               for pattern in ("*.cpp", "*.h")
               for path in sorted(glob.glob(os.path.join(root, "src", "**", pattern), recursive=True))}

    problems = []
    for table in sorted(declared.keys() | listed.keys()):
        if table not in listed:
            problems.append(f"{table}: not listed")
        elif table not in declared:
            problems.append(f"{table}: listed, but no header declares it")
        else:
            function, level3 = declared[table]
            path, listed_level3 = listed[table]
            if level3 != listed_level3:
                problems.append(f"{table}: level 3 is {level3}, listed as {listed_level3}")
            if not defines(sources.get(path, ""), function):
                found = [name for name, source in sources.items() if defines(source, function)]
                problems.append(f"{table}: {function} is listed in {path}, defined in {', '.join(found) or 'no file'}")
    for path, source in sources.items():
        if path.startswith(os.path.join("src", "frame", "entry")):
            problems += [f"{path} calls {function} past {table}" for table, (function, _) in sorted(declared.items())
                         if re.search(rf"(?<![\w]){function}\(", source)]
    stated = re.search(r"lie (\d+) primitives", inventory)
    if stated is None or int(stated[1]) != len(declared):
        problems.append(f"{len(declared)} tables, the text says {stated and stated[1]}")
    print("\n".join(problems) or f"{len(declared)} tables, all listed")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
