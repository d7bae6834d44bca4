"""Means, cut means, moments, deviations, and expected values."""

import math
from fractions import Fraction

import host
from host import INFINITY, NAN, Name, Procedure, Raised, integer64, real
from kernels import mean_of, quotient, select, sort, total
from samples import (calls_of, random_boolean, random_data, random_floats, random_integer,
                     random_size, random_weights, sample)


def mean(data, weights, ignore, kind):
    x, w = sample(data, weights, ignore)
    return mean_of(x, w, integer64(kind))


def average(term, x, w):
    if w is None:
        return quotient(total(map(term, x)), len(x))
    return quotient(total(u * term(v) for v, u in zip(x, w)), total(w))


def percentiles(lower, upper):
    low, high = real(lower), real(upper)
    text = ("expected {} argument ({} percentile) to be a numeric constant between 0 and 100, "
            "received: %1")
    if not 0 <= low <= 100:
        raise Raised(text.format("second", "lower"), lower)
    if not 0 <= high <= 100:
        raise Raised(text.format("third", "upper"), upper)
    if low > high:
        raise Raised("the value of lower percentile is expected to be smaller than the value of "
                     "upper percentile, received: %1, %2", lower, upper)
    return low * 0.01, high * 0.01


def cut_by_count(x, low, high):
    """Puts the values of ranks first..end-1 in their places; returns these, and the end that the
    means go by: for cuts of unequal size one place earlier."""
    n = len(x)
    first, end = int(n * low + 0.5), int(n * high + 0.5)
    select(x, 0, n, first)
    select(x, first, n - first, end - first)
    return first, end if n == first + end else end - 1


def cut_by_weight(w, low, high):
    """The places of the first and last value that keep some weight, and what these two keep."""
    whole = total(w)
    low_cut, high_cut = low * whole, whole - (1.0 - high) * whole
    first, below = 0, 0.0
    while first < len(w):
        below += w[first]
        if not below <= low_cut:
            break
        first += 1
    last, remaining = len(w) - 1, whole
    while last >= 0 and remaining - w[last] >= high_cut:
        remaining -= w[last]
        last -= 1
    excess = remaining - high_cut if remaining > high_cut else 0.0
    return first, last, below - low_cut, excess


def trimmed_of(x, w, low, high, kind):
    if w is None:
        first, end = cut_by_count(x, low, high)
        return mean_of(x[first:max(end, first)], None, kind, end - first)
    sort(x, w)
    first, last, kept, excess = cut_by_weight(w, low, high)
    if first <= last:
        w[first] = kept
        w[last] -= excess
    return mean_of(x[first:last + 1], w[first:last + 1], kind)


def winsorized_of(x, w, low, high, kind):
    n = len(x)
    if w is None:
        first, end = cut_by_count(x, low, high)
        if first < n:
            x[:first] = [x[first]] * first
        if end >= 1:
            x[end:] = [x[end - 1]] * (n - end)
        return mean_of(x, None, kind)
    sort(x, w)
    first, last, _, _ = cut_by_weight(w, low, high)
    if first < n and last >= 0:
        lowest, highest = x[first], x[last]
        x[:first] = [lowest] * first
        x[last + 1:] = [highest] * (n - 1 - last)
    return mean_of(x, w, kind)


def cut_mean(mean_with_cuts):
    def model(data, lower, upper, weights, ignore, kind):
        low, high = percentiles(lower, upper)
        x, w = sample(data, weights, ignore)
        return mean_with_cuts(x, w, low, high, integer64(kind))
    return model


def power(x, order):
    try:
        return math.pow(x, order)
    except OverflowError:
        return -INFINITY if x < 0 and order % 2 == 1 else INFINITY


def is_positive(order):
    return type(order) is int and 1 <= order < 2**31


def moment(data, weights, orders, origin, ignore):
    sample(data, weights)
    listed = orders if isinstance(orders, list) else [orders]
    if not all(is_positive(k) for k in listed):
        raise Raised("expected: list of positive integers, received %1", orders)
    centre = real(origin)
    x, w = sample(data, weights, ignore)
    values = [average(lambda v: power(v - centre, float(k)), x, w) for k in listed]
    return values if isinstance(orders, list) else values[0]


def absolute_deviation(data, weights, origin, ignore):
    sample(data, weights)
    centre = real(origin)
    x, w = sample(data, weights, ignore)
    return average(lambda v: abs(v - centre), x, w)


PROCEDURES = {
    "z -> -z": lambda v: -v,
    "z -> if(z > 0, 1, 1/3)": lambda v: 1.0 if v > 0 else 1 / 3,
    "z -> Pi": lambda v: 3.14159265358979,  # in the host's own floats of 15 digits
    "proc(z) local t; t := abs(z); t end": abs,
}


def expected_value(data, weights, procedure, ignore):
    x, w = sample(data, weights, ignore)
    return average(PROCEDURES[procedure], x, w)


def calls(random):
    def data_and_weights():
        n = random_size(random)
        return random_data(random, random_floats(random, n)), random_weights(random, n)

    def kind():
        return random_integer(random, [0, 0, 1, 2, 3, 4, -1, 2**62])

    def flag():
        return random_boolean(random)

    def origin():
        return random.choice([0, 1.0, -2.5, random.gauss(0, 1), Fraction(1, 3), Name("Pi"), NAN,
                              INFINITY, Name("z") if random.random() < 0.2 else 2])

    def percentile_pair():
        one = random.choice([0, 5, 10, 20, 25, 50, random.uniform(0, 100), Fraction(100, 3)])
        two = random.choice([100 - one, random.randint(0, 100), random.uniform(0, 100), 100, one])
        if random.random() < 0.06:
            two = random.choice([-1, 100.5, NAN, Name("z"), None, -1e-9])
            return random.choice([(one, two), (two, one)])
        return (one, two) if random.random() < 0.05 else sorted([one, two])

    def cut():
        data, weights = data_and_weights()
        return [data, *percentile_pair(), weights, flag(), kind()]

    def orders():
        if random.random() < 0.05:
            return random.choice([0, [1, 0], 1.5, "a", [2, 1.5], [1, [2]], None, 2**31, Name("z")])
        if random.random() < 0.5:
            return random.choice([1, 2, 3, 4, 17, 400])
        return [random.randint(1, 6) for _ in range(random.randint(0, 4))]

    def procedure():
        return Procedure(random.choice(list(PROCEDURES)))

    def with_sample(*rest):
        return lambda: [*data_and_weights(), *(argument() for argument in rest)]

    return calls_of(random, [
        ("STATS_VexelMean_HW", mean, with_sample(flag, kind), "expected 4 arguments, received: %1"),
        ("STATS_VexelTrimmedMean_HW", cut_mean(trimmed_of), cut,
         "expected 6 arguments, received: %1"),
        ("STATS_VexelWinsorizedMean_HW", cut_mean(winsorized_of), cut,
         "expected 6 arguments, received: %1"),
        ("STATS_VexelMoment_HW", moment, with_sample(orders, origin, flag),
         "VexelMoment expects 5 arguments, received: %1"),
        ("STATS_VexelAbsoluteDeviation_HW", absolute_deviation, with_sample(origin, flag),
         "VexelAbsoluteDeviation expects 4 arguments, received: %1"),
        ("STATS_VexelExpectedValue_HW", expected_value, with_sample(procedure, flag),
         "VexelExpectedValue expects 4 arguments, received: %1"),
    ])


if __name__ == "__main__":
    host.main(calls)
