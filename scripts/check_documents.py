#!/usr/bin/env python3
"""Compares README.md, CONTRIBUTING.md and docs/ with the program: scripts/check_documents.py ENGINE [fix]

- Between the markers <!-- valku --settings --> and <!-- end --> is what `valku --settings` prints, one table in
  each pair of markers. `fix` writes it there.
- A ```text block whose first line begins with "> " is a session with the engine: what is typed stands after "> ", the
  rest is what the engine says. A line "..." stands for any lines. Times and the number of the hash table do not count.
- A ```sh check block is run by bash in a folder that holds build/release/, run.sh, share/ and scripts/. It must succeed
  and, if a ```text output block follows, print what that shows.
- Links and paths lead to files that are there. A name with brackets, as in `think()`, is a function of the sources.
- docs/architecture.md has a row for each flag whose writers scripts/check_layers.py checks.

Prints every difference; the exit code tells whether there was one.
"""

import os
import re
import socket
import subprocess
import sys
import tempfile
from pathlib import Path

from check_layers import ASSIGNED_IN

ROOT = Path(__file__).resolve().parent.parent
DOCUMENTS = [ROOT / "README.md", ROOT / "CONTRIBUTING.md", *sorted((ROOT / "docs").glob("*.md"))]
TABLE = re.compile(r"(?<=<!-- valku --settings -->\n)((?:\|.*\n)*)(?=<!-- end -->)")
BLOCK = re.compile(r"^```([^\n]*)\n(.*?)^```$", re.DOTALL | re.MULTILINE)
PATIENCE = 300  # seconds


def printed_tables(engine):
    text = subprocess.run([engine, "--settings"], text=True, capture_output=True, timeout=PATIENCE, check=True).stdout
    return [table + "\n" for table in text.rstrip("\n").split("\n\n")]


def table_differences(engine, fix):
    page = ROOT / "docs/settings.md"
    text = page.read_text(encoding="utf-8")
    printed = printed_tables(engine)
    if fix:
        tables = iter(printed)
        page.write_text(TABLE.sub(lambda _: next(tables), text), encoding="utf-8")
    elif TABLE.findall(text) != printed:
        shown, real = ["".join(tables).splitlines() for tables in (TABLE.findall(text), printed)]
        for line in sorted(set(shown) ^ set(real)) or ["the order of the rows"]:
            yield f"docs/settings.md and valku --settings differ: {line}"


def plain(line):
    return re.sub(r"(with id|Verstrichene Zeit:|\btime|\bnps) [\d.e-]+", r"\1", line)


def output_differences(shown, answer):
    """Compares the lines of a document with those of the program; "..." stands for any lines."""
    shown, answer = [plain(line) for line in shown], [plain(line) for line in answer]
    parts = [[]]
    for line in shown:
        if line == "...":
            parts.append([])
        else:
            parts[-1].append(line)
    at = 0
    for number, part in enumerate(parts):
        last = len(answer) - len(part)
        starts = [at] if number == 0 else [last] if number == len(parts) - 1 and part else range(at, last + 1)
        start = next((start for start in starts if start >= at and answer[start:start + len(part)] == part), None)
        if start is None:
            nearest = next((start for start in starts if start >= at and answer[start:start + 1] == part[:1]), at)
            pairs = zip(part, answer[nearest:] + [None] * len(part))
            yield "shown: {!r}, printed: {!r}".format(*next(pair for pair in pairs if pair[0] != pair[1]))
            return
        at = start + len(part)
    if len(parts) == 1 and at < len(answer):
        yield f"not shown: {answer[at]!r}"


def session_differences(engine, block):
    lines = block.splitlines()
    typed = "".join(line.removeprefix("> ") + "\n" for line in lines if line.startswith("> "))
    with tempfile.TemporaryDirectory() as folder:
        answer = subprocess.run([engine], input=typed, text=True, capture_output=True, cwd=folder, timeout=PATIENCE,
                                check=True).stdout
    yield from output_differences([line for line in lines if not line.startswith("> ")], answer.splitlines())


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def shell_differences(engine, block, output):
    """Waits of the example become shorter or are for what they stand for, and its port is one that is free here."""
    port = free_port()
    listening = f"until grep -q ':{port:04X} .* 0A ' /proc/net/tcp; do sleep 0.1; done"
    block = block.replace("5000", str(port)).replace("sleep 10", "sleep 2").replace("sleep 1\n", listening + "\n")
    output = output and output.replace("5000", str(port))
    with tempfile.TemporaryDirectory() as folder:
        release = Path(folder) / "build/release"
        release.mkdir(parents=True)
        for name in ("valku", "valku-tables", "valku.book"):
            (release / name).symlink_to(engine.parent / name)
        (Path(folder) / "run.sh").symlink_to(engine)
        for name in ("share", "scripts"):
            (Path(folder) / name).symlink_to(ROOT / name)
        result = subprocess.run(["bash", "-e", "-c", block], text=True, cwd=folder, stdin=subprocess.DEVNULL,
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=PATIENCE, check=False,
                                env={**os.environ, "TMPDIR": folder})
        if result.returncode:
            yield f"exit code {result.returncode}: {result.stdout}"
        elif output is not None:
            yield from output_differences(output.splitlines(), result.stdout.splitlines())


def block_differences(engine, text):
    blocks = BLOCK.findall(text)
    for (kind, block), (next_kind, output) in zip(blocks, blocks[1:] + [("", "")]):
        if kind == "text" and block.startswith("> "):
            yield from session_differences(engine, block)
        elif kind == "sh check":
            yield from shell_differences(engine, block, output if next_kind == "text output" else None)


def name_differences(page, text, sources):
    prose = BLOCK.sub("", text)
    for target in re.findall(r"\]\(([^)#]+)[^)]*\)", prose):
        if not target.startswith("http") and not (page.parent / target).exists():
            yield f"the link to {target} leads nowhere"
    for path in re.findall(r"`((?:src|scripts|tests|share|docs|benchmarks|\.ci)/[\w./-]*)`", prose):
        if not (ROOT / path).exists():
            yield f"there is no {path}"
    for name in re.findall(r"\b(\w+)\(\)", text):
        if not re.search(rf"\b{name}\(", sources):
            yield f"there is no function {name}()"


def flag_differences():
    text = (ROOT / "docs/architecture.md").read_text(encoding="utf-8")
    table = text[text.index("| Flag |"):]
    rows = re.findall(r"^\| `(\w+)` \|", table[:table.index("\n\n")], re.MULTILINE)
    for flag in sorted(set(rows) ^ set(ASSIGNED_IN)):
        yield f"docs/architecture.md: {flag} is " + ("no flag of a search" if flag in rows else "missing")


def main():
    if len(sys.argv) not in (2, 3) or sys.argv[2:] not in ([], ["fix"]):
        print(__doc__)
        return 2
    engine = Path(sys.argv[1]).resolve()
    sources = "\n".join(path.read_text(encoding="utf-8") for pattern in ("*.h", "*.cpp")
                        for path in (ROOT / "src").rglob(pattern))
    found = [*table_differences(engine, len(sys.argv) == 3), *flag_differences()]
    for page in DOCUMENTS:
        text = page.read_text(encoding="utf-8")
        found += [f"{page.relative_to(ROOT)}: {difference}" for check in
                  (block_differences(engine, text), name_differences(page, text, sources)) for difference in check]
    for difference in found:
        print(difference)
    if not found:
        print(f"{len(DOCUMENTS)} documents are as the program is")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
