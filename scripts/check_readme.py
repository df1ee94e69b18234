#!/usr/bin/env python3
"""Holds the README to the engine: scripts/check_readme.py ENGINE

The options are compared with what the engine says to `uci`: names, order, types, ranges and defaults. The settings are
compared with the table in src/protocol/parameters.cpp and the variables that it names: keys, order, checks and
defaults; and a key must go to the variable of its name. A setting that the README calls unread must be one that
nothing else under src/ mentions, and the other way round. The session at the terminal is typed into the engine, which
must answer as the README shows. Prints every difference; the exit code tells whether there was one.
"""

import re
import subprocess
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
PARAMETERS = ROOT / "src/protocol/parameters.cpp"

# What the README says of a check in the table.
CHECKS = {"any": "always", "positive": "above 0", "positiveOrNone": "above 0, else 0", "nonNegative": "0 or more",
          "nonZero": "not 0", "text": "text", "peer": "host:port, port above 0"}

UNREAD = "stored; nothing reads it"
TO_COME = "(to come)"

# Settings without a variable of their own.
DEFAULTS_WITHOUT_VARIABLE = {"remoteClient": "none", "listenAddress": "none", "acceptFrom": "none", "writeLogFile": "0"}


def readme_table(first_column):
    """The cells of the rows of the README's table whose first column has that title."""
    rows, inside = [], False
    for line in (ROOT / "README.md").read_text(encoding="utf-8").splitlines():
        cells = [cell.strip() for cell in line.strip().strip("|").split("|")]
        if not line.startswith("|"):
            inside = False
        elif cells[0] == first_column:
            inside = True
        elif inside and not set(line) <= set("|-"):
            rows.append([cell.strip("`") for cell in cells])
    return rows


def options_of_engine(engine):
    with tempfile.TemporaryDirectory() as folder:
        answer = subprocess.run([engine], input="uci\nquit\n", text=True, capture_output=True, cwd=folder,
                                timeout=60, check=True).stdout
    line = re.compile(r"^option name (\S+) type (\w+)(?: default (\S+))?(?: min (\d+) max (\d+))?$", re.MULTILINE)
    for name, kind, default, least, most in line.findall(answer):
        yield [name, f"{kind}, {least} to {most}" if least else kind, default or "none"]


def session_differences(engine):
    """The block that begins with "> console": what is typed stands behind "> ", the rest is the engine's."""
    text = (ROOT / "README.md").read_text(encoding="utf-8")
    block = re.search(r"^    > console\n((?:    .*\n|\n(?=(?:\n|    )))*)", text, re.MULTILINE)[0]
    lines = [line.removeprefix("    ") for line in block.splitlines()]
    typed = "".join(line.removeprefix("> ") + "\n" for line in lines if line.startswith("> "))
    shown = [line for line in lines if not line.startswith("> ")]
    with tempfile.TemporaryDirectory() as folder:
        answer = subprocess.run([engine], input=typed, text=True, capture_output=True, cwd=folder, timeout=60,
                                check=True).stdout.splitlines()

    def plain(line):
        return re.sub(r"(with id|Verstrichene Zeit:) [\d.e-]+", r"\1", line)

    for number in range(max(len(shown), len(answer))):
        said, real = (plain(part[number]) if number < len(part) else None for part in (shown, answer))
        if said != real:
            yield f"session: README has {said!r}, the engine {real!r}"


def settings_of_table():
    """Key, check and variable of each row of the engine's table; the variable may be empty."""
    text = PARAMETERS.read_text(encoding="utf-8")
    text = text[text.index("Parameter table[] = {"):]
    row = re.compile(r'\b(?:number|shared|stored)\("(\w+)",\s*(?:SettingCheck::)?(\w+),\s*(&?)([\w.]+)')
    for key, check, is_variable, target in row.findall(text[:text.index("\n};")]):
        yield key, check, target.split(".")[-1] if is_variable else ""


def other_sources():
    return [path.read_text(encoding="utf-8") for pattern in ("*.h", "*.cpp")
            for path in sorted((ROOT / "src").rglob(pattern)) if path.stem != "parameters"]


def default_of(key, variable, sources):
    if key in DEFAULTS_WITHOUT_VARIABLE:
        return DEFAULTS_WITHOUT_VARIABLE[key]
    if key.startswith("weight"):
        definition = rf"\{{'{key[-1].lower()}',\s*(\d+)\}}"
    else:
        definition = rf"\b(?:i32|i64|u64|string) {variable or key} = \"?([^;\"]+?)\"?;"
    header = (PARAMETERS.with_suffix(".h")).read_text(encoding="utf-8")
    found = {value for source in sources + [header] for value in re.findall(definition, source)}
    return found.pop() if len(found) == 1 else f"one of {sorted(found)}"


def is_read(variable, sources):
    """Is the variable mentioned outside comments and its own declaration?"""
    mention = re.compile(rf"\b{variable}\b(?! = \d+;)")
    return any(mention.search(line.split("//")[0]) for source in sources for line in source.splitlines()
               if not line.startswith("extern "))


def differences(title, said, real):
    """Compares row by row; a row is known by its first cell."""
    if [row[0] for row in said] != [row[0] for row in real]:
        yield f"{title}: names or their order differ"
        yield f"  README {[row[0] for row in said]}"
        yield f"  engine {[row[0] for row in real]}"
    by_name = {row[0]: row for row in real}
    for row in said:
        expected = by_name.get(row[0], row)
        if row[:len(expected)] != expected:
            yield f"{title}: README has {row[:len(expected)]}, the engine {expected}"


def unread_differences(said, settings, sources):
    meanings = {row[0]: row[3] for row in said}
    for key, _, variable in settings:
        meaning = meanings.get(key, TO_COME)
        if variable and not key.startswith("weight") and TO_COME not in meaning:
            read = is_read(variable, sources)
            if read == meaning.startswith(UNREAD):
                yield f"settings: {key} is {'read by something' if read else 'read by nothing'}"


def main():
    if len(sys.argv) != 2:
        print(__doc__)
        return 2
    sources = other_sources()
    settings = list(settings_of_table())
    settings_said = readme_table("Key")
    real_settings = [[key, default_of(key, variable, sources), CHECKS[check]] for key, check, variable in settings]

    found = list(differences("options", readme_table("UCI option"), list(options_of_engine(sys.argv[1]))))
    found += differences("settings", settings_said, real_settings)
    found += [f"settings: {key} goes to {variable}" for key, _, variable in settings
              if variable not in ("", key, "bookWeights")]
    found += unread_differences(settings_said, settings, sources)
    found += session_differences(sys.argv[1])
    for difference in found:
        print(difference)
    if not found:
        print(f"{len(settings)} settings and {len(readme_table('UCI option'))} options are as the README says")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
