"""Writes tests/reference/data/hypothesis_tests.txt: statistics and p-values of tests on small exact samples, from
their definitions at 60 digits.  The law of Kolmogorov's statistic is Durbin's matrix power.

usage: hypothesis_tests.py > tests/reference/data/hypothesis_tests.txt
"""

from fractions import Fraction

import mpmath as mp

mp.mp.dps = 60


def t_tail(t, df):
    return mp.betainc(df / 2, mp.mpf(1) / 2, 0, df / (df + t * t), regularized=True)


def summary(x):
    mean = Fraction(sum(x), len(x))
    return len(x), mean, sum((v - mean) ** 2 for v in x) / (len(x) - 1)


def real(q):
    return mp.mpf(q.numerator) / q.denominator


def row(kind, samples, statistic, p):
    texts = [" ".join(str(v) for v in s) for s in samples]
    print("; ".join([kind, *texts, mp.nstr(statistic, 20), mp.nstr(p, 20)]))


def one_sample(x, mean):
    n, m, v = summary(x)
    t = real(m - mean) / mp.sqrt(real(v) / n)
    row("t", [x, [mean]], t, t_tail(t, mp.mpf(n - 1)))


def two_samples(x, y, equal):
    (n, a, v), (m, b, w) = summary(x), summary(y)
    if equal:
        df = mp.mpf(n + m - 2)
        error = ((n - 1) * v + (m - 1) * w) / (n + m - 2) * (Fraction(1, n) + Fraction(1, m))
    else:
        error = v / n + w / m
        df = real(error**2 / ((v / n) ** 2 / (n - 1) + (w / m) ** 2 / (m - 1)))
    t = real(a - b) / mp.sqrt(real(error))
    row("pooled" if equal else "welch", [x, y], t, t_tail(t, df))


def chi_square(observed, expected):
    s = sum(Fraction((o - e) ** 2) / e for o, e in zip(observed, expected))
    row("chi", [observed, expected], real(s), mp.gammainc(mp.mpf(len(observed) - 1) / 2, real(s) / 2, regularized=True))


def kolmogorov(n, d):
    if d >= Fraction(1, 2):  # both sides cannot be that far out: Smirnov's sum
        p = sum(mp.binomial(n, j) * real(d + Fraction(j, n)) ** (j - 1) * real(1 - d - Fraction(j, n)) ** (n - j)
                for j in range(int(n * (1 - d)) + 1))
        return row("ks", [[n, float(d)]], real(d), 2 * real(d) * p)
    k = int(n * d) + 1
    h = k - n * d
    m = 2 * k - 1
    H = mp.zeros(m)
    for i in range(m):
        for j in range(m):
            H[i, j] = 1 if i - j + 1 >= 0 else 0
    for i in range(m):
        H[i, 0] -= real(h) ** (i + 1)
        H[m - 1, i] -= real(h) ** (m - i)
    H[m - 1, 0] += max(2 * real(h) - 1, 0) ** m
    for i in range(m):
        for j in range(m):
            if i - j + 1 > 0:
                H[i, j] /= mp.factorial(i - j + 1)
    p = 1 - (H**n)[k - 1, k - 1] * mp.factorial(n) / mp.mpf(n) ** n
    row("ks", [[n, float(d)]], real(d), p)


one_sample([1, 2, 4, 9, 3], 0)
one_sample([10**8 + k for k in (1, 5, 2, 8, 3, 3, 1)], 0)
one_sample([k % 7 - 3 for k in range(200)] + [50], -40)
two_samples([1, 5, 2, 8], [10, 12, 19], False)
two_samples([1, 5, 2, 8], [10, 12, 19], True)
two_samples([k % 5 for k in range(60)], [k % 9 + 900 for k in range(40)], False)
chi_square([16, 18, 16, 14, 12, 12], [16, 16, 16, 16, 16, 8])
chi_square([900, 10, 90], [333, 333, 334])
for n in (4, 16, 64, 128):
    for d in (Fraction(1, 16), Fraction(5, 32), Fraction(3, 8), Fraction(75, 128), Fraction(29, 32)):
        if 2 * n * d > 1:
            kolmogorov(n, d)
for d in (Fraction(5, 64), Fraction(7, 64), Fraction(1, 8), Fraction(9, 64)):  # where the ways to compute it meet
    kolmogorov(256, d)
