#!/usr/bin/env python3
"""Near-minimax polynomials for the exp and log kernels of fluids/float_math.h.

expWide reduces e^x to e^r with |r| <= ln2/2, and logWide reduces log x to
2 atanh(s) = s * q(w) with w = s^2 in [0, (3 - 2 sqrt 2)^2] (about 0.02944),
where q(w) = 2 atanh(sqrt w) / sqrt w = 2 (1 + w/3 + w^2/5 + ...). This script
finds, for a range of degrees, the polynomial of each degree with the smallest
largest *relative* error on its interval (Remez exchange, started from the
Chebyshev extrema), rounds the coefficients to double, measures the largest
relative error of that double-coefficient polynomial on a dense grid in
80-digit decimal arithmetic, and prints the coefficients of the lowest degree
that meets the error bound as C++ hex-float literals.

The Remez steps (the linear systems and the reference values of the
functions) run in 80-digit decimal arithmetic; only the search for the
extrema of the error curve uses numpy.longdouble (64-bit mantissa), which is
ample for locating them: the maximum of the error is flat there.

The default bound, 1.5e-14, is what the single-precision results can carry:
the rounding to float then goes the wrong way for about one result in ten
million, and pow's double product y * log x already has errors of that size
for large results. Degree 9 for e^r (1.36e-14) and degree 6 for q (2.2e-16;
degree 5 would give 2.7e-14) are what it selects.

Standard library and NumPy only; takes about two minutes. Usage:
    python3 scripts/fit_polynomials.py [--bound 1.5e-14] [--points 200001]
"""

import argparse
from decimal import Decimal, getcontext

import numpy as np

getcontext().prec = 80

LD = np.longdouble


# ---------------------------------------------------------------------------
# The functions, in high precision (Decimal) and in long double (for the scan).

def exp_dec(r):
    return r.exp()


def exp_ld(r):
    return np.exp(r)


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
# Measurement of the double-coefficient polynomial.

def max_relative_error(coeffs_double, f_dec, lo, hi, points=200001):
    """Largest |p(x) / f(x) - 1| over `points` doubles spread over [lo, hi],
    ends included, with p's double coefficients taken exactly and every sum
    formed in 80-digit arithmetic (so only the polynomial's own error shows)."""
    cs = [Decimal(c) for c in coeffs_double]  # exact: Decimal(float) is exact
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
        coeffs = [float(c) for c in remez(f_dec, f_ld, lo, hi, degree)]  # correctly rounded
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
        print(f"    c{k} = {cxx_hex(c)};  // {c!r}")
    print()
    return chosen


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("--bound", type=float, default=1.5e-14,
                        help="largest relative error allowed (default 1.5e-14)")
    parser.add_argument("--points", type=int, default=200001,
                        help="grid points of the final measurement (default 200001)")
    args = parser.parse_args()

    half_ln2 = Decimal(2).ln() / 2
    fit("e^r", exp_dec, exp_ld, -half_ln2, half_ln2, range(7, 12), args.bound, args.points)
    # The largest w is (3 - 2 sqrt 2)^2 = 17 - 12 sqrt 2 = 0.0294372...; the
    # interval reaches a little beyond it for the rounding of s and s^2.
    fit("q(w) = 2 atanh(sqrt w) / sqrt w", q_dec, q_ld, Decimal(0), Decimal("0.02944"),
        range(3, 8), args.bound, args.points)


if __name__ == "__main__":
    main()
