#!/usr/bin/env bash
# Calculate-all over one million cases: the C++ batch engine and the same chain
# written with NumPy, measured in the same run, and the ratio of their rates.
# Both figures are process CPU time (the machine may be shared).
#
#   bench/run_fluids.sh            builds into build/release (BUILD_DIR to change)
set -euo pipefail
cd "$(dirname "$0")/.."
build="${BUILD_DIR:-build/release}"

cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=Release -DSUBSURF_BUILD_BENCH=ON >/dev/null
cmake --build "$build" --target fluids_bench -j"${JOBS:-2}" >/dev/null

# The Python with NumPy: Debian's python3-numpy is installed for /usr/bin/python3.
py=python3
if /usr/bin/python3 -c "import numpy" 2>/dev/null; then py=/usr/bin/python3; fi

json="$(mktemp)"
trap 'rm -f "$json"' EXIT
"$build/bench/fluids_bench" --benchmark_filter='BM_CalculateAll/' --benchmark_repetitions=3 \
  --benchmark_format=json >"$json"
cpp=$("$py" - "$json" <<'PY'
import json, sys
runs = [b for b in json.load(open(sys.argv[1]))["benchmarks"] if b.get("run_type") == "iteration"]
print(f'{max(b["cases_per_second"] for b in runs):.0f}')
PY
)
numpy=$("$py" bench/fluids_numpy.py | awk '/numpy_cases_per_second/ {print $2}')

echo "C++ batch calculate-all:  $cpp cases/s"
echo "NumPy, same chain:        $numpy cases/s"
"$py" -c "print(f'ratio C++ / NumPy:        {$cpp / $numpy:.2f}x')"
