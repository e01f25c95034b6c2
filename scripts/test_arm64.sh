#!/bin/sh
# Usage: scripts/test_arm64.sh [arm64|nehalem|scalar]... Renders the frames of every effect on other machines and holds them
# against tests/checksums.txt: AArch64, cross-built and emulated; an x86-64 of 2008, emulated; a build without vectors.
# All three if none is named. Under the emulator that takes its time.
set -eu
cd "$(dirname "$0")/.."
[ $# -gt 0 ] || set -- arm64 nehalem scalar
./scripts/install_packages.sh qemu-user-static

root=build/arm64-root
make_root() {
  [ -e $root/made ] && return
  rm -rf $root
  sources=''
  for list in /etc/apt/sources.list /etc/apt/sources.list.d/debian.sources; do
    [ ! -e $list ] || sources="$sources $list"
  done
  mkdir -p build
  # shellcheck disable=SC2086
  mmdebstrap --variant=extract --arch=arm64 --include="libc6-dev libstdc++-12-dev libopencv-core-dev
    libopencv-imgproc-dev nlohmann-json3-dev libtinyxml2-dev libpng-dev libturbojpeg0-dev libhwy-dev libfmt-dev
    libgtest-dev" bookworm $root $sources
  touch $root/made
}

for machine in "$@"; do
  echo "== $machine"
  case $machine in
    arm64)
      ./scripts/install_packages.sh mmdebstrap g++-aarch64-linux-gnu
      make_root
      cmake --preset arm64 >/dev/null
      cmake --build --preset arm64
      ctest --preset arm64 ;;
    nehalem)
      cmake --preset release -DKVX_BUILD_TESTS=ON >/dev/null
      cmake --build --preset release --target checksums_test
      qemu-x86_64-static -cpu Nehalem ./build/release/tests/checksums_test ;;
    scalar)
      cmake --preset scalar >/dev/null
      cmake --build --preset scalar
      ctest --preset scalar ;;
    *) echo "no machine '$machine'" >&2; exit 2 ;;
  esac
done
