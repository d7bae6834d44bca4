"""Several statistics at once: five-point and moment summaries, covariance sums."""

import math
from fractions import Fraction

import host
from host import NAN, Array, Near, Raised, integer64, vector as array_of
from kernels import in_order, quotient, total
from samples import (DATATYPES, calls_of, random_boolean, random_data, random_floats,
                     random_integer, random_size, random_weights, sample, vector)


def five_point_summary(data, ignore):
    x, _ = sample(data, Array("float[8]", [(1, 0)], []), ignore)
    n = len(x)
    if n < 5:
        raise Raised("data sample must contain at least five elements", None)
    if any(map(math.isnan, x)):
        return array_of([NAN] * 5)

    def middle(ordered):
        m = len(ordered)
        return ordered[m // 2] / 2 + ordered[(m - 1) // 2] / 2
    ordered = in_order(x)
    half = (n + 1) // 2
    return array_of([ordered[0], middle(ordered[:half]), middle(ordered),
                     middle(ordered[n - half:]), ordered[-1]])


def statistic_summary(data, weights, ignore):
    x, w = sample(data, weights, ignore)
    if ignore and not x:
        raise Raised("the data set contains only missing data")
    if w is not None:
        if any(u < 0 for u in w):
            raise Raised("data weights can not be negative", None)
        if any(map(math.isnan, w)):
            return array_of([NAN] * 7)
        if not total(w) > 0:
            raise Raised("cumulative data weight must be strictly positive", None)
    cases = [(v, u) for v, u in zip(x, w or [1.0] * len(x)) if u != 0]
    if len(cases) < 2:
        raise Raised("data sample must contain at least two elements of non-zero weight", None)
    if any(map(math.isnan, x)):
        return array_of([NAN] * 7)

    reach = max(abs(v) for v, _ in cases)
    unit = 2.0**math.frexp(reach)[1]  # in which no power of a value is too large or too small
    points = [Fraction(v / unit) for v, _ in cases]
    shares = [Fraction(u) for _, u in cases]
    whole = sum(shares)
    mean = sum(u * v for v, u in zip(points, shares)) / whole
    divisor = whole - sum(u * u for u in shares) / whole

    def central(order):
        return float(sum(u * (v - mean)**order for v, u in zip(points, shares)) / divisor)
    deviation = math.sqrt(central(2))

    def near(value):
        return Near(value, 1e-12 * (1 + abs(value) + 1 / deviation))
    shape = ([near(central(3) / deviation**3), near(central(4) / deviation**4 - 3)]
             if deviation > 0 else [NAN, NAN])
    return array_of([Near(float(mean) * unit, 1e-14 * reach),
                     Near(deviation * unit, 1e-13 * reach), *shape,
                     min(v for v, _ in cases), max(v for v, _ in cases),
                     Near(float(whole), 1e-13 * whole)])


def covariance(data, partners, weights, ignore):
    x, y, w = vector(data), vector(partners), vector(weights)
    if len(x) != len(y):
        raise Raised("data samples are expected to have the same size", None)
    skip = integer64(ignore) == 1
    if w and len(w) != len(x):
        raise Raised("array of weights is expected to be of the same size as both data samples",
                     None)
    triples = [t for t in zip(x, y, w or [1.0] * len(x)) if not (skip and any(map(math.isnan, t)))]
    whole = total(w for _, _, w in triples)
    x_mean = quotient(total(w * x for x, _, w in triples), whole)
    y_mean = quotient(total(w * y for _, y, w in triples), whole)
    centred = [(x - x_mean, y - y_mean, w) for x, y, w in triples]
    return [total(x * y * w for x, y, w in centred), total(x * x * w for x, _, w in centred),
            total(y * y * w for _, y, w in centred), whole]


def calls(random):
    def summary_arguments():
        n = random_size(random)
        scale = random.choice([1.0, 1.0, 2.0**900, 2.0**-900])
        floats = [v * scale
                  for v in random_floats(random, n, ("ties", "plain", "positive", "missing"))]
        data = random_data(random, floats, datatypes=DATATYPES if scale == 1.0 else ["float[8]"])
        weights = random_weights(random, n)
        if random.random() < 0.05:
            weights = array_of([0.0] * n)
        return [data, weights, random_boolean(random)]

    def five_point_arguments():
        return [random_data(random, random_floats(random, random.randint(0, 30))),
                random_boolean(random)]

    def covariance_arguments():
        n = random_size(random)
        m = n + 1 if random.random() < 0.05 else n
        return [random_data(random, random_floats(random, n)),
                random_data(random, random_floats(random, m)), random_weights(random, n),
                random_integer(random, [0, 1, 1, 2, -1])]

    return calls_of(random, [
        ("STATS_VexelFivePointSummary_HW", five_point_summary, five_point_arguments,
         "expected two arguments, received: %1"),
        ("STATS_VexelStatisticSummary_HW", statistic_summary, summary_arguments,
         "expected 3 arguments, received: %1"),
        ("STATS_VexelCovariance_HW", covariance, covariance_arguments,
         "expected 4 arguments, received: %1"),
    ])


if __name__ == "__main__":
    host.main(calls)
