#!/usr/bin/env bash
# Runs clang-tidy on the product's sources; the argument is a build folder with a compilation database.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
build=${1:?the build folder}
# Only sources that are in the compilation database.
mapfile -t files < <(find plugin r8 jfr ffdc host bmcsim -name '*.cpp' | sort |
  while read -r file; do if grep -q "/$file\"" "$build/compile_commands.json"; then echo "$file"; fi; done)
[ "${#files[@]}" -gt 0 ] || { echo "no sources to check" >&2; exit 1; }
# The analyzer takes as long as all other checks together, so it is run only on code that reads outside bytes.
check() { # CHECKS FILE...
  local checks=$1
  shift
  printf '%s\0' "$@" |
    xargs -0 -P "$(nproc)" -n 4 clang-tidy-14 -p "$build" --quiet --checks="$checks" --warnings-as-errors='*' 2>/dev/null
}
outside='^(plugin|r8|jfr|ffdc|bmcsim|host/bmc|host/schema|host/bmc/smbios)/'
mapfile -t analyzed < <(printf '%s\n' "${files[@]}" | grep -E "$outside")
mapfile -t others < <(printf '%s\n' "${files[@]}" | grep -vE "$outside")
check '' "${analyzed[@]}"
check '-clang-analyzer-*' "${others[@]}"
echo "clang-tidy: ${#files[@]} files clean, ${#analyzed[@]} of them analyzed"
