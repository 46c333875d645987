#!/usr/bin/env bash
# Installs what is missing, builds the programs and runs them on bundled data.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/setup.sh
cmake -S . -B build/release -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build/release -j"$(nproc 2>/dev/null || echo 2)" --target subsurf_cli
bin=build/release/cli

echo "== unit conversions =="
for args in "100 ft m" "212 degf degc" "5000 psia bar" "35 api sg" "1 bbl m3"; do
  # shellcheck disable=SC2086
  printf '%-16s -> %s\n' "$args" "$("$bin/subsurf" units convert $args)"
done
