#!/usr/bin/env bash
# Tests the in-band transport with the real kernel driver: boots a Debian kernel in QEMU with two simulated
# BMCs, and runs kernel_test and velhost inside.
#
#   tests/kernel/run.sh BUILD_FOLDER
#
# Skips, with a message, only if QEMU cannot run at all.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
build=$(cd "${1:?usage: run.sh BUILD_FOLDER}" && pwd)
seconds=${KERNEL_TEST_SECONDS:-180}

need() {
  command -v "$1" >/dev/null 2>&1 || { echo "$1 is missing; install the package $2" >&2; exit 1; }
}
need qemu-system-x86_64 qemu-system-x86
need busybox busybox-static
need cpio cpio
need ipmi_sim openipmi
need python3 python3
if ! reason=$(qemu-system-x86_64 -accel tcg -machine none -display none -monitor none -version 2>&1); then
  echo "SKIPPED: QEMU cannot run here: $reason"
  exit 0
fi

work=$(mktemp -d)
children=()
finish() {
  local child
  for child in "${children[@]}"; do kill "$child" 2>/dev/null || true; done
  wait 2>/dev/null || true
  rm -rf "$work"
}
trap finish EXIT

# The kernel is unpacked, not installed, and kept for later runs.
kernel=$build/kernel
if ! ls "$kernel"/boot/vmlinuz-* >/dev/null 2>&1; then
  find_package() {
    apt-cache depends linux-image-amd64 2>/dev/null | awk '$1 == "Depends:" && $2 ~ /^linux-image-[0-9]/ { print $2; exit }'
  }
  package=$(find_package)
  if [ -z "$package" ]; then
    sudo=
    if [ "$(id -u)" -ne 0 ]; then sudo=sudo; fi
    $sudo apt-get update -qq
    package=$(find_package)
  fi
  [ -n "$package" ] || { echo "apt-cache knows no package linux-image-amd64; run apt-get update" >&2; exit 1; }
  mkdir -p "$work/package" "$kernel"
  (cd "$work/package" && apt-get download -qq "$package" 2>/dev/null)
  dpkg -x "$work"/package/*.deb "$kernel"
fi
vmlinuz=$(ls "$kernel"/boot/vmlinuz-* | head -n 1)

# The file system of the virtual machine: busybox, the driver's modules, the test and its libraries.
root=$work/root
mkdir -p "$root"/{bin,lib,lib64,modules}
cp "$(command -v busybox)" "$root/bin/busybox"
cp "$here/init" "$root/init"
chmod 755 "$root/init"
for module in ipmi_msghandler ipmi_devintf ipmi_si; do
  find "$kernel/lib/modules" -name "$module.ko" -exec cp {} "$root/modules/" \;
done
add_libraries() {
  ldd "$1" | awk '$2 == "=>" && $3 ~ /^\// { print $3 }' | while read -r library; do
    [ -e "$root/lib/$(basename "$library")" ] || install -m 644 "$library" "$root/lib/"
  done
}
cp /lib64/ld-linux-x86-64.so.2 "$root/lib64/"
strip -o "$root/kernel_test" "$build/tests/kernel_test"
add_libraries "$build/tests/kernel_test"
if [ -x "$build/bin/velhost" ]; then
  mkdir -p "$root/velhost/bin" "$root/velhost/lib"
  cp "$build/bin/velhost" "$root/velhost/bin/"
  cp -r "$build/lib/velhost" "$root/velhost/lib/"
  mkdir -p "$root/velhost/share"
  cp -rL "$build/share/velhost" "$root/velhost/share/"
  add_libraries "$build/bin/velhost"
  for plugin in "$build"/lib/velhost/plugins/*.so; do add_libraries "$plugin"; done
fi
find "$root/lib" "$root/velhost" -name '*.so*' -exec strip --strip-debug {} + 2>/dev/null || true
(cd "$root" && find . | cpio --quiet -o -H newc | gzip -1) >"$work/initramfs.gz"

# The two BMCs: the server that the shared suite uses, with one ipmi_sim per node.
VELHOST_WRITE_SERVER=$work/server.toml "$build/tests/kernel_test" --gtest_brief=1 \
  --gtest_filter='*CountsNodesAndHasTheDriver*' >/dev/null
# Registers of the shipped schema on node 0, the node from which registers are read.
python3 - "$work/server.toml" <<'REGISTERS'
import sys
text = open(sys.argv[1]).read()
tables = "".join(
    f'[[bmc_node.register]]\nchip = {chip}\naddress = {address:#08x}\nvalue = "{" ".join(f"{(start + i) & 255:02x}" for i in range(8))}"\n'
    for chip, address, start in [(0, 0x0C0100, 1), (0, 0x2C0118, 33), (1, 0x0D0100, 65), (2, 0x0D0128, 97), (3, 0x2D0138, 129)])
first = text.index("[[bmc_node]]") + 1
second = text.index("[[bmc_node]]", first)
open(sys.argv[1], "w").write(text[:second] + tables + text[second:])
REGISTERS
free_port() {
  python3 -c 'import socket, sys
s = socket.socket(socket.AF_INET, getattr(socket, sys.argv[1])); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])' "$1"
}
serial=()
network=()
for node in 0 1; do
  : >"$work/simulator$node"
  serial+=("$(free_port SOCK_STREAM)")
  network+=("$(free_port SOCK_DGRAM)")
  "$build/bin/velhost" simulate "$work/server.toml" --node "$node" --port "${network[$node]}" \
    --serial-port "${serial[$node]}" >"$work/simulator$node" 2>&1 &
  children+=($!)
done
for node in 0 1; do
  for _ in $(seq 100); do grep -q 'Press Ctrl-C to stop' "$work/simulator$node" && break; sleep 0.1; done
  grep -q 'Press Ctrl-C to stop' "$work/simulator$node" || { cat "$work/simulator$node" >&2; exit 1; }
done

# The kernel finds the last device first, so that one becomes /dev/ipmi0.
status=0
timeout "$seconds" qemu-system-x86_64 -accel tcg -machine pc -m 512 -display none -no-reboot -nic none \
  -monitor none -serial stdio -kernel "$vmlinuz" -initrd "$work/initramfs.gz" \
  -append "console=ttyS0 quiet panic=-1" -smbios "type=1,product=Server -[6203AC1]-" \
  -chardev "socket,id=bmc1,host=127.0.0.1,port=${serial[1]},reconnect=1" -device ipmi-bmc-extern,id=bmc1,chardev=bmc1 \
  -device isa-ipmi-bt,bmc=bmc1 \
  -chardev "socket,id=bmc0,host=127.0.0.1,port=${serial[0]},reconnect=1" -device ipmi-bmc-extern,id=bmc0,chardev=bmc0 \
  -device isa-ipmi-kcs,bmc=bmc0 \
  </dev/null >"$work/console" 2>"$work/qemu" || status=$?
tr -d '\r' <"$work/console" >"$work/output"
grep -v "^{\"kind\"" "$work/output" || true
if [ "$status" -ne 0 ]; then
  cat "$work/qemu" >&2
  echo "FAILED: QEMU ended with $status (124: not done after $seconds s)" >&2
  exit 1
fi
grep -qx '== kernel test result 0' "$work/output" || { echo "FAILED in the virtual machine" >&2; exit 1; }

# The same server in four ways: simulated in the process, recorded, over the network, and through the kernel
# driver. Each run has its own identifier, and capture files get the time of the machine that reads them.
instances() {
  grep '"kind":"instance"' "$1" | sed -E 's/"run_id":"[^"]*",//; /KROSG_DCAPFile/s/"[0-9]{14}\.[0-9]{6}[+-][0-9]{3}"/"TIME"/g' || true
}
collect() { # name, arguments
  local name=$1
  shift
  TZ=UTC VELHOST_IPMI_PASSWORD=test "$build/bin/velhost" collect --format jsonl --output "$work/$name.jsonl" "$@"
  instances "$work/$name.jsonl" >"$work/$name"
}
if [ -e "$root/velhost/bin/velhost" ]; then
  collect sim --sp "sim:$work/server.toml" --record "$work/recording.jsonl"
  collect replay --sp "replay:$work/recording.jsonl"
  collect lan --schema example --sp "lan:ipmiusr@127.0.0.1:${network[0]}" --sp "lan:ipmiusr@127.0.0.1:${network[1]}"
  instances "$work/output" >"$work/inband"
  for class in KROSG_T4_MEMCTL KROSG_VO_PCIIOBRIDGE KROSG_DCAPFile; do
    grep -q "$class" "$work/sim" || { echo "FAILED: the simulator gives nothing of $class to compare with" >&2; exit 1; }
  done
  for way in replay lan inband; do
    diff "$work/sim" "$work/$way" || { echo "FAILED: $way gives other instances than the simulator" >&2; exit 1; }
  done
  echo "velhost: $(wc -l <"$work/sim") instances, the same from the simulator, its recording, the network and the driver"
fi
echo "Kernel driver: passed"
