#!/usr/bin/env bash
# Checks that clang-format would not change any C++ file. With --fix, reformats them.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
mode=(--dry-run -Werror)
if [ "${1:-}" = --fix ]; then mode=(-i); fi
# Does not use git: a source tree may lack its history or belong to another user.
find . \( -path './build*' -o -path './.*' \) -prune -o -type f \( -name '*.cpp' -o -name '*.h' \) -print0 |
  xargs -0 clang-format-14 "${mode[@]}"
