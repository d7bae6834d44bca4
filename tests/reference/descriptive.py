#!/usr/bin/env python3
"""Writes tests/reference/data/descriptive.txt: statistics of small samples, exact where they are rational.

Every line is a call in the host's language, a tab, and the expected numbers.  Samples are dyadic
fractions, so that the doubles hold them exactly; results are computed as fractions (roots, logarithms
and powers with mpmath at 50 digits) from the definitions, on sorted copies, and rounded once.

    python3 tests/reference/descriptive.py > tests/reference/data/descriptive.txt
"""

import random
from fractions import Fraction as F
from math import floor, ceil

import mpmath

mpmath.mp.dps = 50
random.seed(20240521)


def mp(x):
    return mpmath.mpf(x.numerator) / x.denominator if isinstance(x, F) else mpmath.mpf(x)


def sample(n, denominator, low, high):
    return [F(random.randint(low * denominator, high * denominator), denominator) for _ in range(n)]


def distinct(n, denominator, low, high):
    return [F(k, denominator) for k in random.sample(range(low * denominator, high * denominator), n)]


# Tied points have the same weight: in which order a sort leaves their weights is not a matter of
# statistics.
TIES = sample(40, 1, 1, 6)
SAMPLES = [
    ([F(3), F(1), F(2)], [F(1), F(2), F(1)]),
    ([F(k) for k in range(1, 11)], [F(1)] * 10),
    (distinct(17, 16, 1, 9), sample(17, 8, 1, 3)),
    (TIES, [1 + v / 4 for v in TIES]),
    ([F(5, 2)], [F(3, 4)]),
    ([F(2**40), F(2**40) + 1, F(2**40) + 2, F(2**40) + F(1, 2)], [F(1), F(4), F(2), F(1)]),
]


def array(x):
    return "Array([%s], datatype = float[8])" % ", ".join(repr(float(v)) for v in x)


def show(v):
    return mpmath.nstr(mp(v), 25)


def emit(entry, arguments, *expected):
    print("STATS_Vexel%s_HW(%s)\t%s" % (entry, ", ".join(arguments), " ".join(map(show, expected))))


def mean(x, w, kind):
    total = sum(w)
    if kind == 1:
        return mpmath.exp(mpmath.fsum(mp(b) * mpmath.log(mp(a)) for a, b in zip(x, w)) / mp(total))
    if kind == 2:
        return total / sum(b / a for a, b in zip(x, w))
    if kind == 3:
        return mpmath.sqrt(mp(sum(b * a * a for a, b in zip(x, w)) / total))
    return sum(a * b for a, b in zip(x, w)) / total


def cut_by_count(x, lower, upper):
    n = len(x)
    lo, hi = floor(n * F(lower, 100) + F(1, 2)), floor(n * F(upper, 100) + F(1, 2))
    return sorted(x), lo, hi


def cut_by_weight(x, w, lower, upper):
    """Pairs in order with what the part between the two cuts leaves of each weight."""
    pairs = sorted(zip(x, w))
    total = sum(w)
    low, high = F(lower, 100) * total, F(upper, 100) * total
    kept, before = [], F(0)
    for value, weight in pairs:
        after = before + weight
        kept.append(max(F(0), min(after, high) - max(before, low)))
        before = after
    return pairs, kept


PARAMETERS = {
    1: (0, 0, 1, 0), 2: (F(1, 2), 0, 0, 0), 3: (0, 0, 0, 1), 4: (F(1, 2), 0, 0, 1),
    5: (0, 1, 0, 1), 6: (1, -1, 0, 1), 7: (F(1, 3), F(1, 3), 0, 1), 8: (F(3, 8), F(1, 4), 0, 1),
}


def quantile(x, p, kind):
    a, b, c, d = PARAMETERS[kind]
    s, n = sorted(x), len(x)
    h = a + (n + b) * p
    k, up = floor(h), ceil(h)
    lo, hi = min(max(k - 1, 0), n - 1), max(up - 1, 0)
    if lo == hi or lo == n - 1:
        return s[lo]
    return s[lo] + (s[lo + 1] - s[lo]) * (c + d * (h - k))


