"""Runs the gallery program on good and bad photographs.

usage: check_gallery.py FOLDER LIBRARY PHOTO COMMAND...
"""

import os
import re
import struct
import subprocess
import sys
import zlib


def png(width, height, rows=None):
    """A PNG file with the given header, red rows, and no more image data than asked for."""

    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    rows = height if rows is None else rows
    data = zlib.compress((b"\0" + b"\xff\0\0" * width) * rows)
    header = struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", data) + chunk(b"IEND", b"")


def main():
    folder, library, photo = sys.argv[1:4]
    command = sys.argv[4:]
    os.makedirs(folder, exist_ok=True)
    with open(photo, "rb") as file:
        photo_bytes = file.read()
    problems = []

    def run(name, content, expect_code, expect_text=""):
        path = os.path.join(folder, name)
        if content is not None:
            with open(path, "wb") as file:
                file.write(content)
        out = os.path.join(folder, "out-" + name)
        result = subprocess.run(command + [library, path, out], capture_output=True, text=True, errors="replace")
        ok = result.returncode == expect_code and expect_text in result.stderr
        if ok and expect_code == 0:
            with open(os.path.join(out, "index.html"), encoding="utf-8") as file:
                pictures = re.findall(r'<img src="([^"]+)"', file.read())
            ok = bool(pictures) and all(os.path.getsize(os.path.join(out, p)) > 60 for p in pictures)
        print(f"{'ok' if ok else 'FAILED'}: {name}: exit code {result.returncode}, {result.stderr.strip()}")
        if not ok:
            problems.append(name)

    run("missing.png", None, 1, "no such file")
    run("text.png", b"not a picture", 1, "not a PNG or JPEG")
    run("photo.png", photo_bytes, 0)
    run("truncated.png", photo_bytes[: len(photo_bytes) // 2], 1, "damaged or cut short")
    run("large.png", png(10000, 10000, 0), 1, "too many pixels")
    run("huge.png", png(60000, 60000, 0), 1, "far too many pixels")
    for width, height in ((1, 1), (1, 9), (7, 2), (40, 33)):
        run(f"tiny-{width}x{height}.png", png(width, height), 0)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
