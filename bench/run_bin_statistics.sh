#!/usr/bin/env bash
# Binned statistics of ten million values in 100 bins beside the same table
# computed with NumPy, in the same run on the same values. Figures are process
# CPU time, the best of the runs; the machine may be shared.
#
#   bench/run_bin_statistics.sh      builds into build/release (BUILD_DIR to change)
set -euo pipefail
cd "$(dirname "$0")/.."
build="${BUILD_DIR:-build/release}"

cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=Release -DSUBSURF_BUILD_BENCH=ON >/dev/null
cmake --build "$build" --target bin_statistics_bench -j"${JOBS:-2}" >/dev/null

py=python3
if /usr/bin/python3 -c "import numpy" 2>/dev/null; then py=/usr/bin/python3; fi

echo "load average: $(cut -d' ' -f1-3 /proc/loadavg)"
json="$(mktemp)"
trap 'rm -f "$json"' EXIT
"$build/bench/bin_statistics_bench" --benchmark_repetitions=3 --benchmark_format=json >"$json"
"$py" - "$json" <<'PY'
import json, sys
runs = [b for b in json.load(open(sys.argv[1]))["benchmarks"] if b.get("run_type") == "iteration"]
print(f"subsurf_BinStatistics {min(b['cpu_time'] for b in runs) / 1000.0:.4f}")
PY
"$py" bench/bin_statistics_numpy.py 3
