#!/usr/bin/env bash
# Whether every C++ file is as clang-format leaves it. With --fix, puts them right.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
mode=(--dry-run -Werror)
if [ "${1:-}" = --fix ]; then mode=(-i); fi
# Not asked of git: a tree may come without its history, or belong to another user.
find . \( -path './build*' -o -path './.*' \) -prune -o -type f \( -name '*.cpp' -o -name '*.h' \) -print0 |
  xargs -0 clang-format-14 "${mode[@]}"
