"""Runs the gallery program on good and bad photographs.

usage: check_gallery.py FOLDER LIBRARY PHOTO COMMAND...
"""

import pathlib
import re
import struct
import subprocess
import sys
import zlib


def png(width, height, rows=None):
    """A PNG file with the given header, red rows, and no more image data than asked for."""

    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    data = zlib.compress((b"\0" + b"\xff\0\0" * width) * (height if rows is None else rows))
    header = struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", data) + chunk(b"IEND", b"")


def main():
    folder, library, photo, *command = sys.argv[1:]
    photo = pathlib.Path(photo).read_bytes()
    for name, content, complaint in (
            ("missing.png", None, "no such file"), ("text.png", b"not a picture", "not a PNG or JPEG"),
            ("photo.png", photo, None), ("truncated.png", photo[: len(photo) // 2], "damaged or cut short"),
            ("large.png", png(10000, 10000, 0), "too many pixels"),
            ("huge.png", png(60000, 60000, 0), "far too many pixels"), ("1x1.png", png(1, 1), None),
            ("1x9.png", png(1, 9), None), ("7x2.png", png(7, 2), None), ("40x33.png", png(40, 33), None)):
        path, out = pathlib.Path(folder, name), pathlib.Path(folder, "out-" + name)
        path.parent.mkdir(exist_ok=True)
        if content is not None:
            path.write_bytes(content)
        result = subprocess.run([*command, library, path, out], capture_output=True, text=True, errors="replace")
        assert result.returncode == (complaint is not None) and (complaint or "") in result.stderr, f"{name}: {result}"
        if complaint is None:
            pictures = re.findall(r'<img src="([^"]+)"', (out / "index.html").read_text("utf-8"))
            assert pictures and all((out / picture).stat().st_size > 60 for picture in pictures), f"{name}: {pictures}"


if __name__ == "__main__":
    main()
