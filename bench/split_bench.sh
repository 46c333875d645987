#!/usr/bin/env bash
# Speed and memory of `slabber split` against the ways a user would otherwise
# cut core rows out of tray photographs, on the same generated photographs:
#
#   decode       djpeg -outfile /dev/null, once per photo: the floor, since
#                every method has to decode each photograph at least once;
#   slabber      slabber split SESSION --out DIR --jobs 1 (BMP rows, and the
#                table of clipping depths);
#   slabber-rerun  the same over the rows of an earlier run, which it replaces
#                (the slabber figure is taken into an emptied folder);
#   imagemagick  one `convert PHOTO -crop WxH+X+Y +repage ROW.bmp` per row, as
#                a user scripts it (each row decodes the photograph again);
#   vips         one `vips extract_area PHOTO ROW.ppm X Y W H` per row (the
#                libvips command line; PPM, as it writes no BMP of its own).
#
# Times are hyperfine means; each is also given as a ratio to the decoding
# time. Peak memory is the largest resident set (/usr/bin/time -v) of a whole
# run, set against one decoded photograph (width x height x 3 bytes).
#
#   bash bench/split_bench.sh [--photos N] [--width W] [--height H] [--runs R] [--keep DIR]
#
# Needs the packages of `bash scripts/setup.sh --bench`. Builds slabber and
# make_sample_trays (Release) into $BUILD_DIR (default build/release).
set -euo pipefail
cd "$(dirname "$0")/.."

photos=4
width=6000
height=4000
runs=5
keep=""
while [ $# -gt 0 ]; do
  case "$1" in
    --photos) photos=$2; shift 2 ;;
    --width) width=$2; shift 2 ;;
    --height) height=$2; shift 2 ;;
    --runs) runs=$2; shift 2 ;;
    --keep) keep=$2; shift 2 ;;
    *) echo "split_bench: unknown option $1" >&2; exit 2 ;;
  esac
done

for tool in hyperfine convert vips djpeg python3 /usr/bin/time; do
  command -v "$tool" >/dev/null || { echo "split_bench: $tool missing: run bash scripts/setup.sh --bench" >&2; exit 2; }
done

build=${BUILD_DIR:-build/release}
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build "$build" -j"$(nproc 2>/dev/null || echo 2)" --target slabber make_sample_trays >/dev/null
slabber=$(realpath "$build/cli/slabber")
make_trays=$(realpath "$build/cli/make_sample_trays")

if [ -n "$keep" ]; then work=$(realpath -m "$keep"); mkdir -p "$work"; else work=$(mktemp -d); trap 'rm -rf "$work"' EXIT; fi
trays="$work/trays"
mkdir -p "$trays"

