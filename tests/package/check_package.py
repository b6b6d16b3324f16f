"""Checks that two builds packed equal archives, unpacks one elsewhere, checks its sums and links, and does what its README
says, with the cross compiler and under Wine.

usage: check_package.py BUILD BUILD_AGAIN CMAKE_FOLDER      (CMAKE_FOLDER holds the toolchains and what runs Wine)
"""

import filecmp
import glob
import hashlib
import html.parser
import os
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

    def __init__(self, text):
        super().__init__()
        self.links, self.places = [], set()
        self.feed(text)

    def handle_starttag(self, tag, attributes):
        for name, value in attributes:
            if name in ("href", "src"):
                self.links.append(value)
            elif name in ("id", "name"):
                self.places.add(value)


def check_links(root):
    pages = {}
    for path in glob.glob(os.path.join(root, "**", "*.*"), recursive=True):
        if path.endswith((".html", ".md")):
            with open(path, encoding="utf-8") as file:
                text = file.read()
            if path.endswith(".md"):
                text = re.sub(r"\]\(([^)]+)\)", r'<a href="\1">', text)
            pages[path] = Page(text)
    count = 0
    for path, page in pages.items():
        for link in page.links:
            if re.match(r"\w+:", link):
                continue
            target, _, place = link.partition("#")
            target = os.path.normpath(os.path.join(os.path.dirname(path), target)) if target else path
            assert os.path.exists(target), f"{path} links to {link}"
            assert not place or target not in pages or place in pages[target].places, f"{path} links to {link}"
            count += 1
    return count


def follow_readme(root, target, wine, toolchain):
    """Writes the files and runs the commands of the README's blocks; returns how many programs ran. Stand-ins for what
    Windows has: the cross compiler for gcc, Wine for programs, Python for copy."""
    with open(os.path.join(root, "README.md"), encoding="utf-8") as file:
        blocks = re.findall(r"^```(\w+)\n(.*?)^```$", file.read(), re.MULTILINE | re.DOTALL)
    printed, = (text for kind, text in blocks if kind == "text")
    ran = 0
    for kind, text in blocks:
        if kind == "cmake":
            name = os.path.join(root, text.splitlines()[0].removeprefix("# "))
            os.makedirs(os.path.dirname(name))
            with open(name, "w", encoding="utf-8") as file:
                file.write(text)
        for command, *arguments in map(shlex.split, text.replace("\\", "/").splitlines() if kind == "bat" else []):
            if command == "copy":
                shutil.copy(*(os.path.join(root, argument) for argument in arguments))
                continue
            run = {"gcc": target + "-gcc", "g++": target + "-g++"}.get(command, command)
            program = run.endswith(".exe")
            result = subprocess.run([wine, os.path.join(root, run)] if program else [run, *arguments], cwd=root,
                                    env={**os.environ, "CMAKE_TOOLCHAIN_FILE": toolchain}, capture_output=True, text=True)
            assert result.returncode == 0, f"{command} {arguments}: {result.stdout}{result.stderr}"
            if program:
                assert result.stdout.replace("\r", "") == printed, f"{command} printed {result.stdout}"
                ran += 1
    return ran


def main():
    build, build_again, cmake_folder = (os.path.abspath(argument) for argument in sys.argv[1:])
    archive, = glob.glob(os.path.join(build, "norvala-*.zip"))
    again, = glob.glob(os.path.join(build_again, "norvala-*.zip"))
    assert filecmp.cmp(archive, again, shallow=False), "the archive is not reproducible"
    folder = os.path.join(build, "package-test")
    shutil.rmtree(folder, ignore_errors=True)
    with zipfile.ZipFile(archive) as file:
        file.extractall(folder)
    name = os.path.splitext(os.path.basename(archive))[0]
    root = os.path.join(folder, name)
    version, target = name.split("-")[1:]
    compiler, wine = TARGETS[target][0], os.path.join(cmake_folder, TARGETS[target][1])
    with open(os.path.join(root, "SHA256SUMS"), encoding="utf-8") as sums:
        lines = sums.read().splitlines()
    for line in lines:
        wanted, name = line.split(maxsplit=1)
        with open(os.path.join(root, name), "rb") as file:
            assert hashlib.sha256(file.read()).hexdigest() == wanted, name
    for name in ("bin/Norvala.dll", "lib/Norvala.lib", "lib/libNorvala.dll.a", "lib/Norvala.def", "docs/index.html"):
        assert any(line.endswith("  " + name) for line in lines), name

    links = check_links(root)
    ran = follow_readme(root, compiler, wine, os.path.join(cmake_folder, compiler + ".cmake"))
    assert ran == 5, ran
    reference = subprocess.run([wine, os.path.join(root, "build-examples/reference.exe")], capture_output=True, text=True)
    assert reference.returncode == 0 and f"Norvala {version}.0" in reference.stdout, reference

    other, = (compiler for name, (compiler, _) in TARGETS.items() if name != target)
    refused = subprocess.run(["cmake", "-S", os.path.join(root, "first"), "-B", os.path.join(folder, "refused"), "-G", "Ninja",
                              "-DCMAKE_TOOLCHAIN_FILE=" + os.path.join(cmake_folder, other + ".cmake"),
                              "-DCMAKE_PREFIX_PATH=" + root], capture_output=True, text=True)
    assert refused.returncode != 0 and f"{version} for {target[3:]}-bit programs" in refused.stderr, refused.stderr

    subprocess.run([wine, os.path.join(root, "examples/gallery.exe"), os.path.join(root, "bin/Norvala.dll"),
                    os.path.join(root, "examples/coffee.png"), os.path.join(folder, "gallery")], check=True, stdout=subprocess.DEVNULL)
    assert os.path.getsize(os.path.join(folder, "gallery/index.html")) > 1000
    print(f"{len(lines)} files, {links} links, {ran} programs ran as the README says")


if __name__ == "__main__":
    main()
