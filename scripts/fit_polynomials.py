#!/usr/bin/env python3
"""Near-minimax polynomials for the exp and log kernels of fluids/float_math.h.

Both kernels work in single precision and carry the roundings that matter
beside the result, so their polynomials only need to be good to about a
hundredth of a float's last place where they enter the result.

expReduced computes e^r = 1 + r + r^2 q(r) for |r| <= ln2/2, with
q(r) = (e^r - 1 - r) / r^2 = 1/2 + r/6 + r^2/24 + ...

logOnePlus computes log(1 + f) = f - f^2/2 + s (f^2/2 + w r(w)), with
s = f / (2 + f) and w = s^2 in [0, (3 - 2 sqrt 2)^2] (about 0.02944), where
r(w) = (q(w) - 2) / w = 2 (1/3 + w/5 + w^2/7 + ...) and q(w) = 2 atanh(sqrt w)
/ sqrt w.

This script finds, for a range of degrees, the polynomial of each degree with
the smallest largest *relative* error on its interval (Remez exchange,
started from the Chebyshev extrema), rounds the coefficients to single
precision, measures the largest relative error of that float-coefficient
polynomial on a dense grid in 80-digit decimal arithmetic, and prints the
coefficients of the lowest degree that meets the error bound as C++ hex-float
literals.

The Remez steps (the linear systems and the reference values of the
functions) run in 80-digit decimal arithmetic; only the search for the
extrema of the error curve uses numpy.longdouble (64-bit mantissa), which is
ample for locating them: the maximum of the error is flat there.

The bounds: q's error is multiplied by r^2 q / e^r, at most 0.07, and 1.1e-8
(degree 5) moves e^r by under a hundredth of a float's last place, where
degree 4 (1.3e-7) would move it by a sixth. r's error is multiplied by at most
0.0035 (s w r / log(1 + f)), so 3e-7 (degree 2) is ample.

Standard library and NumPy only; takes a few seconds. Usage:
    python3 scripts/fit_polynomials.py [--points 20001]
"""

import argparse
from decimal import Decimal, getcontext

import numpy as np

getcontext().prec = 80

LD = np.longdouble


# ---------------------------------------------------------------------------
# The functions, in high precision (Decimal) and in long double (for the scan).

def q_dec(w):
    """2 atanh(sqrt w) / sqrt w = sum 2 w^k / (2k + 1), for 0 <= w < 0.1."""
    total, power, k = Decimal(0), Decimal(1), 0
    tiny = Decimal(10) ** -90
    while True:
        term = 2 * power / (2 * k + 1)
        total += term
        if term < tiny:
            return total
        power *= w
        k += 1


def qe_dec(r):
    """(e^r - 1 - r) / r^2."""
    if r == 0:
        return Decimal(1) / 2
    return (r.exp() - 1 - r) / (r * r)


def qe_ld(r):
    total, term = np.zeros_like(r), np.full_like(r, LD(1) / 2)
    for k in range(3, 33):  # the series 1/2 + r/6 + r^2/24 + ..., to far below 1e-19
        total += term
        term = term * r / k
    return total


def r_dec(w):
    """(q(w) - 2) / w = 2 (1/3 + w/5 + w^2/7 + ...)."""
    if w == 0:
        return Decimal(2) / 3
    return (q_dec(w) - 2) / w


def r_ld(w):
    total, power = np.zeros_like(w), np.ones_like(w)
    for k in range(1, 40):
        total += 2 * power / (2 * k + 1)
        power *= w
    return total


def q_ld(w):
    total = np.zeros_like(w)
    power = np.ones_like(w)
    for k in range(40):  # w^40 < 1e-60 on the interval
        total += 2 * power / (2 * k + 1)
        power *= w
    return total


# ---------------------------------------------------------------------------
# Remez exchange for the relative error.

def solve(matrix, rhs):
    """Gaussian elimination with partial pivoting, in Decimal."""
    n = len(rhs)
    a = [row[:] + [rhs[i]] for i, row in enumerate(matrix)]
    for col in range(n):
        pivot = max(range(col, n), key=lambda i: abs(a[i][col]))
        a[col], a[pivot] = a[pivot], a[col]
        for i in range(col + 1, n):
            factor = a[i][col] / a[col][col]
            for j in range(col, n + 1):
                a[i][j] -= factor * a[col][j]
    x = [Decimal(0)] * n
    for i in reversed(range(n)):
        x[i] = (a[i][n] - sum(a[i][j] * x[j] for j in range(i + 1, n))) / a[i][i]
    return x


def horner_ld(coeffs, x):
    p = np.full_like(x, LD(str(coeffs[-1])))
    for c in reversed(coeffs[:-1]):
        p = p * x + LD(str(c))
    return p


def alternating_extrema(x, err, count):
    """`count` points where err takes its extreme values with alternating
    signs: the largest |err| of each run of one sign, thinned by dropping the
    smallest (an interior one takes a neighbour with it, since its two
    neighbours then have one sign and only the larger may stay)."""
    sign = np.where(err >= 0, 1, -1)  # a zero counts as positive, not as a run of its own
    points = []
    start = 0
    for i in range(1, len(x) + 1):
        if i == len(x) or sign[i] != sign[start]:
            points.append(start + int(np.argmax(np.abs(err[start:i]))))
            start = i
    while len(points) > count:
        if len(points) == count + 1:
            points.pop(0 if abs(err[points[0]]) < abs(err[points[-1]]) else -1)
            continue
        j = min(range(len(points)), key=lambda i: abs(err[points[i]]))
        if j == 0 or j == len(points) - 1:
            points.pop(j)
        else:
            left, right = points[j - 1], points[j + 1]
            keep = left if abs(err[left]) >= abs(err[right]) else right
            points[j - 1:j + 2] = [keep]
    return [x[j] for j in points]


