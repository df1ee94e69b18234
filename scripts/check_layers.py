#!/usr/bin/env python3
"""Holds the includes under src/ to the order of the house.

A folder includes only itself and folders of a lower level, no files include each other in a circle, and only
src/platform knows the operating system, in its bodies and not in its headers. Prints every breach; the exit code
tells whether there was one. An argument names another source folder to look at.
"""

import re
import sys
from pathlib import Path

LEVELS = [
    ["platform"],
    ["chess"],
    ["eval"],
    ["search"],
    ["distributed", "book", "tablebases"],
    ["thinking", "tablemaker"],
    ["protocol"],
    ["tools"],
    ["shell"],
]
LEVEL_OF = {folder: level for level, folders in enumerate(LEVELS) for folder in folders}

# Headers of the language end without .h or are the C ones below; any other <...h> belongs to the system.
C_HEADERS = {"assert.h", "errno.h", "float.h", "limits.h", "math.h", "stddef.h", "stdint.h", "stdio.h",
             "stdlib.h", "string.h", "time.h"}
# Headers of the compiler for the processor, not of the system.
PROCESSOR_HEADERS = {"immintrin.h", "emmintrin.h", "xmmintrin.h", "x86intrin.h"}

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)


def breaches_of_file(name, text, names):
    folder = name.split("/")[0]
    if folder not in LEVEL_OF:
        yield f"{name}: lies in no known folder"
        return
    for quote, target in INCLUDE.findall(text):
        if quote == "<":
            systems = target.endswith(".h") and target not in C_HEADERS | PROCESSOR_HEADERS
            if systems and (folder != "platform" or name.endswith(".h")):
                yield f"{name}: <{target}> belongs to the operating system; only bodies in platform/ use it"
        elif target not in names:
            yield f"{name}: \"{target}\" is no file relative to src/"
        else:
            other = target.split("/")[0]
            if other != folder and LEVEL_OF.get(other, len(LEVELS)) >= LEVEL_OF[folder]:
                yield f"{name}: includes \"{target}\", which does not stand below {folder}/"


def circles(includes):
    """Yields every circle of includes that a walk through all files meets."""
    finished = set()

    def walk(name, trail):
        if name in trail:
            yield " -> ".join(trail[trail.index(name):] + [name])
            return
        if name in finished:
            return
        for target in includes[name]:
            yield from walk(target, trail + [name])
        finished.add(name)

    for name in sorted(includes):
        yield from walk(name, [])


def main():
    source = Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).resolve().parent.parent / "src"
    texts = {path.relative_to(source).as_posix(): path.read_text(encoding="utf-8")
             for pattern in ("*.h", "*.cpp") for path in source.rglob(pattern)}
    if not texts:
        print(f"no sources in {source}")
        return 1
    breaches = [breach for name in sorted(texts) for breach in breaches_of_file(name, texts[name], texts)]
    includes = {name: [target for quote, target in INCLUDE.findall(text) if quote == '"' and target in texts]
                for name, text in texts.items()}
    breaches += ["circle: " + circle for circle in circles(includes)]
    for breach in breaches:
        print(breach)
    if not breaches:
        print(f"{len(texts)} files keep the order")
    return 1 if breaches else 0


if __name__ == "__main__":
    sys.exit(main())
