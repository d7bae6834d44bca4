#!/usr/bin/env python3
"""Writes numerics/special/stirling_tables.hpp: the Stirling error at halves of whole numbers, and its fits between.

usage: stirling_tables.py > numerics/special/stirling_tables.hpp

A fit interpolates at the zeros of the Chebyshev polynomial of one degree more.
"""

import mpmath as mp

mp.mp.dps = 60


def stirling_error(z):
    return mp.loggamma(z + 1) - (z + mp.mpf(1) / 2) * mp.log(z) + z - mp.log(2 * mp.pi) / 2


def interpolation(function, low, high, degree):
    """Coefficients c of sum c_k t^k, t the interval mapped onto [-1, 1]."""
    n = degree + 1
    nodes = [mp.cos(mp.pi * (2 * j + 1) / (2 * n)) for j in range(n)]
    values = [function((high + low) / 2 + (high - low) / 2 * t) for t in nodes]
    divided = list(values)
    for k in range(1, len(nodes)):
        for i in range(len(nodes) - 1, k - 1, -1):
            divided[i] = (divided[i] - divided[i - 1]) / (nodes[i] - nodes[i - k])
    powers = [mp.mpf(0)] * len(nodes)
    for node, d in zip(reversed(nodes), reversed(divided)):
        powers = [d - node * powers[0]] + [a - node * b for a, b in zip(powers, powers[1:])]
    return powers


PIECES = ((1, 2, 14), (2, 4, 12), (4, 16, 12))  # from, to, degree
LONGEST = 15


def main():
    print("// Tables of the Stirling error, log Gamma(z + 1) - (z + 1/2) log z + z - log(2 pi) / 2, written by")
    print("// tools/stirling_tables.py.")
    print("#pragma once\n\nnamespace nag2 {\n")
    print("// Stirling errors of 1/2, 1, ..., 31/2.\ninline constexpr long double stirlingOfHalves[] = {")
    print(", ".join(mp.nstr(stirling_error(mp.mpf(k) / 2), 22) + "L" for k in range(1, 32)) + "};\n")
    print("// z times the Stirling error of z in [1, 2), [2, 4), [4, 16): polynomials in 1 / z, the interval")
    print("// mapped onto [-1, 1]; Chebyshev fits, good to 1e-19 before rounding.")
    print(f"inline constexpr double stirlingFits[{len(PIECES)}][{LONGEST}] = {{")
    rows = []
    for low, high, degree in PIECES:
        c = interpolation(lambda u: stirling_error(1 / u) / u, 1 / mp.mpf(high), 1 / mp.mpf(low), degree)
        rows.append("{" + ", ".join([mp.nstr(x, 20) for x in c] + ["0.0"] * (LONGEST - len(c))) + "}")
    print(",\n".join(rows) + "};\n\n}  // namespace nag2")


main()
