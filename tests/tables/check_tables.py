"""Checks what a built library exports and imports against the public header.

usage: check_tables.py HEADER LIBRARY OBJDUMP
"""

import pathlib
import re
import subprocess
import sys


def main():
    header, library, objdump = sys.argv[1:]
    windows = library.endswith(".dll")
    dump = subprocess.check_output([objdump, "-p" if windows else "-T", library], text=True)
    if windows:
        table = dump[dump.index("[Ordinal/Name Pointer] Table"):]
        exported = re.findall(r"^\s*\[\s*\d+\](?: \+base\[\s*\d+\]\s+[0-9a-f]+)? (\S+)$", table, re.MULTILINE)
        imports = sorted(re.findall(r"DLL Name: (\S+)", dump))
        assert imports == ["KERNEL32.dll", "msvcrt.dll"], f"imports {imports}"
        for flag in ("DYNAMIC_BASE", "NX_COMPAT", "NO_SEH" if "pei-i386" in dump else "HIGH_ENTROPY_VA"):
            assert flag in dump, f"lacks the flag {flag}"
        assert re.search(r"^Entry 2 (?!0+ )\S+ \S+ Resource Directory", dump, re.MULTILINE), "lacks a version resource"
    else:
        exported = [line.split()[-1] for line in dump.splitlines() if " g " in line and "*UND*" not in line]
    declared = re.findall(r"NORVALA_CALL\s+(Norvala_\w+)\s*\(", pathlib.Path(header).read_text("utf-8"))
    assert sorted(exported) == sorted(declared), f"not both declared and exported: {set(declared) ^ set(exported)}"
    print(f"{library}: {len(exported)} exports")


if __name__ == "__main__":
    main()
