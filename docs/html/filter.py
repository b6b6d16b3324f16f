"""Prepares a file for Doxygen: names of functions become links, and every family of the header gets its example.

usage: filter.py FILE      (run from the repository's root)
"""

import re
import sys

BLOCK = re.compile(r"^```.*?^```$|^(?: {4}.*\n)+", re.MULTILINE | re.DOTALL)


def link(text, names, before, after):
    """Marks names of functions that are not marked yet."""
    def replaced(match):
        return before + "#" + match[1] + after if match[1] in names else match[0]
    return re.sub(r"(?<![#\w`])(Norvala\w+)(?!\w|\.\.\.)" if not before else r"`(Norvala\w+)`", replaced, text)


def main():
    names = set()
    for header in ("norvala.h", "norvala_helpers.h", "norvala_load.h"):
        with open("include/" + header, encoding="utf-8") as file:
            names.update(re.findall(r"^(?:NORVALA_API|static inline).*\b(Norvala\w+)\(", file.read(), re.MULTILINE))
    with open(sys.argv[1], encoding="utf-8") as file:
        text = file.read()
    if sys.argv[1].endswith(".md"):
        parts, end = [], 0
        for block in BLOCK.finditer(text):
            parts += [link(text[end:block.start()], names, "<code>", "</code>"), block[0]]
            end = block.end()
        text = "".join(parts) + link(text[end:], names, "<code>", "</code>")
    elif sys.argv[1].endswith(".h"):
        text = re.sub(r"/\*\*.*?\*/", lambda comment: link(comment[0], names, "", ""), text, flags=re.DOTALL)
    if sys.argv[1].endswith("norvala.h"):
        with open("examples/reference.c", encoding="utf-8") as file:
            examples = set(re.findall(r"/\* \[(\w+)\] \*/", file.read()))

        def with_example(match):
            if match[1] not in examples:
                return match[0]
            return f"{match[0][:-len(' *  @{ */')]} *\n *  @par Example\n *  @snippet{{trimleft}} reference.c {match[1]}\n *  @{{ */"
        text = re.sub(r"/\*\* @defgroup (\w+) .*?\n \*  @\{ \*/", with_example, text, flags=re.DOTALL)
    sys.stdout.write(text)


if __name__ == "__main__":
    main()
