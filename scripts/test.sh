#!/usr/bin/env bash
# Installs what is missing, then builds and runs the whole test suite twice:
# an optimised build, and a debug build with AddressSanitizer and
# UndefinedBehaviorSanitizer so that memory faults fail the run.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/setup.sh
jobs=$(nproc 2>/dev/null || echo 2)

echo "== optimised build =="
cmake -S . -B build/release -DCMAKE_BUILD_TYPE=Release -DSUBSURF_BUILD_BENCH=ON >/dev/null
cmake --build build/release -j"$jobs"
(cd build/release && ctest --output-on-failure -j"$jobs")

echo "== debug build with sanitizers =="
cmake -S . -B build/sanitize -DCMAKE_BUILD_TYPE=Debug -DSUBSURF_SANITIZE=ON -DSUBSURF_BUILD_SHARED=OFF >/dev/null
cmake --build build/sanitize -j"$jobs"
(cd build/sanitize && ASAN_OPTIONS=detect_leaks=1 LSAN_OPTIONS=suppressions="$PWD/../../tests/support/lsan.supp" UBSAN_OPTIONS=print_stacktrace=1 ctest --output-on-failure -j"$jobs")
