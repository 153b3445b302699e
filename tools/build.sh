# Sourced by ./run and ./check: functions that install Debian packages and build a preset.

# Packages for the product (openipmi is for velhost simulate), for the tests, and for "./check --all".
packages_build="g++ cmake ninja-build libboost-dev nlohmann-json3-dev libfmt-dev libpugixml-dev
  libutf8proc-dev nettle-dev bison flex libfreeipmi-dev libopenipmi-dev openipmi pkg-config"
packages_test="libgtest-dev libgmock-dev python3 python3-jsonschema binutils libxml2-utils groff-base
  dpkg-dev file lintian ipmitool freeipmi-tools locales systemd valgrind"
packages_all="clang-14 clang-tidy-14 clang-format-14 iwyu libclang-rt-14-dev qemu-system-x86 busybox-static cpio"

missing_packages() {
  local name
  for name in "$@"; do
    dpkg-query -W -f '${db:Status-Status}' "$name" 2>/dev/null | grep -qx installed || echo "$name"
  done
}

# install_packages build|test|all
install_packages() {
  local wanted=$packages_build missing sudo=
  case $1 in
    test) wanted="$wanted $packages_test" ;;
    all) wanted="$wanted $packages_test $packages_all" ;;
  esac
  # shellcheck disable=SC2086  # a list of names
  missing=$(missing_packages $wanted)
  [ -n "$missing" ] || return 0
  if [ "$(id -u)" -ne 0 ]; then sudo=sudo; fi
  echo "Installing:" $missing >&2
  $sudo apt-get update -qq >&2
  # shellcheck disable=SC2086
  $sudo env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $missing >/dev/null
}

# build PRESET [TARGET...]: quiet unless something fails.
build() {
  local preset=$1 log
  shift
  log=$(mktemp)
  if ! (cd "$top" && cmake --preset "$preset" ${VELHOST_CMAKE_ARGS:-} &&
        cmake --build "build/$preset" ${1:+--target "$@"}) >"$log" 2>&1; then
    cat "$log" >&2
    rm -f "$log"
    echo "The build of preset $preset failed." >&2
    return 1
  fi
  rm -f "$log"
}
