"""Checks docs/inventory.md against the sources: it lists exactly the primitive tables that the headers declare, each
with its implementation at level 3 and with a file that defines its portable implementation. The exports call primitives
through these tables alone.

usage: check_inventory.py REPOSITORY
"""

import pathlib
import re
import sys


def main():
    root = pathlib.Path(sys.argv[1])
    declared = {table: (function, "own" if "," in re.sub(r"<[^>]*>", "", rest) else "portable")
                for header in root.glob("src/**/*.h") for table, function, rest in
                re.findall(r"inline constexpr PrimitiveTable (k\w+)\{(\w+)([^}]*)\}", header.read_text("utf-8"))}
    inventory = (root / "docs/inventory.md").read_text("utf-8")
    listed = {table: (path, level3) for table, path, level3 in
              re.findall(r"^\| `(k\w+)` \| `(src/[\w/]+\.(?:cpp|h))` \| (own|portable) \|$", inventory, re.MULTILINE)}
    assert declared.keys() == listed.keys(), f"not both declared and listed: {declared.keys() ^ listed.keys()}"
    assert f"lie {len(declared)} primitives" in inventory, f"{len(declared)} tables, the text states another number"
    entries = {path.name: path.read_text("utf-8") for path in root.glob("src/frame/entry/*.cpp")}
    for table, (function, level3) in declared.items():
        path, listed_level3 = listed[table]
        assert level3 == listed_level3, f"{table}: level 3 is {level3}, listed as {listed_level3}"
        definition = rf"^[A-Za-z][\w:<>* ]*\b{function}\([^;{{]*\) \{{"
        assert re.search(definition, (root / path).read_text("utf-8"), re.MULTILINE), f"{path} lacks {function}"
        for name, entry in entries.items():
            assert not re.search(rf"\b{function}\(", entry), f"{name} calls {function} past {table}"
    print(f"{len(declared)} tables, all listed")


if __name__ == "__main__":
    main()
