#!/usr/bin/env python3
"""Writes numerics/special/special_tables.hpp: the polynomials of the special functions.

usage: special_tables.py > numerics/special/special_tables.hpp

Chebyshev fits, turned into powers of a variable in [-1, 1], and the double series of N. M. Temme's
uniform expansion of the incomplete gamma functions: The asymptotic expansion of the incomplete gamma
functions, SIAM J. Math. Anal. 10 (1979), whose C_k(eta) follow from C_0 = 1/(lambda - 1) - 1/eta by
C_k = C_(k-1)'/eta + g_k/(lambda - 1), g_k such that the poles cancel.
"""

import mpmath as mp

mp.mp.dps = 60


def chebyshev_powers(function, low, high, tolerance):
    """Coefficients c of sum c_k t^k, t the interval mapped onto [-1, 1]."""
    n = 48
    nodes = [mp.cos(mp.pi * (2 * j + 1) / (2 * n)) for j in range(n)]
    values = [function((high + low) / 2 + (high - low) / 2 * t) for t in nodes]
    c = [2 * sum(v * mp.cos(k * mp.pi * (2 * j + 1) / (2 * n)) for j, v in enumerate(values)) / n
         for k in range(n)]
    c[0] /= 2
    last = max(k for k in range(n) if abs(c[k]) > tolerance)
    powers = [mp.mpf(0)] * (last + 1)
    before, now = [mp.mpf(1)], [mp.mpf(0), mp.mpf(1)]
    for k in range(last + 1):
        polynomial = before if k == 0 else now
        for i, p in enumerate(polynomial):
            powers[i] += c[k] * p
        if k > 0:
            after = [mp.mpf(0)] + [2 * p for p in now]
            for i, p in enumerate(before):
                after[i] -= p
            before, now = now, after
    return powers


def temme(least_shape, widest):
    """C_k(eta) for shapes from least_shape on and |eta| up to widest, to 2e-17."""
    size = 60
    mu = [mp.mpf(0)] * (size + 2)  # lambda - 1 in powers of eta
    mu[1] = mp.mpf(1)
    for n in range(2, size + 2):
        mu[n] = (mu[n - 1] - sum(mu[i] * (n + 1 - i) * mu[n + 1 - i] for i in range(2, n))) / (n + 1)
    q = [mp.mpf(1)]  # eta / mu
    for n in range(1, size):
        q.append(-sum(mu[i + 1] * q[n - i] for i in range(1, n + 1)))
    rows, c = [], q[1:]
    for k in range(20):
        if k > 0:
            slope = [n * c[n] for n in range(1, len(c))]
            c = [slope[n + 1] - slope[0] * q[n + 1] for n in range(len(slope) - 1)]
        need = [n for n in range(len(c))
                if abs(c[n]) * mp.mpf(widest) ** n * mp.mpf(least_shape) ** -k > mp.mpf("2e-17")]
        if not need:
            break
        rows.append(c[:need[-1] + 1])
    return rows


def show(name, comment, values):
    print(f"// {comment}")
    print(f"inline constexpr double {name}[] = {{")
    print(",\n".join(f"    {mp.nstr(v, 20)}" for v in values) + "};\n")


def main():
    print("// Polynomials of the special functions, written by tools/special_tables.py.")
    print("#pragma once\n\nnamespace nag2 {\n")

    def reciprocal(a):
        if a == 0 or a == 1:
            a += mp.mpf("1e-25")
        return (mp.rgamma(1 + a) - 1) / (a * (1 - a))

    show("reciprocalGamma", "(1 / Gamma(1 + a) - 1) / (a (1 - a)), a in [0, 1], in powers of 2 a - 1.",
         chebyshev_powers(reciprocal, mp.mpf(0), mp.mpf(1), mp.mpf("1e-18")))

    def mills(t):
        z = 5 * (1 + t) / (1 - t)
        if z > 40:
            # Laplace's continued fraction
            rest = z
            for k in range(400, 0, -1):
                rest = z + k / rest
            return (z + 5) / rest
        return (z + 5) * mp.sqrt(mp.pi / 2) * mp.exp(z * z / 2) * mp.erfc(z / mp.sqrt(2))

    show("millsFit", "Mills's ratio of the normal law at z, times z + 5, in powers of (z - 5) / (z + 5).",
         chebyshev_powers(mills, mp.mpf(-1), mp.mpf(1), mp.mpf("1e-17")))
    rows = temme(20, 0.55)
    show("temmeSeries", "Temme's C_k(eta), shapes from 20 on and |eta| <= 0.55, row after row.",
         [v for row in rows for v in row])
    print("inline constexpr int temmeLengths[] = {" + ", ".join(str(len(r)) for r in rows) + "};\n")
    print("}  // namespace nag2")


main()
