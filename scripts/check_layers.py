#!/usr/bin/env python3
"""Checks the order of the folders under src/ and who assigns the shared flags of a search: check_layers.py [SOURCE]

A folder includes only itself and what it links in src/CMakeLists.txt, directly or through others. No files include
each other in a circle. Only src/platform includes headers of the operating system, and only in its .cpp files. A flag
is assigned only in the files that ASSIGNED_IN names. Prints every breach; the exit code is 1 if there was one.
"""

import re
import sys
from pathlib import Path

# Every shared flag that a header of thinking/ declares: those that both threads write go through search control.
SEARCH_CONTROL = ["thinking/search_control.cpp"]
ASSIGNED_IN = {
    "easyMode": ["protocol/uci.cpp", "protocol/xboard.cpp", "tools/benchmark.cpp"],
    "readyForGo": SEARCH_CONTROL,
    "thinkingActive": SEARCH_CONTROL,
    "searchRunning": SEARCH_CONTROL,
    "stopAckWanted": SEARCH_CONTROL,
    "pondering": SEARCH_CONTROL,
    "abortThinking": SEARCH_CONTROL,
    "answerGiven": SEARCH_CONTROL,
    "noAutoPonder": SEARCH_CONTROL,
    "timeUsedUp": SEARCH_CONTROL,
    "minimalSearchPending": SEARCH_CONTROL,
    "firstSearchOfGame": SEARCH_CONTROL,
}

C_HEADERS = {"assert.h", "errno.h", "float.h", "limits.h", "math.h", "stddef.h", "stdint.h", "stdio.h",
             "stdlib.h", "string.h", "time.h"}
PROCESSOR_HEADERS = {"immintrin.h", "emmintrin.h", "xmmintrin.h", "x86intrin.h"}

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)
FOLDER = re.compile(r"^valku_folder\(([\w\s]+)\)", re.MULTILINE)
SHARED = re.compile(r"\b(?:extern|inline)\s+Shared(?:Flag|Number|Value<\w+>)\s+(\w+)")
COMMENT = re.compile(r"//.*")


def allowed_folders(build_file):
    """For each folder those whose headers it may include, from the lines valku_folder(folder linked...)."""
    allowed = {}
    for folder, *linked in map(str.split, FOLDER.findall(build_file)):
        if late := [other for other in linked if other not in allowed]:
            sys.exit(f"src/CMakeLists.txt: {folder} links {late[0]}, which does not stand before it")
        allowed[folder] = {folder}.union(*(allowed[other] for other in linked))
    return allowed


def breaches_of_includes(name, text, names, allowed):
    folder = name.split("/")[0]
    if folder not in allowed:
        yield f"{name}: src/CMakeLists.txt does not list the folder"
        return
    for quote, target in INCLUDE.findall(text):
        if quote == "<":
            of_system = target.endswith(".h") and target not in C_HEADERS | PROCESSOR_HEADERS
            if of_system and (folder != "platform" or name.endswith(".h")):
                yield f"{name}: <{target}> belongs to the operating system; only .cpp files in platform/ use it"
        elif target not in names:
            yield f'{name}: there is no file "{target}" in src/'
        elif target.split("/")[0] not in allowed[folder]:
            yield f'{name}: includes "{target}", but {folder}/ does not link that folder'


def circles(includes):
    """Yields every circle of includes that a walk through all files meets."""
    finished = set()

    def walk(name, trail):
        if name in trail:
            yield "circle: " + " -> ".join(trail[trail.index(name):] + [name])
            return
        if name in finished:
            return
        for target in includes[name]:
            yield from walk(target, trail + [name])
        finished.add(name)

    for name in sorted(includes):
        yield from walk(name, [])


def assigns(text, flag):
    """Whether the text assigns a variable of that name where it does not declare it, nor as a member of an object."""
    before = r"(?:^|[;{}(),:=?&|]|\belse|\breturn)\s*"
    operator = r"(?:[-+*/%&|^]|<<|>>)?=(?!=)|\+\+|--"
    return re.search(rf"{before}{flag}\s*(?:{operator})|(?:\+\+|--)\s*{flag}\b", text, re.MULTILINE)


def breaches_of_flags(texts):
    codes = {name: COMMENT.sub("", text) for name, text in texts.items()}
    declared = {flag for name in codes if name.startswith("thinking/") for flag in SHARED.findall(codes[name])}
    for flag in declared ^ set(ASSIGNED_IN):
        yield f"{flag}: " + ("has no row in ASSIGNED_IN" if flag in declared else "no header in thinking/ declares it")
    for flag, files in ASSIGNED_IN.items():
        assigning = {name for name, code in codes.items() if flag in code and assigns(code, flag)}
        for name in assigning ^ set(files):
            yield f"{name}: " + (f"must not assign {flag}; {', '.join(files)} may" if name in assigning else
                                 f"does not assign {flag}, though ASSIGNED_IN lists it")


def main():
    source = Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).resolve().parent.parent / "src"
    texts = {path.relative_to(source).as_posix(): path.read_text(encoding="utf-8")
             for pattern in ("*.h", "*.cpp") for path in source.rglob(pattern)}
    if not texts:
        print(f"no sources in {source}")
        return 1
    allowed = allowed_folders((source / "CMakeLists.txt").read_text(encoding="utf-8"))
    breaches = [breach for name in texts for breach in breaches_of_includes(name, texts[name], texts, allowed)]
    breaches += circles({name: [target for _, target in INCLUDE.findall(text) if target in texts]
                         for name, text in texts.items()})
    breaches += breaches_of_flags(texts)
    print("\n".join(sorted(breaches)) or f"{len(texts)} files keep the order")
    return 1 if breaches else 0


if __name__ == "__main__":
    sys.exit(main())
