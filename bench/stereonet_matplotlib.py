#!/usr/bin/env python3
"""The peer of stereonet_bench: the same 100,000 poles on an equal-area net
with Kamb density contours, done with NumPy and matplotlib (Agg) as a user of
those would: the exponential Kamb weights of every pole at every node of a
100 x 100 grid (NumPy, in blocks of nodes), contours every 2 standard
deviations (matplotlib's contour, clipped to the rim), the poles as small
translucent markers, to a 1200x1200 PNG (8 x 8 inches at 150 dpi). Prints
"name seconds" lines (best of the runs, process CPU time) and the peak
resident memory.

    bench/stereonet_matplotlib.py [runs]
"""
import math
import os
import resource
import sys
import time

import numpy as np

POLES, GRID, SMOOTHING = 100000, 100, 3.0


class Noise:
    """host/reproducible_noise.h, draw for draw."""

    def __init__(self, seed):
        self.s = seed

    def uniform(self):
        self.s = (self.s * 6364136223846793005 + 1442695040888963407) & ((1 << 64) - 1)
        return (self.s >> 11) / 9007199254740992.0

    def normal(self):
        u = max(1e-12, self.uniform())
        v = self.uniform()
        return math.sqrt(-2 * math.log(u)) * math.cos(2 * 3.14159265358979323846 * v)


def planes():
    # The recipe of stereonet_bench.cpp: three joint sets and a tenth at random.
    r = Noise(2024)
    sets = [(0.35, 70, 120, 8), (0.65, 60, 230, 10), (0.90, 15, 300, 6)]
    dips = np.empty(POLES, dtype=np.float32)
    azimuths = np.empty(POLES, dtype=np.float32)
    for k in range(POLES):
        u = r.uniform()
        chosen = next((s for s in sets if u < s[0]), None)
        if chosen:
            d = min(90.0, max(0.0, chosen[1] + chosen[3] * r.normal()))
            a = math.fmod(chosen[2] + chosen[3] * r.normal() + 360.0, 360.0)
        else:
            d = 90.0 * r.uniform()
            a = 360.0 * r.uniform()
        dips[k] = d
        azimuths[k] = a
    return dips, azimuths


def unit(plunge, trend):
    p, t = np.radians(plunge), np.radians(trend)
    return np.stack([np.cos(p) * np.cos(t), np.cos(p) * np.sin(t), np.sin(p)], axis=-1)


def density(poles):
    """Kamb counting with exponential smoothing (Vollmer 1995) at every node."""
    n = len(poles)
    f = 2.0 * (1.0 + n / SMOOTHING**2)
    deviation = math.sqrt(n * (f / 2.0 - 1.0)) / f
    x = np.linspace(-90.0, 90.0, GRID)
    gx, gy = np.meshgrid(x, x)
    u = np.hypot(gx, gy) / 90.0
    plunge = np.degrees(np.arcsin(np.clip(1.0 - u * u, -1.0, 1.0)))
    trend = np.degrees(np.arctan2(gx, gy))
    nodes = unit(plunge, trend).reshape(-1, 3)
    counts = np.empty(len(nodes))
    block = 64
    for start in range(0, len(nodes), block):
        c = np.abs(nodes[start : start + block] @ poles.T)
        counts[start : start + block] = np.exp(f * (c - 1.0)).sum(axis=1)
    return gx, gy, (counts / deviation).reshape(GRID, GRID)


def levels(sig, inside, step=2.0, most=10):
    top = sig[inside].max()
    while top / step > most:
        step *= 2
    return [k * step for k in range(1, int(top / step) + 1)], top


def draw(dips, azimuths, path):
    import matplotlib

    matplotlib.use("Agg")
    import matplotlib.pyplot as plt
    from matplotlib.patches import Circle

    pp, pt = 90.0 - dips.astype(np.float64), azimuths.astype(np.float64) + 180.0
    poles = unit(pp, pt)
    gx, gy, sig = density(poles)
    lv, top = levels(sig, np.hypot(gx, gy) <= 90.0)
    r = 90.0 * np.sqrt(1.0 - np.sin(np.radians(pp)))
    px, py = r * np.sin(np.radians(pt)), r * np.cos(np.radians(pt))
    fig, ax = plt.subplots(figsize=(8, 8), dpi=150)
    rim = Circle((0, 0), 90, fill=False, color="black", linewidth=1.1)
    ax.add_patch(rim)
    ax.plot(px, py, "o", markersize=1.7, markeredgewidth=0, alpha=0.4, color="#0072b2")
    cs = ax.contour(gx, gy, sig, levels=lv, colors="#d55e00", linewidths=np.linspace(0.7, 1.7, len(lv)))
    for c in cs.collections:
        c.set_clip_path(rim)
    ax.set_xlim(-100, 100)
    ax.set_ylim(-100, 100)
    ax.set_aspect("equal")
    ax.set_axis_off()
    ax.text(-100, 96, "Poles: joints")
    ax.text(0, -95.5, "Kamb contours: %s sigma (maximum %.1f sigma)" % (", ".join("%g" % l for l in lv), top), ha="center")
    fig.savefig(path, dpi=150)
    plt.close(fig)
    return top, len(lv)


def main():
    runs = int(sys.argv[1]) if len(sys.argv) > 1 else 1
    dips, azimuths = planes()
    before = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss / 1024
    path = f"/tmp/subsurf_mpl_stereonet_{os.getpid()}.png"
    best, best_density = float("inf"), float("inf")
    for _ in range(runs):
        t = time.process_time()
        top, count = draw(dips, azimuths, path)
        best = min(best, time.process_time() - t)
    poles = unit(90.0 - dips.astype(np.float64), azimuths.astype(np.float64) + 180.0)
    for _ in range(runs):
        t = time.process_time()
        density(poles)
        best_density = min(best_density, time.process_time() - t)
    if not os.environ.get("SUBSURF_BENCH_KEEP"):
        os.unlink(path)
    peak = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss / 1024
    print(f"matplotlib_stereonet_png {best:.4f}")
    print(f"numpy_kamb_density {best_density:.4f}")
    print(f"matplotlib_maximum_sigma {top:.3f} levels {count}")
    print(f"matplotlib_peak_rss_mb {peak:.1f}")
    print(f"matplotlib_rss_before_mb {before:.1f}")


if __name__ == "__main__":
    main()
