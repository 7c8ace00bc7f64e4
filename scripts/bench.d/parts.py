"""Fills the parts of a page that are measured, and leaves what people have written.

  parts.py fill PAGE DIRECTORY    each file of the directory replaces the part of its name
  parts.py check PAGE PART...     fails unless the page has a place for each part
"""
import pathlib
import re
import sys

PART = re.compile(r"(<!-- measured: (\S+) -->\n).*?(<!-- end of \2 -->\n)", re.DOTALL)


def without_place(page, names):
    places = {match[2] for match in PART.finditer(page)}
    return sorted(set(names) - places)


def filled(page, parts):
    return PART.sub(lambda match: match[1] + parts[match[2]] + match[3]
                    if match[2] in parts else match[0], page)


def main():
    mode, path, *rest = sys.argv[1:]
    page = pathlib.Path(path).read_text(encoding="utf-8")
    parts = dict.fromkeys(rest)
    if mode == "fill":
        parts = {file.name: file.read_text(encoding="utf-8")
                 for file in pathlib.Path(rest[0]).iterdir()}
    missing = without_place(page, parts)
    if missing:
        sys.exit(f"{path} has no place for: {', '.join(missing)}; mark it with the lines "
                 f"`<!-- measured: {missing[0]} -->` and `<!-- end of {missing[0]} -->`")
    if mode == "fill":
        pathlib.Path(path).write_text(filled(page, parts), encoding="utf-8")


if __name__ == "__main__":
    main()
