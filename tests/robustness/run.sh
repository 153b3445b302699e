#!/usr/bin/env bash
# Run by "./check --faults": everything that docs/reliability.md has figures for, in full. Builds what is
# required.
set -euo pipefail
top=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
. "$top/tools/build.sh"
here=$top/tests/robustness

step() { printf '\n== %s (%d s)\n' "$1" "$SECONDS"; }

# build_other NAME CC CXX FLAGS: builds velhost and the collector only, with another compiler or optimisation
# level. With -O3, GCC gives false warnings in the C++ library itself.
build_other() {
  local log
  log=$(mktemp)
  if ! (cmake -S "$top" -B "$top/build/$1" -G Ninja -DCMAKE_BUILD_TYPE=None -DCMAKE_C_COMPILER="$2" \
          -DCMAKE_CXX_COMPILER="$3" -DCMAKE_CXX_FLAGS="$4" -DVELHOST_WERROR=OFF -DVELHOST_TESTS=OFF -DVELHOST_LAN=OFF \
          -DVELHOST_BMCSIM=OFF &&
        cmake --build "$top/build/$1" --target velhost torgareg) >"$log" 2>&1; then
    cat "$log" >&2
    return 1
  fi
  rm -f "$log"
}

dev=$top/build/dev
export VELHOST=$dev/bin/velhost VELHOST_SOURCE=$top PYTHONDONTWRITEBYTECODE=1
export PEAKMEMORY=$dev/tests/peakmemory REFUSING=$dev/tests/refusing.so

step "Build (GCC, sanitizers, and for the comparison of builds)"
build dev velhost torgareg allocationsweep lifecycle peakmemory refusing underlocale
build asan-ubsan faultsweep allocationsweep
build_other robustness-gcc-O3 gcc g++ -O3
build_other robustness-clang-O0 clang-14 clang++-14 -O0
build_other robustness-clang-O3 clang-14 clang++-14 -O3

step "Every exchange faulted (sanitizers)"
timeout --foreground 3600 "$top/build/asan-ubsan/tests/faultsweep" 4411 >"$top/build/asan-ubsan/faultsweep.log" 2>&1 &
trap 'kill $(jobs -p) 2>/dev/null || true' EXIT
timeout --foreground 3600 "$top/build/asan-ubsan/tests/faultsweep" 6203
wait $! || { cat "$top/build/asan-ubsan/faultsweep.log" >&2; exit 1; }
cat "$top/build/asan-ubsan/faultsweep.log"
step "Storage areas that lie about their size"
VELHOST=$top/build/robustness-gcc-O3/bin/velhost python3 "$here/storagesizes.py" --whole
step "The largest inputs"
python3 "$here/inputmemory.py"
step "Every allocation of a collection refused"
"$dev/tests/allocationsweep"
step "Every allocation of a collection refused (sanitizers)"
"$top/build/asan-ubsan/tests/allocationsweep"
step "Allocations of the whole program refused"
python3 "$here/refusedmemory.py"
step "Load, collect, unload"
GLIBC_TUNABLES=glibc.malloc.tcache_count=0 "$dev/tests/lifecycle" "$dev"/lib*/velhost/plugins/libtorgareg.pi.so
step "The same again"
python3 "$here/determinism.py" --need-locale --underlocale "$dev/tests/underlocale" \
  --other "$top/build/robustness-gcc-O3/bin/velhost" --other "$top/build/robustness-clang-O0/bin/velhost" \
  --other "$top/build/robustness-clang-O3/bin/velhost"
step "Killed"
VELHOST=$top/build/robustness-gcc-O3/bin/velhost python3 "$here/killed.py"
step "All done"
