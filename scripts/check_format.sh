#!/usr/bin/env bash
# Holds every C++ file to .clang-format; `scripts/check_format.sh fix` rewrites the files instead.
set -eu
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."

# The layout differs a little from one version of the tool to the next, so one version decides.
format=$(command -v clang-format-14 || command -v clang-format || true)
[ -n "$format" ] || { echo "clang-format 14 is not installed (Debian package clang-format-14)" >&2; exit 1; }

folders=()
for folder in src tests benchmarks; do [ -d "$folder" ] && folders+=("$folder"); done
mode=(--dry-run --Werror)
[ "${1-}" = fix ] && mode=(-i)
find "${folders[@]}" \( -name '*.cpp' -o -name '*.h' \) -print0 | xargs -0 -r "$format" --style=file "${mode[@]}"
[ "${1-}" = fix ] || echo "every file keeps the format"
