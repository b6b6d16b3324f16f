"""Writes the checksums of a folder's files into the folder, then packs it into FOLDER.zip with fixed times and order, so
that equal contents give equal bytes.

usage: pack.py FOLDER
"""

import hashlib
import os
import sys
import zipfile

TIME = (2026, 1, 1, 0, 0, 0)


def files_below(folder):
    for path, folders, names in os.walk(folder):
        folders.sort()
        for name in sorted(names):
            yield os.path.join(path, name)


def read(path):
    with open(path, "rb") as file:
        return file.read()


def write_sums(folder):
    sums = {os.path.relpath(path, folder).replace(os.sep, "/"): hashlib.sha256(read(path)).hexdigest()
            for path in files_below(folder)}
    with open(os.path.join(folder, "SHA256SUMS"), "w", encoding="utf-8", newline="\n") as file:
        file.writelines(f"{sums[name]}  {name}\n" for name in sorted(sums))


def main():
    folder = os.path.abspath(sys.argv[1])
    write_sums(folder)
    with zipfile.ZipFile(folder + ".zip", "w", zipfile.ZIP_DEFLATED, compresslevel=9) as archive:
        for path in files_below(folder):
            info = zipfile.ZipInfo(os.path.relpath(path, os.path.dirname(folder)).replace(os.sep, "/"), TIME)
            info.compress_type = zipfile.ZIP_DEFLATED
            info.external_attr = (0o755 if path.endswith((".exe", ".dll")) else 0o644) << 16
            archive.writestr(info, read(path), compresslevel=9)


if __name__ == "__main__":
    main()
