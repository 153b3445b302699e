#!/usr/bin/env bash
# Formats the manual pages and treats every warning as an error. Exits with 77 if groff is not installed.
#   manpages.sh FOLDER PAGE...
set -euo pipefail
command -v groff >/dev/null || { echo "no groff here"; exit 77; }
cd "$1"
shift
status=0
for page in "$@"; do
  warnings=$(groff -mdoc -ww -z -Tutf8 "$page" 2>&1) || true
  words=$(groff -mdoc -Tutf8 "$page" | wc -w)
  [ -z "$warnings" ] || { printf '%s\n' "$warnings"; status=1; }
  [ "$words" -gt 200 ] || { echo "$page: $words words"; status=1; }
  if grep -nE '@[A-Z_]+@' "$page"; then echo "$page: a place that was not filled in"; status=1; fi
done
exit $status
