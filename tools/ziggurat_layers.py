#!/usr/bin/env python3
"""Writes kernels/variates/ziggurat_layers.hpp: the right edges of the layers of the two ziggurats.

usage: ziggurat_layers.py > kernels/variates/ziggurat_layers.hpp
"""
import mpmath as mp

mp.mp.dps = 40
LAYERS = 512


def edges(f, inverse, tail, low, high):
    """x[0] .. x[LAYERS]: the width of the base as a rectangle, r = x[1], ..., x[LAYERS] = 0."""

    def build(r):
        area = r * f(r) + tail(r)
        x = [area / f(r), r]
        while len(x) < LAYERS:
            y = f(x[-1]) + area / x[-1]
            if y >= 1:
                return None, mp.mpf(1)  # closed too early: r is too small
            x.append(inverse(y))
        return x, f(x[-1]) + area / x[-1] - 1

    for _ in range(120):
        r = (low + high) / 2
        if build(r)[1] > 0:
            low = r
        else:
            high = r
    return build(high)[0] + [mp.mpf(0)]


normal = edges(lambda x: mp.exp(-x * x / 2), lambda y: mp.sqrt(-2 * mp.log(y)),
               lambda r: mp.sqrt(mp.pi / 2) * mp.erfc(r / mp.sqrt(2)), mp.mpf(3), mp.mpf(5))
exponential = edges(lambda x: mp.exp(-x), lambda y: -mp.log(y), lambda r: mp.exp(-r),
                    mp.mpf(6), mp.mpf(10))

print("""// Written by tools/ziggurat_layers.py: right edges of the layers of equal area under exp(-x^2/2) and
// under exp(-x).  [0] is the width that the base layer would have as a rectangle, [1] where its tail
// begins, the last one 0.
#pragma once

namespace vexel::kernels {

inline constexpr int zigguratLayers = %d;
""" % LAYERS)
for name, x in (("normalEdges", normal), ("exponentialEdges", exponential)):
    print("// clang-format off\ninline constexpr double %s[zigguratLayers + 1] = {" % name)
    row = "   "
    for v in x:
        text = " " + float(v).hex() + ","
        if len(row) + len(text) > 100:
            print(row)
            row = "   "
        row += text
    print(row + "\n};\n// clang-format on\n")
print("}  // namespace vexel::kernels")
