"""Kernel density estimates, the default ends of their grids, and the Shapiro-Wilk test."""

import math
from fractions import Fraction
from statistics import NormalDist

from counts_model import discretize
from host import (INFINITY, NAN, Name, Near, Raised, Sequence, boolean, call, expected,
                  integer32, main, real, to_text, vector as floats)
from samples import (calls_of, random_array, random_boolean, random_data, random_floats,
                     random_integer, random_size, random_weights, sample, vector)

# Of each kernel of unit variance: half its width, and with that for the unit its moment of order
# 2k and its transform.
KERNELS = [
    (math.sqrt(6), lambda k: 2 / ((2 * k + 1) * (2 * k + 2)),
     lambda x: 2 * (1 - math.cos(x)) / x**2),
    (math.sqrt(3), lambda k: 1 / (2 * k + 1), lambda x: math.sin(x) / x),
    (math.sqrt(5), lambda k: 3 / ((2 * k + 1) * (2 * k + 3)),
     lambda x: 3 * (math.sin(x) - x * math.cos(x)) / x**3),
    (math.sqrt(7), lambda k: 15 / ((2 * k + 1) * (2 * k + 3) * (2 * k + 5)),
     lambda x: 15 * ((3 - x**2) * math.sin(x) - 3 * x * math.cos(x)) / x**5)]


def transform(code, s):
    if code == 0:
        return math.exp(-s * s / 2)
    width, moment, closed_form = KERNELS[code - 1]
    x = s * width
    if abs(x) > 3:
        return closed_form(x) if abs(x) < 1e30 else 0.0
    return sum((-x * x)**k * moment(k) / math.factorial(2 * k) for k in range(25))


