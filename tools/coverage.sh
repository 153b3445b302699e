#!/usr/bin/env bash
# Shows what the tests of the collector, or the fuzz corpora, cover: the percentage of lines and branches for
# each source file, then every line and branch that is not covered.
#   tools/coverage.sh                  tests/{plugin,ffdc,r8,jfr} over the collector
#   tools/coverage.sh corpus [NAME...] the corpus of fuzz target NAME over the code it tests; CORPUS=DIR adds DIR/NAME
# Builds with Clang in build/coverage. Requires llvm-14 for llvm-cov-14 and llvm-profdata-14.
set -euo pipefail
top=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
. "$top/tools/build.sh"
binaries="$top/build/coverage" profiles="$top/build/coverage/profiles"
tests="plugin_test librarycalls_test pluginload_test ffdc_test r8_test jfr_test"

# The sources that each fuzz target tests.
sources_of() {
  case $1 in
    ffdc|r8|jfr) echo "$1/" ;;
    output) echo host/output/ ;;
    mof) echo host/schema/ ;;
    recording) echo host/bmc/record/{replay,recordingline}. host/base/{storedbytes,digits}. ;;
    serverfile) echo host/bmc/sim/{serverfile,toml,faults,simulatedserver} ;;
    fru) echo host/bmc/lan/fru. ;;
    smbios) echo host/bmc/smbios/smbios. ;;
    commandline) echo host/velhost/{commandline,optiontable,help}. ;;
    *) echo "no such target: $1" >&2; exit 64 ;;
  esac
}

# report SOURCE-PREFIX... -- PROGRAM...: evaluates the profiles that the programs wrote.
report() {
  local prefixes=() objects=()
  while [ "$1" != -- ]; do prefixes+=("$top/$1"); shift; done
  shift
  for program in "$@"; do objects+=(-object "$program"); done
  llvm-profdata-14 merge -o "$profiles/all" "$profiles"/*.raw
  llvm-cov-14 export -format=lcov -instr-profile="$profiles/all" "${objects[@]}" |
    awk -v top="$top/" -v wanted="${prefixes[*]}" '
      function take(kind, place, count) {
        place = file ":" place
        if (!(kind SUBSEP place in reached)) { order[++places] = kind SUBSEP place; all[file, kind]++ }
        if (count > 0 && !reached[kind, place]) hit[file, kind]++
        reached[kind, place] += count
      }
      BEGIN { split(wanted, prefixes, " ") }
      /^SF:/ {
        file = ""
        for (i in prefixes) if (index(substr($0, 4), prefixes[i]) == 1) file = substr($0, 4 + length(top))
        if (file != "" && !(file in seen)) { seen[file] = 1; files[++n] = file }
      }
      file == "" { next }
      /^DA:/ { split(substr($0, 4), f, ","); take("line", f[1], f[2]) }
      /^BRDA:/ { split(substr($0, 6), f, ","); take("branch", f[1] " (number " f[2] "." f[3] ")", f[4] == "-" ? 0 : f[4]) }
      END {
        for (i = 1; i <= n; i++)
          printf "%-44s lines %4d/%-4d  branches %4d/%-4d\n", files[i], hit[files[i], "line"], all[files[i], "line"],
                 hit[files[i], "branch"], all[files[i], "branch"]
        for (i = 1; i <= n; i++) { a += all[files[i], "line"]; b += hit[files[i], "line"]
                                   c += all[files[i], "branch"]; d += hit[files[i], "branch"] }
        printf "%-44s lines %4d/%-4d  branches %4d/%-4d\n", "all", b, a, d, c
        for (i = 1; i <= places; i++)
          if (!reached[order[i]]) { split(order[i], f, SUBSEP); print "not reached: " f[2] " " f[1] }
      }'
}

command -v llvm-cov-14 >/dev/null || { echo "llvm-cov-14 is missing: apt-get install llvm-14" >&2; exit 69; }
rm -rf "$profiles"
mkdir -p "$profiles"
if [ "${1:-}" = corpus ]; then
  shift
  if [ $# -eq 0 ]; then set -- $(cd "$top/fuzz/corpus" && basename -s .seeds -- *.seeds); fi
  # shellcheck disable=SC2046  # names without blanks
  build coverage $(printf '%s_fuzz ' "$@")
  for name in "$@"; do
    echo "== $name"
    rm -f "$profiles"/*
    inputs=("$binaries/fuzz/seeds/$name" ${CORPUS:+"$CORPUS/$name"})
    [ ! -d "$binaries/fuzz/grown/$name" ] || inputs+=("$binaries/fuzz/grown/$name")
    LLVM_PROFILE_FILE="$profiles/%p.%m.raw" "$binaries/fuzz/${name}_fuzz" "${inputs[@]}" >/dev/null
    wanted=$(sources_of "$name")
    # shellcheck disable=SC2086
    report $wanted -- "$binaries/fuzz/${name}_fuzz" "$binaries"/lib/velhost/*.so
  done
else
  # shellcheck disable=SC2086
  build coverage torgareg $tests
  for test in $tests; do
    LLVM_PROFILE_FILE="$profiles/$test.%p.%m.raw" "$binaries/tests/$test" --gtest_brief=1 >/dev/null
  done
  # shellcheck disable=SC2086
  report plugin/ ffdc/ r8/ jfr/ -- $(printf "$binaries/tests/%s " $tests) \
    "$(find "$binaries" -name 'libtorgareg.pi.so')"
fi
