#!/usr/bin/python3
"""Fails when a source file includes a header of a layer above its own, or of a sibling folder
of the same layer. The layers, lowest first, are those of the README's map of src/.

    tools/check_layers.py [SRC]    (SRC defaults to src; ./build.sh test runs it)"""
import pathlib
import re
import sys

# Folder -> layer. A folder may include its own headers and those of lower layers; folders that
# share a layer do not include each other.
LAYERS = {
    "kit": 0, "kit/rtf": 0,
    "settings": 1,
    "tags": 2, "themes": 2,
    "notes": 3,
    "import": 4,
    "kit/widgets": 5,
    "themeview": 6,
    "notewindow": 7, "tagbrowser": 7, "preferences": 7, "secret": 7,
    "app": 8,
    ".": 9,
}
# kit and kit/rtf are one library: the codec and the rest of the kit may use each other.
SAME_LIBRARY = {frozenset({"kit", "kit/rtf"})}
INCLUDE = re.compile(r'^\s*#\s*include\s*"(?P<header>[^"]+)"')


def folder_of(path: pathlib.PurePosixPath) -> str:
    return str(path.parent) if str(path.parent) != "" else "."


def main() -> int:
    src = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else "src")
    problems = []
    for file in sorted(src.rglob("*")):
        if file.suffix not in (".h", ".cpp"):
            continue
        here = folder_of(pathlib.PurePosixPath(file.relative_to(src).as_posix()))
        if here not in LAYERS:
            problems.append(f"{file}: its folder {here} has no layer")
            continue
        for number, line in enumerate(file.read_text(encoding="utf-8").splitlines(), 1):
            match = INCLUDE.match(line)
            if not match or "/" not in match["header"]:
                continue
            there = folder_of(pathlib.PurePosixPath(match["header"]))
            if there == here or there not in LAYERS:
                continue
            if frozenset({here, there}) in SAME_LIBRARY:
                continue
            if LAYERS[there] >= LAYERS[here]:
                kind = "a sibling" if LAYERS[there] == LAYERS[here] else "a higher"
                problems.append(f"{file}:{number}: includes {match['header']}, from {kind} layer")
    for problem in problems:
        print(problem)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