def remez(f_dec, f_ld, lo, hi, degree, grid=40001, iterations=40):
    """Coefficients (Decimal, lowest first) of the polynomial of the given
    degree with the smallest largest relative error on [lo, hi]."""
    m = degree + 2
    lo_ld, hi_ld = LD(str(lo)), LD(str(hi))
    mid, half = (lo_ld + hi_ld) / 2, (hi_ld - lo_ld) / 2
    # Start at the extrema of the Chebyshev polynomial T_{degree+1}, where
    # Chebyshev interpolation's error alternates.
    ref = [mid - half * np.cos(LD(np.pi) * i / (m - 1)) for i in range(m)]
    xs = np.linspace(lo_ld, hi_ld, grid, dtype=LD)
    fx = f_ld(xs)
    best, best_worst = None, None
    for _ in range(iterations):
        ref_dec = [Decimal(str(r)) for r in ref]
        matrix, rhs = [], []
        for i, r in enumerate(ref_dec):
            fr = f_dec(r)
            # p(r) - f(r) = (-1)^i E f(r): the relative error alternates.
            powers = [Decimal(1)]
            for _ in range(degree):
                powers.append(powers[-1] * r)
            matrix.append(powers + [-((-1) ** i) * fr])
            rhs.append(fr)
        sol = solve(matrix, rhs)
        coeffs, level = sol[:-1], LD(str(abs(sol[-1])))
        err = horner_ld(coeffs, xs) / fx - 1
        worst = np.max(np.abs(err))
        if best_worst is None or worst < best_worst:
            best, best_worst = coeffs, worst
        # Done when the error no longer exceeds the level it equioscillates
        # at (the long-double scan itself is good to a few units of 1e-19).
        if worst <= level * (1 + LD("1e-4")) + LD("5e-19"):
            break
        ref = alternating_extrema(xs, err, m)
        if len(ref) < m:
            raise RuntimeError("error curve does not alternate")
    return best


# ---------------------------------------------------------------------------
# Measurement of the float-coefficient polynomial.

def to_float(value):
    """The single-precision value nearest `value`, as a Python float."""
    return float(np.float32(float(value)))


def max_relative_error(coeffs, f_dec, lo, hi, points=20001):
    """Largest |p(x) / f(x) - 1| over `points` doubles spread over [lo, hi],
    ends included, with p's coefficients taken exactly and every sum formed
    in 80-digit arithmetic (so only the polynomial's own error shows)."""
    cs = [Decimal(c) for c in coeffs]  # exact: Decimal(float) is exact
    lo_f, hi_f = float(lo), float(hi)
    worst = Decimal(0)
    for i in range(points):
        x = Decimal(lo_f + (hi_f - lo_f) * i / (points - 1))
        p = Decimal(0)
        for c in reversed(cs):
            p = p * x + c
        worst = max(worst, abs(p / f_dec(x) - 1))
    return worst


def cxx_hex(value):
    """float.hex with the mantissa's trailing zeros dropped: a C++ literal."""
    text = float.hex(value)
    mantissa, exponent = text.split("p")
    if "." in mantissa:
        mantissa = mantissa.rstrip("0").rstrip(".")
    return mantissa + "p" + exponent


def fit(name, f_dec, f_ld, lo, hi, degrees, bound, points):
    print(f"{name} on [{float(lo):.17g}, {float(hi):.17g}]")
    chosen = None
    for degree in degrees:
        coeffs = [to_float(c) for c in remez(f_dec, f_ld, lo, hi, degree)]
        error = max_relative_error(coeffs, f_dec, lo, hi, points)
        mark = ""
        if chosen is None and error <= bound:
            chosen = (degree, coeffs, error)
            mark = "   <- lowest degree within the bound"
        print(f"  degree {degree:2d}: max relative error {float(error):.3e}{mark}")
    if chosen is None:
        raise SystemExit(f"{name}: no degree in {list(degrees)} meets {bound:g}")
    degree, coeffs, error = chosen
    print(f"  degree {degree} coefficients (lowest first), max relative error {float(error):.3e}:")
    for k, c in enumerate(coeffs):
        print(f"    c{k} = {cxx_hex(c)}f;  // {c!r}")
    print()
    return chosen


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("--points", type=int, default=20001,
                        help="grid points of the final measurement (default 20001)")
    args = parser.parse_args()

    half_ln2 = Decimal(2).ln() / 2
    fit("q(r) = (e^r - 1 - r) / r^2", qe_dec, qe_ld, -half_ln2, half_ln2, range(3, 7), 2e-8,
        args.points)
    # The largest w is (3 - 2 sqrt 2)^2 = 17 - 12 sqrt 2 = 0.0294372...; the
    # interval reaches a little beyond it for the rounding of s and s^2.
    fit("r(w) = (2 atanh(sqrt w) / sqrt w - 2) / w", r_dec, r_ld, Decimal(0), Decimal("0.02944"),
        range(1, 5), 1e-6, args.points)


if __name__ == "__main__":
    main()
