"""Counts, cumulative values, doubles and binned grids of samples."""

from math import isinf, isnan

from arrays import NUMBERS, Source, extents
from host import (INFINITY, NAN, Array, Name, Raised, boolean, integer32, integer64, main, real,
                  vector as floats)
from libm import divide
from samples import calls_of, random_boolean, random_integer, sample, vector


def count(data, weights, ignore):
    x, w = sample(data, weights)
    present = integer64(ignore) != 1
    return counted(x, w, lambda v, u: present or not (isnan(v) or isnan(u)))


def count_missing(data, weights):
    return counted(*sample(data, weights), lambda v, u: isnan(v) and not isnan(u))


def counted(x, w, belongs):
    if w is None:
        return sum(belongs(v, 1.0) for v in x)
    total = 0.0
    for v, u in zip(x, w):
        total += u if belongs(v, u) else 0.0
    return total


def cumulative(data, weights, output, product):
    x, w = sample(data, weights)
    if not isinstance(output, Array):
        raise Raised("invalid 3rd argument, expected rtable, received: %1", output)
    if len(output.bounds) != 1:
        raise Raised("invalid 3rd argument, expected one-dimensional rtable, received: %1", output)
    result = output
    if not output.elements:
        result = floats([0.0] * len(x), data.bounds[0][0])
    elif len(output.elements) < len(x):
        raise Raised("output array has insufficient number of elements: %1", output)
    elif output.datatype != "float[8]":
        raise Raised("output array has invalid data type: %1", output)
    elif output.storage != "rectangular":
        raise Raised("output array has invalid storage type: %1", output)
    product = integer64(product)
    values = []
    for i, v in enumerate(x):
        if i > 0 and product:
            v = values[-1] * v
        v = v if w is None else v * w[i]
        values.append(v + values[-1] if i > 0 and not product else v)
    return Array("float[8]", result.bounds, values + result.elements[len(x):], result.order)


def evaluate_to_float(data):
    x = vector(data)
    lower = data.bounds[0][0]
    return Array("float[8]", [(lower, lower + len(x) - 1)], x, data.order)


def discretize(data, points, a, b, scale, quiet, weights):
    points, a, b, scale = integer32(points), real(a), real(b), real(scale)
    boolean(quiet)
    if not a < b or isinf(a) or isinf(b):
        raise Raised("left boundary must be smaller than right boundary, received: %1 and %2", a, b)
    if points < 1:
        raise Raised("number of grid points must be positive, received: %1", points)
    x, w = sample(data, weights)
    grid = [0.0] * (points + 1)
    total = 0.0
    for i, v in enumerate(x):
        if a <= v <= b:
            weight = 1.0 if w is None or isnan(w[i]) else w[i]
            total += weight
            at = min(points - 1.0, max(0.0, (v - a) * divide(points - 1, b - a)))
            left = int(at)
            if at == left:
                grid[left] += weight
            else:
                grid[left] += (left + 1.0 - at) * weight
                grid[left + 1] += (1.0 - (left + 1.0) + at) * weight
    factor = divide(scale or divide(1.0, divide(b - a, points)), total)
    return floats([v * factor for v in grid[:points]])


def calls(random):
    source = Source(random)

    def data():
        return source.sample(wrong=source.choice([0.0] * 6 + [0.1]))

    def cumulative_arguments():
        sampled = data()
        n = extents(sampled[0])[0]
        output = source.array(size=0)
        if source.chance(0.6):
            output = source.array("float[8]", size=n + source.choice([0, 0, 1, 3]))
        elif source.chance(0.3):
            output = source.data(size=n)
        elif source.chance(0.2) and n > 0:
            output = source.array("float[8]", size=n - 1)
        return [*sampled, output, random_integer(random, [0, 0, 1, 1, -1, 2])]

    def boundary(*usual):
        if source.chance(0.1):
            return source.choice([NAN, INFINITY, -INFINITY, Name("x"), None, *NUMBERS])
        return source.choice(usual)

    def discretize_arguments():
        values, weights = data()
        points = random_integer(random, [1, 2, 3, 4, 5, 8, 16, 33, 0, -2, 2**31])
        return [values, points, boundary(-3, 0, -1.5, 0.0, -2.75), boundary(4, 3, 3.0, 2.5, 7.25),
                boundary(0, 0, 0.0, 1, 2.5, -1.0), random_boolean(random), weights]

    return calls_of(random, [
        ("STATS_VexelCount_HW", count,
         lambda: [*data(), random_integer(random, [0, 1, 1, 2, -1])],
         "expected 3 arguments, received: %1"),
        ("STATS_VexelCountMissing_HW", count_missing, data,
         "expected 2 arguments, received: %1"),
        ("STATS_VexelCumulative_HW", cumulative, cumulative_arguments,
         "expected 4 arguments, received: %1"),
        ("STATS_VexelEvaluateToFloat_HW", evaluate_to_float, lambda: data()[:1],
         "expected one argument, received: %1"),
        ("STATS_VexelDiscretize_HW", discretize, discretize_arguments,
         "expected 7 arguments, received: %1")])


if __name__ == "__main__":
    main(calls)
