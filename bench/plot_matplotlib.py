#!/usr/bin/env python3
"""The peers of plot_bench: matplotlib (Agg) cross-plotting the same million
points to a 1600x1200 PNG (16 x 12 inches at 100 dpi) and to SVG, and
numpy.percentile for the 1st and 99th percentiles of the same ten million
values. Prints "name seconds" lines (best of the runs, process CPU time) and
the peak resident memory.

    bench/plot_matplotlib.py png|svg|percentile [runs]
"""
import os
import resource
import sys
import time

import numpy as np


def points(n):
    # The LCG and Box-Muller of bench/plot_bench.cpp, vectorised.
    a, c, mask = 6364136223846793005, 1442695040888963407, (1 << 64) - 1
    s = 12345
    # Two uniforms per point, in order; a Python loop over 2n states would be
    # slow, so the state sequence is produced in blocks by jumping ahead.
    count = 2 * n
    states = np.empty(count, dtype=np.uint64)
    block = 1 << 16
    # Powers of the multiplier and the matching increments for a block.
    mul = np.empty(block, dtype=np.uint64)
    inc = np.empty(block, dtype=np.uint64)
    m, k = 1, 0
    for i in range(block):
        m = (m * a) & mask
        k = (k * a + c) & mask
        mul[i] = m
        inc[i] = k
    with np.errstate(over="ignore"):
        for start in range(0, count, block):
            end = min(count, start + block)
            states[start:end] = mul[: end - start] * np.uint64(s) + inc[: end - start]
            s = int(states[end - 1])
    uni = (states >> np.uint64(11)).astype(np.float64) / 9007199254740992.0
    u = np.maximum(uni[0::2], 1e-12)
    v = uni[1::2]
    r = np.sqrt(-2 * np.log(u))
    x = (r * np.cos(2 * np.pi * v)).astype(np.float32)
    y = (0.6 * x.astype(np.float64) + 0.8 * r * np.sin(2 * np.pi * v)).astype(np.float32)
    return x, y


def cpu():
    return time.process_time()


def draw(kind, runs):
    import matplotlib

    matplotlib.use("Agg")
    import matplotlib.pyplot as plt

    x, y = points(1000000)
    before = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss / 1024
    best = float("inf")
    path = f"/tmp/subsurf_mpl_bench_{os.getpid()}.{kind}"
    for _ in range(runs):
        t = cpu()
        fig, ax = plt.subplots(figsize=(16, 12), dpi=100)
        # Markers of 0.5 mm (1.42 pt), 30 % opaque, as plot_bench draws them.
        ax.plot(x, y, "o", markersize=1.42, markeredgewidth=0, alpha=0.3, color="#0072b2")
        ax.set_title("One million points")
        ax.set_xlabel("x")
        ax.set_ylabel("y")
        ax.grid(True, alpha=0.2)
        fig.savefig(path, dpi=100)
        plt.close(fig)
        best = min(best, cpu() - t)
    os.unlink(path)
    peak = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss / 1024
    print(f"matplotlib_{kind} {best:.4f}")
    print(f"matplotlib_{kind}_peak_rss_mb {peak:.1f}")
    print(f"matplotlib_{kind}_rss_before_mb {before:.1f}")


def percentile(runs):
    x, _ = points(10000000)
    best = float("inf")
    for _ in range(runs):
        t = cpu()
        p = np.percentile(x, [1, 99])
        best = min(best, cpu() - t)
    print(f"numpy_percentile {best:.4f}")
    print(f"numpy_percentile_values {p[0]:.6g} {p[1]:.6g}")


if __name__ == "__main__":
    what = sys.argv[1]
    runs = int(sys.argv[2]) if len(sys.argv) > 2 else 3
    if what == "percentile":
        percentile(runs)
    else:
        draw(what, runs)
