#!/usr/bin/env bash
# A contoured stereonet of 100,000 poles to PNG, and the density counting
# alone, beside matplotlib and NumPy doing the same in the same run on the
# same poles. All figures are process CPU time (the best of the runs) and
# peak resident memory; the machine may be shared.
#
#   bench/run_stereonet.sh        builds into build/release (BUILD_DIR to change)
set -euo pipefail
cd "$(dirname "$0")/.."
build="${BUILD_DIR:-build/release}"

cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=Release -DSUBSURF_BUILD_BENCH=ON >/dev/null
cmake --build "$build" --target stereonet_bench -j"${JOBS:-2}" >/dev/null

# Debian's python3-matplotlib and python3-numpy are installed for /usr/bin/python3.
py=python3
if /usr/bin/python3 -c "import matplotlib, numpy" 2>/dev/null; then py=/usr/bin/python3; fi

echo "load average: $(cut -d' ' -f1-3 /proc/loadavg)"
json="$(mktemp)"
trap 'rm -f "$json"' EXIT
for bench in StereonetContoursPng KambDensity; do
  "$build/bench/stereonet_bench" --benchmark_filter="BM_$bench/" --benchmark_repetitions=5 --benchmark_format=json >"$json"
  "$py" - "$json" "$bench" <<'PY'
import json, sys
runs = [b for b in json.load(open(sys.argv[1]))["benchmarks"] if b.get("run_type") == "iteration"]
best = min(b["cpu_time"] for b in runs) / 1000.0  # ms -> s
wall = min(b["real_time"] for b in runs) / 1000.0
print(f"subsurf_{sys.argv[2]} {best:.4f} (wall {wall:.4f})")
print(f"subsurf_{sys.argv[2]}_maximum_sigma {runs[0]['maximum_sigma']:.3f}")
if "peak_rss_mb" in runs[0]:
    print(f"subsurf_{sys.argv[2]}_peak_rss_mb {max(b['peak_rss_mb'] for b in runs):.1f}")
PY
done
# One run: counting every pole at every node takes NumPy seconds.
"$py" bench/stereonet_matplotlib.py "${PEER_RUNS:-1}"
echo "load average: $(cut -d' ' -f1-3 /proc/loadavg)"