echo "== $photos photographs of ${width}x${height}, JPEG, five rows each =="
if [ ! -f "$trays/trays.json" ] || [ "$(python3 -c "import json;print(len(json.load(open('$trays/trays.json'))))")" != "$photos" ]; then
  rm -f "$trays"/*.jpg
  "$make_trays" --out "$trays" --count "$photos" --rows 5 --width "$width" --height "$height" >/dev/null
fi
(cd "$trays" && "$slabber" new bench.slbs TRAY_*.jpg --rows 5 --depths-from-names --force >/dev/null)
python3 bench/split_layout.py "$trays/bench.slbs" "$trays/trays.json"

# One command per row for the peers, from the same rectangles.
python3 - "$trays" "$work" <<'EOF'
import json, sys
trays, work = sys.argv[1], sys.argv[2]
layout = json.load(open(f"{trays}/trays.json"))
with open(f"{work}/imagemagick.sh", "w") as im, open(f"{work}/vips.sh", "w") as vp, open(f"{work}/decode.sh", "w") as dj:
    for entry in layout:
        photo = f"{trays}/{entry['file']}"
        dj.write(f"djpeg -outfile /dev/null {photo}\n")
        for r in entry["rows"]:
            x, y, w, h = r["left"], r["top_px"], r["width"], r["height"]
            stem = f"{entry['file'][:-4]}_{r['row']}"
            im.write(f"convert {photo} -crop {w}x{h}+{x}+{y} +repage {work}/im/{stem}.bmp\n")
            vp.write(f"vips extract_area {photo} {work}/vips/{stem}.ppm {x} {y} {w} {h}\n")
EOF
mkdir -p "$work/im" "$work/vips" "$work/out"

echo "== time (hyperfine, $runs runs) =="
# slabber runs into an empty folder (emptied before each run); slabber-rerun
# replaces the rows of an earlier run, as a user who splits again does.
mkdir -p "$work/rerun"
"$slabber" split "$trays/bench.slbs" --out "$work/rerun" --jobs 1 --no >/dev/null
hyperfine --style basic --warmup 1 --runs "$runs" --export-json "$work/times.json" \
  --prepare true -n decode "bash $work/decode.sh" \
  --prepare "rm -rf $work/out" -n slabber "$slabber split $trays/bench.slbs --out $work/out --jobs 1 --no" \
  --prepare true -n slabber-rerun "$slabber split $trays/bench.slbs --out $work/rerun --jobs 1 --no" \
  --prepare true -n imagemagick "bash $work/imagemagick.sh" \
  --prepare true -n vips "bash $work/vips.sh" >/dev/null

echo "== peak memory (/usr/bin/time -v) =="
peak() { /usr/bin/time -v "$@" 2>&1 >/dev/null | awk -F': ' '/Maximum resident set size/ {print $2}'; }
first=$(ls "$trays"/TRAY_*.jpg | head -1)
rss_decode=$(peak djpeg -outfile /dev/null "$first")
rss_one=$(peak "$slabber" split "$trays/bench.slbs" --out "$work/out" --jobs 1 --no)
rss_two=$(peak "$slabber" split "$trays/bench.slbs" --out "$work/out" --jobs 2 --no)
rss_im=$(peak convert "$first" -crop 100x100+0+0 +repage "$work/im/one.bmp")

python3 - "$work/times.json" "$width" "$height" "$photos" "$rss_decode" "$rss_one" "$rss_two" "$rss_im" <<'EOF'
import json, sys
times = {r["command"]: r for r in json.load(open(sys.argv[1]))["results"]}
width, height, photos = int(sys.argv[2]), int(sys.argv[3]), int(sys.argv[4])
rss_decode, rss_one, rss_two, rss_im = (int(v) for v in sys.argv[5:9])
decode = times["decode"]["mean"]
cpu = lambda t: t["user"] + t["system"]
decode_cpu = cpu(times["decode"])
# Wall time is what a user waits for; CPU time (user + system) is steadier
# on a machine shared with other work, so both are given.
print(f"{'method':<13} {'wall s':>8} {'+/- s':>7} {'per photo':>10} {'x decode':>9} {'cpu s':>7} {'cpu x decode':>13}")
for name in ("decode", "slabber", "slabber-rerun", "imagemagick", "vips"):
    t = times[name]
    print(f"{name:<13} {t['mean']:8.3f} {t['stddev']:7.3f} {t['mean'] / photos:10.3f} {t['mean'] / decode:9.2f}"
          f" {cpu(t):7.3f} {cpu(t) / decode_cpu:13.2f}")
photo_mb = width * height * 3 / 1e6
print()
print(f"one decoded photo: {photo_mb:.1f} MB")
print(f"peak RSS: djpeg {rss_decode / 1e3:.1f} MB, slabber --jobs 1 {rss_one / 1e3:.1f} MB "
      f"({rss_one * 1e3 / (photo_mb * 1e6):.2f} x a photo), --jobs 2 {rss_two / 1e3:.1f} MB "
      f"({rss_two * 1e3 / (2 * photo_mb * 1e6):.2f} x a photo per job), convert {rss_im / 1e3:.1f} MB")
print()
slab = times["slabber"]["mean"]
checks = [
    ("slabber within 1.3x of decoding alone (one job, wall time)", slab / decode <= 1.3),
    ("slabber within 1.3x of decoding alone (one job, CPU time)", cpu(times["slabber"]) / decode_cpu <= 1.3),
    ("slabber at least 3x faster than ImageMagick", times["imagemagick"]["mean"] / slab >= 3.0),
    ("a re-run replacing every row within 1.15x of a run into an empty folder (CPU time)",
     cpu(times["slabber-rerun"]) <= 1.15 * cpu(times["slabber"])),
    ("peak memory at most 1.5x one decoded photo per job",
     rss_one * 1e3 <= 1.5 * photo_mb * 1e6 and rss_two * 1e3 <= 2 * 1.5 * photo_mb * 1e6),
]
for text, ok in checks:
    print(f"{'PASS' if ok else 'FAIL'}  {text}")
EOF
