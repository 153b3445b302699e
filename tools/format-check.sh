#!/usr/bin/env bash
# Whether every C++ file is as clang-format leaves it. With --fix, puts them right.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
mode=(--dry-run -Werror)
if [ "${1:-}" = --fix ]; then mode=(-i); fi
git -c safe.directory='*' ls-files -z '*.cpp' '*.h' | xargs -0 clang-format-14 "${mode[@]}"
