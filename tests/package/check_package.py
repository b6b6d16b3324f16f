"""Checks that two builds packed equal archives, unpacks one elsewhere, checks its sums and links, and does what its
README says, with the cross compiler and under Wine.

usage: check_package.py BUILD BUILD_AGAIN CMAKE_FOLDER      (CMAKE_FOLDER holds the toolchains and what runs Wine)
"""

import hashlib
import html.parser
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import zipfile

# By the bitness in the archive's name: the toolchain, and what runs its programs.
TARGETS = {"win32": ("i686-w64-mingw32", "wine-run"), "win64": ("x86_64-w64-mingw32", "wine64-run")}


class Page(html.parser.HTMLParser):
    """What a page links to, and the names of its places."""

    def __init__(self, path):
        super().__init__()
        self.links, self.places = [], set()
        text = path.read_text("utf-8")
        self.feed(re.sub(r"\]\(([^)]+)\)", r'<a href="\1">', text) if path.suffix == ".md" else text)

    def handle_starttag(self, tag, attributes):
        self.links += [value for name, value in attributes if name in ("href", "src")]
        self.places |= {value for name, value in attributes if name in ("id", "name")}


def check_links(root):
    pages = {path: Page(path) for path in root.rglob("*.*") if path.suffix in (".html", ".md")}
    links = [(path, link) for path, page in pages.items() for link in page.links if not re.match(r"\w+:", link)]
    for path, link in links:
        name, _, place = link.partition("#")
        target = (path.parent / name).resolve() if name else path
        assert target.exists(), f"{path} links to {link}"
        assert not place or target not in pages or place in pages[target].places, f"{path} links to {link}"
    return len(links)


def run(*command, **options):
    return subprocess.run(command, capture_output=True, text=True, **options)


def follow_readme(root, target, wine, toolchain):
    """Writes the files and runs the commands of the README's blocks; returns how many programs ran. Stand-ins for what
    Windows has: the cross compiler for gcc, Wine for programs, Python for copy."""
    blocks = re.findall(r"^```(\w+)\n(.*?)^```$", (root / "README.md").read_text("utf-8"), re.MULTILINE | re.DOTALL)
    printed, = (text for kind, text in blocks if kind == "text")
    ran = 0
    for kind, text in blocks:
        if kind == "cmake":
            path = root / text.splitlines()[0].removeprefix("# ")
            path.parent.mkdir()
            path.write_text(text, "utf-8")
        for command, *arguments in map(shlex.split, text.replace("\\", "/").splitlines() if kind == "bat" else []):
            if command == "copy":
                shutil.copy(*(root / argument for argument in arguments))
            elif command.endswith(".exe"):
                result = run(wine, root / command, cwd=root)
                assert result.stdout.replace("\r", "") == printed and result.returncode == 0, f"{command}: {result}"
                ran += 1
            else:
                command = {"gcc": target + "-gcc", "g++": target + "-g++"}.get(command, command)
                result = run(command, *arguments, cwd=root, env={**os.environ, "CMAKE_TOOLCHAIN_FILE": toolchain})
                assert result.returncode == 0, f"{command} {arguments}: {result}"
    return ran


def main():
    build, build_again, cmake_folder = (pathlib.Path(argument).resolve() for argument in sys.argv[1:])
    archive, = build.glob("norvala-*.zip")
    assert archive.read_bytes() == (build_again / archive.name).read_bytes(), "the archive is not reproducible"
    folder = build / "package-test"
    shutil.rmtree(folder, ignore_errors=True)
    with zipfile.ZipFile(archive) as file:
        file.extractall(folder)
    root = folder / archive.stem
    version, target = archive.stem.split("-")[1:]
    compiler, wine = TARGETS[target][0], cmake_folder / TARGETS[target][1]
    sums = [line.split(maxsplit=1) for line in (root / "SHA256SUMS").read_text("utf-8").splitlines()]
    for wanted, name in sums:
        assert hashlib.sha256((root / name).read_bytes()).hexdigest() == wanted, name
    needed = {"bin/Norvala.dll", "lib/Norvala.lib", "lib/libNorvala.dll.a", "lib/Norvala.def", "docs/index.html"}
    assert needed <= {name for _, name in sums}, sums

    links = check_links(root)
    ran = follow_readme(root, compiler, wine, cmake_folder / f"{compiler}.cmake")
    assert ran == 5, ran
    reference = run(wine, root / "build-examples/reference.exe")
    assert reference.returncode == 0 and f"Norvala {version}.0" in reference.stdout, reference

    other, = (compiler for name, (compiler, _) in TARGETS.items() if name != target)
    refused = run("cmake", "-S", root / "first", "-B", folder / "refused", "-G", "Ninja",
                  f"-DCMAKE_TOOLCHAIN_FILE={cmake_folder / other}.cmake", f"-DCMAKE_PREFIX_PATH={root}")
    assert refused.returncode != 0 and f"{version} for {target[3:]}-bit programs" in refused.stderr, refused.stderr

    gallery = run(wine, root / "examples/gallery.exe", root / "bin/Norvala.dll", root / "examples/coffee.png",
                  folder / "gallery")
    assert gallery.returncode == 0 and (folder / "gallery/index.html").stat().st_size > 1000, gallery
    print(f"{len(sums)} files, {links} links, {ran} programs ran as the README says")


if __name__ == "__main__":
    main()
