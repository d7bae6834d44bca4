#!/usr/bin/env python3
"""W and p of the Shapiro-Wilk test at 50 digits, by the published algorithm (Royston 1995, R94),
for the samples of tests/numerics/shapiro_wilk_test.cpp: i^2 + (7 i mod 5), i = 1..n."""
from mpmath import asin, erfc, erfinv, exp, log, mp, mpf, pi, sqrt

mp.dps = 50
C = {name: [mpf(c) for c in text.split()] for name, text in {
    'outermost': '0 .221157 -.147981 -2.07119 4.434685 -2.706056',
    'next': '0 .042981 -.293762 -1.752461 5.682633 -3.582633',
    'shift': '-2.273 .459',
    'small mean': '.544 -.39978 .025054 -6.714e-4',
    'small sd': '1.3822 -.77857 .062767 -.0020322',
    'large mean': '-1.5861 -.31082 -.083751 .0038915',
    'large sd': '-.4803 -.082676 .0030302'}.items()}


def poly(name, x):
    return sum(c * x**i for i, c in enumerate(C[name]))


def coefficients(n):
    if n == 3:
        return [-sqrt(mpf(1) / 2), mpf(0), sqrt(mpf(1) / 2)]
    m = [sqrt(2) * erfinv(2 * (i - mpf(3) / 8) / (n + mpf(1) / 4) - 1) for i in range(1, n + 1)]
    ss = sum(v * v for v in m)
    u = 1 / sqrt(mpf(n))
    top = [m[-1] / sqrt(ss) + poly('outermost', u)]
    if n > 5:
        top.append(m[-2] / sqrt(ss) + poly('next', u))
    k = len(top)
    phi = (ss - 2 * sum(v * v for v in m[-k:])) / (1 - 2 * sum(v * v for v in top))
    return [-v for v in top] + [v / sqrt(phi) for v in m[k:n - k]] + top[::-1]


def test(x):
    x, n = sorted(map(mpf, x)), len(x)
    mean = sum(x) / n
    w = sum(a * v for a, v in zip(coefficients(n), x))**2 / sum((v - mean)**2 for v in x)
    if n == 3:
        return w, 6 / pi * (asin(sqrt(w)) - asin(sqrt(mpf(3) / 4)))
    y = log(1 - w)
    if n <= 11:
        y, mu, sd = -log(poly('shift', n) - y), poly('small mean', n), exp(poly('small sd', n))
    else:
        mu, sd = poly('large mean', log(n)), exp(poly('large sd', log(n)))
    return w, erfc((y - mu) / sd / sqrt(2)) / 2


for n in (3, 4, 5, 6, 11, 12, 20, 500, 5000):
    w, p = test([i * i + 7 * i % 5 for i in range(1, n + 1)])
    print(f'{{{n}, {mp.nstr(w, 17)}, {mp.nstr(p, 17)}}},')
