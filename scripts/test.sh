#!/bin/sh
# Builds and runs every test: the release build, then everything again under the address and undefined-behaviour sanitizers,
# then clang-tidy over all sources, then the fuzzers on the kept corpus and for a few seconds more.
set -eu
cd "$(dirname "$0")/.."
./scripts/install_packages.sh chromium chromium-driver clang-tidy curl ffmpeg python3 python3-numpy python3-pytest \
  python3-pil python3-distributed libgegl-dev gegl libgstreamer1.0-dev libgstreamer-plugins-base1.0-dev gstreamer1.0-tools \
  gstreamer1.0-plugins-base slurm-wlm munge
# MLT as packages would bring 187 of them.
mlt=ON
./scripts/get_mlt.sh || { mlt=OFF; echo "== MLT cannot be had: its module and its tests are left out"; }
for preset in release asan; do
  echo "== $preset"
  benchmarks=ON
  [ "$preset" = release ] || benchmarks=OFF
  cmake --preset "$preset" -DKVX_BUILD_TESTS=ON -DKVX_BUILD_GEGL=ON -DKVX_BUILD_GSTREAMER=ON -DKVX_BUILD_MLT=$mlt \
    -DKVX_BUILD_BENCHMARKS=$benchmarks >/dev/null
  cmake --build --preset "$preset"
  ctest --preset "$preset" -j "$(nproc)"
done
echo "== clang-tidy"
./scripts/tidy.sh
./scripts/fuzz.sh 10
