"""Packs a folder into a zip file with fixed times and order, so that equal contents give equal bytes.

usage: make_zip.py FOLDER ZIP
"""

import os
import sys
import zipfile

TIME = (2026, 1, 1, 0, 0, 0)


def files_below(folder):
    for path, folders, names in os.walk(folder):
        folders.sort()
        for name in sorted(names):
            yield os.path.join(path, name)


def main():
    folder, target = sys.argv[1:]
    parent = os.path.dirname(os.path.abspath(folder))
    with zipfile.ZipFile(target, "w", zipfile.ZIP_DEFLATED, compresslevel=9) as archive:
        for path in files_below(folder):
            info = zipfile.ZipInfo(os.path.relpath(os.path.abspath(path), parent).replace(os.sep, "/"), TIME)
            info.compress_type = zipfile.ZIP_DEFLATED
            info.external_attr = (0o755 if path.endswith((".exe", ".dll")) else 0o644) << 16
            with open(path, "rb") as file:
                archive.writestr(info, file.read(), compresslevel=9)


if __name__ == "__main__":
    main()
