#!/bin/sh
# Writes tests/checksums.txt anew from the release build. For changes that are meant to move bytes; say why in the commit.
set -eu
cd "$(dirname "$0")/.."
cmake --preset release >/dev/null
cmake --build --preset release --target checksums_test
KVX_RENEW_CHECKSUMS=1 ./build/release/tests/checksums_test --gtest_filter='*TheBytesThatItGave'
git --no-pager diff --stat tests/checksums.txt || true
