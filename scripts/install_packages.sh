#!/bin/sh
# Usage: scripts/install_packages.sh [MORE...]. Installs the Debian packages that the build needs, and those named, as far as
# they are missing. Needs root or sudo, and only then the network.
set -eu
packages='cmake ninja-build g++ ccache libopencv-core-dev libopencv-imgproc-dev nlohmann-json3-dev libtinyxml2-dev
libpng-dev libturbojpeg0-dev libhwy-dev libcli11-dev libfmt-dev libavformat-dev libavcodec-dev libavutil-dev
libswscale-dev libcpp-httplib-dev libswresample-dev libavfilter-dev zlib1g-dev pkg-config libgtest-dev libbenchmark-dev'
missing=''
for package in $packages "$@"; do
  dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q '^install ok installed$' || missing="$missing $package"
done
[ -n "$missing" ] || exit 0
echo "installing:$missing"
sudo=''
[ "$(id -u)" = 0 ] || sudo=sudo
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -q
# shellcheck disable=SC2086
$sudo apt-get install -y -q --no-install-recommends $missing
