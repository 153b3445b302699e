#!/usr/bin/env bash
# Completes command lines like bash and compares the suggestions.
#   completion.sh VELHOST COMPLETION SCHEMA
set -euo pipefail
velhost=$1 schema=$3
# shellcheck source=/dev/null
. "$2"
cd "$(mktemp -d)"
trap 'rm -rf "$PWD"' EXIT
touch block.bin demo.toml run.jsonl
mkdir captures
failures=0

# offers EXPECTED WORD...: completes the last word. Words are split in the same way as by bash.
offers() {
  local expected=$1 found
  shift
  COMP_WORDS=("$@")
  COMP_CWORD=$(($# - 1))
  COMPREPLY=()
  _velhost 2>/dev/null || true
  found=$(printf '%s\n' "${COMPREPLY[@]}" | sort | paste -sd' ')
  if [ "$found" != "$expected" ]; then
    echo "\"$*\" offers \"$found\" instead of \"$expected\""
    failures=$((failures + 1))
  fi
}

offers "check classes collect describe diff plugin show simulate" "$velhost" ""
offers "check" "$velhost" che
offers "check" "$velhost" -vv che
offers "--format" "$velhost" collect --fo
offers "--format" "$velhost" classes --fo
offers "json table" "$velhost" classes --format ""
offers "json text" "$velhost" plugin --format ""
offers "KROSG_DCAPFile" "$velhost" describe krosg_dc
offers "krosg_t4_memctl_statisticdata.EccSyndrome" "$velhost" describe krosg_t4_memctl_statisticdata.ecc
offers "" "$velhost" describe KROSG_DCAPFile.F
offers "4411 4414 4523 4524" "$velhost" collect --machine-type 4
offers "6101 6102 6106" "$velhost" classes --schema "$schema" --machine-type = 61
offers "" "$velhost" collect --schema run.jsonl --machine-type ""
offers "" "$velhost" collect --label ""
offers "KROSG_DCAPFile" "$velhost" classes KROSG_D
offers "--version" "$velhost" --ver
offers "-v -vv -vvv" "$velhost" plugin -v
offers "--password-file --plugin --privilege" "$velhost" classes --p
offers "cimxml json jsonl mof table" "$velhost" collect --format ""
offers "json jsonl" "$velhost" collect --format = js
offers "json text" "$velhost" check --format ""
offers "17" "$velhost" collect --cipher-suite 1
offers "inband inband:/dev/ipmi" "$velhost" collect --sp inb
offers "demo.toml" "$velhost" collect --sp sim : de
offers "block.bin captures demo.toml run.jsonl" "$velhost" collect --sp replay :
offers "block.bin captures demo.toml run.jsonl" "$velhost" collect --sp image :
offers "demo.toml" "$velhost" collect --schema d
offers "example" "$velhost" collect --schema exa
offers "+captures" "$velhost" classes --schema +cap
offers "" "$velhost" check --schema +exa
offers "captures" "$velhost" collect --capture-dir ""
offers "demo.toml dot-command.toml" "$velhost" simulate d
offers "failing.toml" "$velhost" collect --sp sim : fa
offers "" "$velhost" collect --sp replay : fa
offers "" "$velhost" collect --timeout ""
offers "admin" "$velhost" collect --privilege a
offers "KROSG_DCAPFile" "$velhost" collect --schema "$schema" KROSG_D
offers "KROSG_T4_MEMCTL_StatisticData KROSG_T4_PCIIOBRIDGE_StatisticData" "$velhost" collect KROSG_T4
offers "" "$velhost" collect --schema run.jsonl KROSG_D
offers "KROSG_DCAPFile" "$velhost" collect --schema "$schema" krosg_d
offers "KROSG_J2_L3Cache_StatisticData" "$velhost" collect krosg_j2_l3
offers "" "$velhost" collect KROSG_L3
offers "classes" "$velhost" --log collect cla
offers "classes" "$velhost" --log = collect --sp sim : check cla
offers "--format" "$velhost" --log check collect --fo
offers "demo.toml" "$velhost" collect --sp = sim : de
offers "block.bin captures demo.toml dot-command.toml eight-byte.toml failing.toml labelled.toml run.jsonl slow.toml" \
  "$velhost" collect --sp = sim :
offers "sim sim:" "$velhost" collect --sp = si

[ "$failures" -eq 0 ] && echo "every completion as expected"
exit "$failures"
