#!/usr/bin/env bash
# Plot drawing and P99-P1 limits beside matplotlib (Agg) and numpy.percentile,
# measured in the same run on the same data. All figures are process CPU time
# (the best of the runs) and peak resident memory; the machine may be shared.
#
#   bench/run_plot.sh            builds into build/release (BUILD_DIR to change)
set -euo pipefail
cd "$(dirname "$0")/.."
build="${BUILD_DIR:-build/release}"

cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=Release -DSUBSURF_BUILD_BENCH=ON >/dev/null
cmake --build "$build" --target plot_bench -j"${JOBS:-2}" >/dev/null

# Debian's python3-matplotlib and python3-numpy are installed for /usr/bin/python3.
py=python3
if /usr/bin/python3 -c "import matplotlib, numpy" 2>/dev/null; then py=/usr/bin/python3; fi

echo "load average: $(cut -d' ' -f1-3 /proc/loadavg)"
json="$(mktemp)"
trap 'rm -f "$json"' EXIT
for bench in DrawPng DrawSvg AxlimsP99P1; do
  "$build/bench/plot_bench" --benchmark_filter="BM_$bench/" --benchmark_repetitions=5 --benchmark_format=json >"$json"
  "$py" - "$json" "$bench" <<'PY'
import json, sys
runs = [b for b in json.load(open(sys.argv[1]))["benchmarks"] if b.get("run_type") == "iteration"]
best = min(b["cpu_time"] for b in runs) / 1000.0  # ms -> s
print(f"subsurf_{sys.argv[2]} {best:.4f}")
if "peak_rss_mb" in runs[0]:
    print(f"subsurf_{sys.argv[2]}_peak_rss_mb {max(b['peak_rss_mb'] for b in runs):.1f}")
PY
done
"$py" bench/plot_matplotlib.py png 3
"$py" bench/plot_matplotlib.py svg 1
"$py" bench/plot_matplotlib.py percentile 5
