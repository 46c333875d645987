#!/usr/bin/env python3
"""The peer of bin_statistics_bench: the same binned-statistics table (count,
seven percentiles, mean, mean absolute deviation, standard deviation, median
deviation, the Swanson and Pearson-Tukey means, geometric and harmonic
means) of the same ten million values in 100 bins, with NumPy. Prints
"numpy_BinStatistics seconds" (best of the runs, process CPU time).

    bench/bin_statistics_numpy.py [runs]
"""
import sys
import time

import numpy as np

N, BINS = 10_000_000, 100


def values():
    i = np.arange(N, dtype=np.float64)
    a = np.fmod(i * 0.6180339887, 1.0)
    b = np.fmod(i * 0.7548776662, 1.0)
    return a.astype(np.float32), np.exp(3.0 * a + b).astype(np.float32)


def table(by, value):
    edges = np.linspace(0.0, 1.0, BINS + 1)
    reach = edges - np.abs(edges) * 1e-6
    idx = np.searchsorted(reach[:-1], by.astype(np.float64), side="right") - 1
    order = np.lexsort((value, idx))
    idx, v = idx[order], value[order].astype(np.float64)
    bounds = np.searchsorted(idx, np.arange(BINS + 1))
    rows = []
    for k in range(BINS):
        x = v[bounds[k]:bounds[k + 1]]
        if x.size == 0:
            rows.append(None)
            continue
        p = np.percentile(x, [100, 95, 90, 50, 10, 5, 0])
        mean = x.mean()
        rows.append((x.size, p, mean, np.abs(x - mean).mean(), x.std(ddof=1),
                     np.median(np.abs(x - p[3])),
                     0.185 * p[5] + 0.63 * p[3] + 0.185 * p[1], 0.3 * p[4] + 0.4 * p[3] + 0.3 * p[2],
                     np.exp(np.log(x).mean()), x.size / (1.0 / x).sum()))
    return rows


def main():
    runs = int(sys.argv[1]) if len(sys.argv) > 1 else 3
    by, value = values()
    best = None
    for _ in range(runs):
        start = time.process_time()
        table(by, value)
        t = time.process_time() - start
        best = t if best is None else min(best, t)
    print(f"numpy_BinStatistics {best:.4f}")


if __name__ == "__main__":
    main()
