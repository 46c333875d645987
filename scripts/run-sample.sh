#!/usr/bin/env bash
# Installs what is missing, builds the programs and runs the main job on the
# bundled sample data: Slabber cuts the three sample core-tray photographs into
# one image per core row, named by depth, with the table of clipping depths.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/setup.sh
cmake -S . -B build/release -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build/release -j"$(nproc 2>/dev/null || echo 2)" --target slabber subsurf_cli
bin=build/release/cli
out=build/sample-output
rm -rf "$out"

echo "== the sample session =="
"$bin/slabber" show data/samples/sample.slbs

echo
echo "== layout previews (rectangles and depths drawn on each photo) =="
"$bin/slabber" preview data/samples/sample.slbs --out "$out/preview"

echo
echo "== split =="
"$bin/slabber" split data/samples/sample.slbs --out "$out"

echo
echo "== a few unit conversions =="
for args in "100 ft m" "212 degf degc" "5000 psia bar"; do
  # shellcheck disable=SC2086
  printf '%-16s -> %s\n' "$args" "$("$bin/subsurf" units convert $args)"
done

echo
echo "Row images and clipping_depths.csv are in $out/; layout previews in $out/preview/."
