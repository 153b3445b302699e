#!/usr/bin/env bash
# Builds the Debian packages of a build tree, unpacks them, and runs a collection with the unpacked program.
#   deb.sh BUILD
# Fortified C library calls are required unless BUILD is a debug build.
set -euo pipefail
build=$1
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
chmod 755 "$scratch"
umask 022
fail() { echo "$*"; exit 1; }
option() { sed -n "s/^$1:[A-Z]*=//p" "$build/CMakeCache.txt"; }

cpack --config "$build/CPackConfig.cmake" -G DEB -B "$scratch/packages" >"$scratch/cpack.log" 2>&1 ||
  { cat "$scratch/cpack.log"; exit 1; }

field() { dpkg-deb -f "$scratch/packages/$1"_*.deb "$2"; }
for package in velhost velhost-dev; do
  [ "$(field $package Package)" = $package ] || fail "no package $package"
done
for file in "$scratch"/packages/*.deb; do
  scripts=$(dpkg-deb --ctrl-tarfile "$file" | tar -t | grep -vE '^\./(control|md5sums)?$' || true)
  [ -z "$scripts" ] || fail "$file does something when it is installed: $scripts"
done
case $(field velhost Depends) in *libc6*libfmt9*) ;; *) fail "velhost depends on: $(field velhost Depends)" ;; esac
case $(field velhost Depends) in *freeipmi*) fail "velhost depends on libFreeIPMI" ;; esac
case $(field velhost Description) in "collects chipset error registers"*) ;; *) fail "$(field velhost Description)" ;; esac
modules=()
[ "$(option VELHOST_BMCSIM)" = OFF ] || modules+=(lib/velhost/modules/velbmcsim.so)
if [ "$(option VELHOST_LAN)" != OFF ]; then
  modules+=(lib/velhost/modules/velhost-lan.so)
  case $(field velhost-lan Depends) in *libfreeipmi17*) ;; *) fail "velhost-lan: $(field velhost-lan Depends)" ;; esac
fi

for file in "$scratch"/packages/*.deb; do dpkg-deb -x "$file" "$scratch/root"; done
for file in bin/velhost "${modules[@]}" lib/velhost/libsmbios.so share/man/man1/velhost.1.gz share/man/man5/velhost-recording.5.gz \
  share/man/man5/velhost-server-file.5.gz share/man/man5/velhost-result.5.gz share/bash-completion/completions/velhost \
  share/velhost/schema/20-chipset.mof share/velhost/servers/demo.toml \
  share/velhost/instance-collection.schema.json share/velhost/result-diff.schema.json share/doc/velhost/copyright \
  share/doc/velhost/changelog.Debian.gz include/velhost/nkrovel20/api.h lib/pkgconfig/velhost.pc \
  share/velhost/template/CMakeLists.txt share/velhost/template/templateplugin.cpp; do
  [ -s "$scratch/root/usr/$file" ] || fail "the packages have no $file"
done

# The contact of whoever builds the packages is in all three places (VELHOST_PACKAGE_CONTACT).
documents=$scratch/root/usr/share/doc/velhost
grep -qF "Upstream-Contact: $(field velhost Maintainer)" "$documents/copyright" || fail "another contact in copyright"
gzip -dc "$documents/changelog.Debian.gz" | grep -qF -- "-- $(field velhost Maintainer)  " || fail "another in changelog"

# The text of the licence is part of every Debian system.
grep -qxF 'License: Apache-2.0' "$documents/copyright" || fail "copyright does not state the licence"
[ ! -e "$documents/LICENSE" ] || fail "the packages have a licence text of their own"

# The packages must not install libraries where the loader looks by default, nor change where it looks.
foreign=$(find "$scratch/root/usr/lib" -maxdepth 1 -name '*.so*')
[ -z "$foreign" ] || fail "the packages have libraries for everybody: $foreign"
checks=(--hardened --moved)
if [ "$(option CMAKE_BUILD_TYPE)" != Debug ]; then
  checks+=(--fortified)
  unchecked=$(grep '^  "command":' "$build/compile_commands.json" | grep -v -- '-D_FORTIFY_SOURCE=2' || true)
  [ -z "$unchecked" ] || fail "compiled without the C library's checks: $unchecked"
fi
[ "$(option VELHOST_HARDENING)" != OFF ] || fail "a build that is not hardened is not one to package"
python3 "$here/binaries.py" "${checks[@]}" "$scratch/root/usr"

# The unpacked program must print the same as the built one, without access to the build tree's libraries.
velhost=$scratch/root/usr/bin/velhost
outside=$(ldd "$velhost" | grep -F "$build" || true)
[ -z "$outside" ] || fail "the packaged program uses the build tree: $outside"
"$velhost" plugin | grep -qF "$scratch/root/usr/lib/velhost/plugins/libtorgareg.pi.so" || fail "another plugin was loaded"
# Each run has its own identifier and times, and each program its own schema.
without_run() { sed -E '/^"run":/d; s/"schema":\{"paths":\[[^]]*\]//'; }
"$velhost" collect --format json | without_run >"$scratch/unpacked.json"
"$build/bin/velhost" collect --format json | without_run >"$scratch/built.json"
grep -q '"class":"KROSG_DCAPFile"' "$scratch/unpacked.json" || fail "nothing was collected"
cmp "$scratch/unpacked.json" "$scratch/built.json"

if command -v lintian >/dev/null; then
  found=$(lintian --allow-root --display-info --fail-on error,warning "$scratch"/packages/*.deb) ||
    fail "lintian finds what packaging/README.md does not explain: $found"
  weak=$(grep hardening- <<<"$found" || true)
  [ -z "$weak" ] || fail "lintian finds what is not hardened: $weak"
fi
echo "packages: $(cd "$scratch/packages" && echo *.deb)"