def weighted_quantile(x, w, p, kind):
    a, b, c, d = PARAMETERS[kind]
    pairs, n = sorted(zip(x, w)), len(x)
    h = a + (sum(w) + b) * p
    reached, k = F(0), n - 1
    for i, (_, weight) in enumerate(pairs):
        reached += weight
        if reached > h:
            k = max(i - 1, 0)
            break
    lower = pairs[k][0]
    upper = pairs[min(k + 1, n - 1)][0]
    return lower + (upper - lower) * ((h - floor(h)) * d + c)


def main():
    for x, w in SAMPLES:
        ones = [F(1)] * len(x)
        data, weights, none = array(x), array(w), array([])
        for kind in range(4):
            emit("Mean", [data, none, "false", str(kind)], mean(x, ones, kind))
            emit("Mean", [data, weights, "false", str(kind)], mean(x, w, kind))

        for lower, upper in ((0, 100), (10, 90), (25, 75)):
            s, lo, hi = cut_by_count(x, lower, upper)
            if lo + hi == len(x) and lo < hi:
                trimmed = s[lo:hi]
                winsorized = [min(max(v, s[lo]), s[hi - 1]) for v in s]
                ends = [data, str(lower), str(upper), none, "true"]
                emit("TrimmedMean", ends + ["0"], mean(trimmed, [F(1)] * len(trimmed), 0))
                emit("WinsorizedMean", ends + ["3"], mean(winsorized, ones, 3))
        # Cuts by weight that no percentile rounds: 25 and 75 are exact in the entry's arithmetic.
        pairs, kept = cut_by_weight(x, w, 25, 75)
        values = [v for v, _ in pairs]
        ends = [data, "25", "75", weights, "true"]
        emit("TrimmedMean", ends + ["0"], mean(values, kept, 0))
        inside = [v for v, k in zip(values, kept) if k > 0]
        clipped = [min(max(v, inside[0]), inside[-1]) for v in values]
        emit("WinsorizedMean", ends + ["2"], mean(clipped, [b for _, b in pairs], 2))

        origin = x[0] - F(1, 4)
        moments = [mean([(v - origin) ** k for v in x], ones, 0) for k in (1, 2, 3, 5)]
        emit("Moment", [data, none, "[1, 2, 3, 5]", repr(float(origin)), "false"], *moments)
        emit("Moment", [data, weights, "4", repr(float(origin)), "true"],
             mean([(v - origin) ** 4 for v in x], w, 0))
        for given, b in ((none, ones), (weights, w)):
            emit("AbsoluteDeviation", [data, given, repr(float(origin)), "false"],
                 mean([abs(v - origin) for v in x], b, 0))
            emit("ExpectedValue", [data, given, "t -> t^2 - 1/2", "false"],
                 mean([v * v - F(1, 2) for v in x], b, 0))

        probs = [F(0), F(1, 16), F(1, 4), F(1, 2), F(5, 8), F(31, 32), F(1)]
        shown = "[%s]" % ", ".join(repr(float(p)) for p in probs)
        for kind in PARAMETERS:
            emit("Quantile", [data, shown, none, "false", str(kind), "false"],
                 *[quantile(x, p, kind) for p in probs])
            emit("Quantile", [data, shown, weights, "true", str(kind), "false"],
                 *[weighted_quantile(x, w, p, kind) for p in probs])
        median = quantile(x, F(1, 2), 4)
        emit("Median", [data, none, "false", "false"], median)
        emit("Median", [data, weights, "true", "false"], weighted_quantile(x, w, F(1, 2), 1))
        emit("MedianDeviation", [data, none, "false"],
             quantile([abs(v - median) for v in x], F(1, 2), 4))
        ranks = list(range(len(x), 0, -3)) + [1, 1, len(x)]
        emit("OrderStatistic", [data, str(ranks), none, "true"], *[sorted(x)[r - 1] for r in ranks])

        y = [v * v - 2 * v + F(k % 3, 2) for k, v in enumerate(x)]
        for given, b in ((none, ones), (weights, w)):
            mx, my = mean(x, b, 0), mean(y, b, 0)
            if max(x) > 2**30:
                continue  # y needs more than 53 bits
            emit("Covariance", [data, array(y), given, "1"],
                 sum(c * (s - mx) * (t - my) for s, t, c in zip(x, y, b)),
                 sum(c * (s - mx) ** 2 for s, c in zip(x, b)),
                 sum(c * (t - my) ** 2 for t, c in zip(y, b)), sum(b))


if __name__ == "__main__":
    main()
