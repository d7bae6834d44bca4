#!/usr/bin/python3
"""Writes data/statistics.txt: samples, and what statistics of them are by definition.

Sums are made of exact fractions, roots and logarithms with 60 digits.  Lines:
  sample NAME: VALUES        doubles, shortest decimals
  FUNCTION SAMPLES = VALUE   30 digits; SAMPLES is x, x/weights, x,y or x,y/weights
"""
import random
from fractions import Fraction
from pathlib import Path

from mpmath import mp, mpf

mp.dps = 60


def number(q):
    return mpf(q.numerator) / q.denominator if isinstance(q, Fraction) else mpf(q)


def digits_of_pi(n):
    with mp.workdps(n + 10):
        return [float(d) for d in mp.nstr(mp.pi, n + 5).replace(".", "")[:n]]


def numacc(base, n):
    return [base + 0.2] + [base + 0.1, base + 0.3] * n


rng = random.Random(1)
SAMPLES = {
    "digits": digits_of_pi(1000),
    "numacc1": [10000001.0, 10000003.0, 10000002.0],
    "numacc2": numacc(1.0, 500),
    "numacc3": numacc(1000000.0, 500),
    "numacc4": numacc(10000000.0, 500),
    "normal": [rng.gauss(0.3, 1.0) for _ in range(300)],
    "far": [1e8 + rng.gauss(0.0, 1e-6) for _ in range(100)],
    "wide": [rng.uniform(0.5, 1.0) * 2.0 ** rng.randint(-300, 300) for _ in range(100)],
    "signs": [rng.choice((-1, 1)) * rng.uniform(0.5, 1.0) * 2.0 ** rng.randint(-40, 40) for _ in range(200)],
    "huge": [rng.uniform(0.9, 1.7) * 1e308 for _ in range(50)],
    "tiny": [rng.randint(1, 10**6) * 5e-324 for _ in range(50)],
    "small": [rng.uniform(1.0, 2.0) * 1e-200 for _ in range(50)],
    "ties": [float(rng.randint(0, 9)) for _ in range(120)],
    "other": [float(rng.randint(0, 9)) for _ in range(120)],
    "noisy": [rng.gauss(0.0, 2.0) for _ in range(300)],
    "w120": [float(rng.randint(0, 3)) for _ in range(120)],
    "w300": [rng.uniform(0.0, 3.0) for _ in range(300)],
    "w1000": [rng.choice((0.0, 0.25, 1.0, 7.5)) for _ in range(1000)],
}


class Weighted:
    def __init__(self, x, w):
        self.x = [Fraction(v) for v in x]
        self.w = [Fraction(v) for v in w] if w else [Fraction(1)] * len(x)
        self.n = sum(self.w)
        self.mean = self.average(lambda v: v)

    def average(self, f):
        return sum(w * f(x) for x, w in zip(self.x, self.w)) / self.n

    def moment(self, k):
        return self.average(lambda v: (v - self.mean) ** k)

    def var(self):
        return self.moment(2) * self.n / (self.n - 1)


def logarithmic(s):
    return mp.exp(sum(number(w) * mp.log(number(x)) for x, w in zip(s.x, s.w)) / number(s.n))


ONE = {
    "mean": lambda s: s.mean,
    "quadratic": lambda s: mp.sqrt(number(s.average(lambda v: v * v))),
    "harmonic": lambda s: 1 / s.average(lambda v: 1 / v),
    "geometric": logarithmic,
    "var": lambda s: s.var(),
    "std": lambda s: mp.sqrt(number(s.var())),
    "moment3": lambda s: s.moment(3),
    "moment4": lambda s: s.moment(4),
    "moment7": lambda s: s.moment(7),
    "skewness": lambda s: number(s.moment(3)) / number(s.moment(2)) ** 1.5,
    "kurtosis": lambda s: s.moment(4) / s.moment(2) ** 2 - 3,
    "mean_absolute_deviation": lambda s: s.average(lambda v: abs(v - s.mean)),
}
POSITIVE = {"harmonic", "geometric"}
# Of no use where powers leave the doubles' range.
RANGES = {"huge": {"var", "moment3", "moment4", "moment7"}, "small": {"var", "moment3", "moment4", "moment7"},
          "tiny": {"var", "std", "moment3", "moment4", "moment7", "harmonic", "geometric", "mean",
                   "quadratic", "mean_absolute_deviation"},
          "wide": {"moment4", "moment7"}}


def ranks(x, w):
    total = {}
    for v, u in zip(x, w):
        total[v] = total.get(v, 0) + u
    before, rank = Fraction(0), {}
    for v in sorted(total):
        rank[v] = before + (total[v] + 1) / 2
        before += total[v]
    return [rank[v] for v in x]


def pearson(x, y, w):
    n = sum(w)
    mx, my = (sum(a * u for a, u in zip(v, w)) / n for v in (x, y))
    def s(a, ma, b, mb):
        return number(sum(u * (p - ma) * (q - mb) for p, q, u in zip(a, b, w)))
    return s(x, mx, y, my) / mp.sqrt(s(x, mx, x, mx) * s(y, my, y, my))


def kendall(x, y, w):
    sign = lambda v: (v > 0) - (v < 0)
    p = tx = ty = Fraction(0)
    for i in range(len(x)):
        for j in range(i):
            a, b = sign(x[i] - x[j]), sign(y[i] - y[j])
            pair = w[i] * w[j]
            p += a * b * pair
            tx += abs(a) * pair
            ty += abs(b) * pair
    return number(p) / mp.sqrt(number(tx) * number(ty))


def covariance(x, y, w):
    n = sum(w)
    mx, my = (sum(a * u for a, u in zip(v, w)) / n for v in (x, y))
    return sum(u * (p - mx) * (q - my) for p, q, u in zip(x, y, w)) / (n - 1)


TWO = {"cov": covariance, "pearson": pearson,
       "spearman": lambda x, y, w: pearson(ranks(x, w), ranks(y, w), w), "kendall": kendall}


def lines():
    for name, x in SAMPLES.items():
        yield f"sample {name}: " + " ".join(repr(v) for v in x)
    for name, w in [(n, None) for n in SAMPLES if n[0] != "w" or n == "wide"] + [
            ("digits", "w1000"), ("normal", "w300"), ("ties", "w120")]:
        sample = Weighted(SAMPLES[name], SAMPLES[w] if w else None)
        for function, f in ONE.items():
            if function in RANGES.get(name, ()) or (function in POSITIVE and min(sample.x) <= 0):
                continue
            label = name + (f"/{w}" if w else "")
            yield f"{function} {label} = {mp.nstr(number(f(sample)), 30, min_fixed=0, max_fixed=0)}"
        if w is None:
            yield f"sum {name} = {mp.nstr(number(sum(sample.x)), 30, min_fixed=0, max_fixed=0)}"
    for x, y, w in [("normal", "noisy", None), ("ties", "other", None), ("ties", "other", "w120"),
                    ("normal", "noisy", "w300"), ("numacc4", "numacc3", None)]:
        a, b = ([Fraction(v) for v in SAMPLES[s]] for s in (x, y))
        weights = [Fraction(v) for v in SAMPLES[w]] if w else [Fraction(1)] * len(a)
        for function, f in TWO.items():
            label = f"{x},{y}" + (f"/{w}" if w else "")
            yield f"{function} {label} = {mp.nstr(number(f(a, b, weights)), 30, min_fixed=0, max_fixed=0)}"


path = Path(__file__).parent / "data" / "statistics.txt"
path.write_text("\n".join(lines()) + "\n")
