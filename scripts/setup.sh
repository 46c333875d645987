#!/usr/bin/env bash
# Installs the Debian packages that subsurf needs to build, test and benchmark.
# Only missing packages are installed; run as root (or with sudo available).
set -euo pipefail

build_packages=(
  g++ cmake make pkg-config
  libvips-dev libcairo2-dev libjpeg62-turbo-dev
  libcli11-dev nlohmann-json3-dev libfmt-dev libcpp-httplib-dev
  libgtest-dev libgmock-dev libbenchmark-dev
)
# The tests use ImageMagick as an independent reader of the bitmaps we write,
# and drive headless Chromium for the browser tests of the editor page.
test_packages=(imagemagick chromium chromium-driver python3-selenium)
# Only the benchmarks need these: peer tools measured in the same run.
bench_packages=(hyperfine imagemagick libjpeg-turbo-progs libvips-tools python3-numpy time)
build_packages+=(libdeflate-dev)        # PNG pages of plots, compressed whole
bench_packages+=(python3-matplotlib)    # the peer of the plot benchmark

wanted=("${build_packages[@]}" "${test_packages[@]}")
if [ "${1:-}" = "--bench" ]; then wanted+=("${bench_packages[@]}"); fi

missing=()
for p in "${wanted[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  echo "setup: all packages present"
  exit 0
fi

echo "setup: installing ${missing[*]}"
SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