def estimate(data, weights, kernel, bandwidth, points, quiet, a, b):
    kernel, bandwidth, points, quiet = (integer32(kernel), real(bandwidth), integer32(points),
                                        boolean(quiet))
    a, b = real(a), real(b)
    x = discretize(data, points, a, b, 0.0, quiet, weights).elements
    if not 0 <= kernel < 5:
        raise Raised("invalid kernel, received: %1", kernel)
    if not all(map(math.isfinite, x)):
        return floats([NAN] * points)

    def turn(k, j):
        angle = 2 * math.pi * (j * k % points) / points
        return complex(math.cos(angle), math.sin(angle))

    step = 2 * math.pi * bandwidth / (b - a)
    terms = [sum(x)]
    for k in range(1, points // 2 + 1):
        term = sum(v * turn(-k, j) for j, v in enumerate(x))
        # The middle element is a real part, for an odd number of points that of the last term.
        if k < points // 2:
            term *= transform(kernel, k * step)
        else:
            term = complex(term.real * transform(kernel, points * step / 2), term.imag)
        terms.append(term)
    if points == 1:
        terms[0] *= transform(kernel, step / 2)

    def value(j):
        total = terms[0]
        for k in range(1, len(terms)):
            total += (terms[k] * turn(k, j)).real * (1 if 2 * k == points else 2)
        return total / points
    tolerance = 1e-12 * max(map(abs, x))
    return floats([Near(value(j), tolerance) for j in range(points)])


def bounds(*arguments):
    if len(arguments) > 1:
        raise Raised("expected 1 arguments, received: %1", Sequence(arguments))
    if arguments in ((), (None,)):
        raise Raised("index %1 out of range", 1)
    x = vector(arguments[0])
    if not x:
        raise Raised("invalid input - dataset must contain at least one element.")
    least = greatest = x[0]
    for v in x:
        least = v if v < least else least
        greatest = v if v > greatest else greatest
    return [least, greatest]


def polynomial(x, *coefficients):
    return sum(c * x**i for i, c in enumerate(coefficients))


def coefficients(n):
    """Of the ordered sample in W."""
    if n == 3:
        return [-math.sqrt(0.5), 0.0, math.sqrt(0.5)]
    scores = [NormalDist().inv_cdf((i - 0.375) / (n + 0.25)) for i in range(1, n + 1)]
    squares = sum(m * m for m in scores)
    u = 1 / math.sqrt(n)
    outer = [scores[-1] / math.sqrt(squares)
             + polynomial(u, 0, 0.221157, -0.147981, -2.07119, 4.434685, -2.706056)]
    if n > 5:
        outer.append(scores[-2] / math.sqrt(squares)
                     + polynomial(u, 0, 0.042981, -0.293762, -1.752461, 5.682633, -3.582633))
    k = len(outer)
    factor = math.sqrt((squares - 2 * sum(m * m for m in scores[:k]))
                       / (1 - 2 * sum(a * a for a in outer)))
    return [-a for a in outer] + [m / factor for m in scores[k:n - k]] + outer[::-1]


def shapiro_wilk(*arguments):
    if len(arguments) != 3:
        raise Raised("VexelShapiroWilk expects 3 arguments, received: %1", Sequence(arguments))
    data, weights, flag = arguments
    x, _ = sample(data, weights)
    boolean(flag)
    n = len(x)
    if n < 3:
        raise Raised("the Shapiro-Wilk test needs at least three elements", None)
    if not all(map(math.isfinite, x)):
        raise Raised("the Shapiro-Wilk test takes no missing or infinite elements", None)
    if min(x) == max(x):
        raise Raised("all elements for the Shapiro-Wilk test are equal", None)
    x = sorted(map(Fraction, x))
    a = list(map(Fraction, coefficients(n)))
    mean = sum(x) / n
    products = sum(c * v for c, v in zip(a, x))**2
    squares = sum((v - mean)**2 for v in x) * sum(c * c for c in a)
    complement = float(max(Fraction(0), 1 - products / squares))
    w = Near(1 - complement, 1e-13)
    if n == 3:
        p = 6 / math.pi * (math.asin(math.sqrt(max(w, 0.75))) - math.asin(math.sqrt(0.75)))
        return [w, Near(p, 1e-7)]
    y = math.log(complement)
    if n <= 11:
        shift = polynomial(n, -2.273, 0.459)
        if y >= shift:
            return [w, 1e-99]
        y = -math.log(shift - y)
        mean = polynomial(n, 0.544, -0.39978, 0.025054, -6.714e-4)
        deviation = math.exp(polynomial(n, 1.3822, -0.77857, 0.062767, -0.0020322))
    else:
        size = math.log(n)
        mean = polynomial(size, -1.5861, -0.31082, -0.083751, 0.0038915)
        deviation = math.exp(polynomial(size, -0.4803, -0.082676, 0.0030302))
    p = math.erfc((y - mean) / deviation / math.sqrt(2)) / 2
    return [w, Near(p, 1e-9 * p)]


def sorted_in_place(data, weights, flag):
    """The test's result and the data after it."""
    result = shapiro_wilk(data, weights, flag)
    if data.datatype == "float[8]" and data.storage == "rectangular":
        data = floats(sorted(data.elements), data.bounds[0][0], order=data.order)
    return [result, data]


def calls(random):
    kinds = ["ties", "plain", "positive", "missing", "zeros"]

    def estimate_arguments():
        n = random_size(random)
        data = random_data(random, random_floats(random, n, kinds))
        kernel = random_integer(random, [0, 1, 2, 3, 4] * 5 + [-1, 5])
        a, b = random.choice([(-4.0, 4.0), (-3, 5), (0.0, 2.5), (-1.5, 3.25), (0, 10), (9, 50)] * 5
                             + [(2, 1), (1, 1.0), (0, INFINITY), (-INFINITY, 0), (NAN, 1)])
        return [data, random_weights(random, n), kernel,
                random.choice([0.2, 1, 0.5, 0, -0.7, 1e-3, 3.5, 40.0, 1e200] * 3 + [Name("h")]),
                random_integer(random, [1, 2, 3, 4, 5, 8, 11, 16, 32, 45] * 3 + [0, -3, 2**31]),
                random_boolean(random), a, b]

    estimates = calls_of(random, [("STATS_VexelKernelDensity_HW", estimate, estimate_arguments,
                                   "expected 8 arguments, received: %1")])
    while True:
        yield next(estimates)
        yield next(estimates)

        x = random_floats(random, random_size(random))
        arguments = [random_data(random, x)] * random.choice([1] * 20 + [0, 2])
        if arguments != [[1, 2]]:  # whose elements would be the arguments
            yield call("STATS_VexelKernelBounds_HW", *arguments), expected(bounds, *arguments)

        x = random_floats(random, random_size(random), kinds + ["infinite"])
        data = random_data(random, x)
        rest = [random_weights(random, len(x), empty=0.8), random_boolean(random)]
        arguments = [data, *rest][:random.choice([3] * 20 + [2])]
        yield call("STATS_VexelShapiroWilk_HW", *arguments), expected(shapiro_wilk, *arguments)
        data = random_array(random, x)
        if len(data.bounds) == 1:
            tested = call("STATS_VexelShapiroWilk_HW", Name("d"), *rest)
            yield f"d := {to_text(data)}: [{tested}, d]", expected(sorted_in_place, data, *rest)


if __name__ == "__main__":
    main(calls)
