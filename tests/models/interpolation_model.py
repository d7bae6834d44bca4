"""Integer quantile searches."""

import itertools
import math

from host import INFINITY, NAN, Name, Raised, integer32, main, real
from libm import divide, floor, truncated
from root_finding import (DISTINCT, FALLING, NOT_GREATER, NOT_LESS, OUT_OF_RANGE, Finder,
                          function_of, root_calls)

SPENT = "maximum number of iterations exceeded in discrete root finding."
FAILED = "DiscreteInterpolationHybrid was not able to converge to the specified root."


def point(value):
    return truncated(real(value))


def discrete(p, f, low, high, limit):
    if f(low) > p:
        return low
    if f(high) < p:
        raise Raised("root must be bracketed by left and right barriers.")
    if limit < 1:
        raise Raised(SPENT)
    passes = 0
    while high - low > 1:
        middle = int((low + high) / 2)
        if p <= f(middle):
            high = middle
        else:
            low = middle
        passes += 1
        if passes == limit:
            raise Raised(SPENT)
    return high


def discrete_search(p, f, least, greatest, low, high, limit, side):
    """The searches over the upper (side 1) or the lower end of a bracket low < high."""
    if low >= high:
        raise Raised(NOT_GREATER if side > 0 else NOT_LESS)
    if p < least or p > greatest:
        raise Raised(OUT_OF_RANGE)
    points = [(low, f(low)), (high, f(high))]
    if limit < 1:
        raise Raised(FAILED)
    if points[1][1] >= p:
        return discrete(p, f, low, high, limit)
    for used in itertools.count(1):
        (x0, f0), (x1, f1) = points
        slope = divide(f1 - f0, float(x1 - x0))
        end = greatest if side > 0 else least
        new = truncated(floor(divide(end - (f0 - x0 * slope), slope)))
        x, value = points[1] if side > 0 else points[0]
        if new == x:
            new = max(-2**31, min(2**31 - 1, x + side))
        elif new * side < x * side:
            raise Raised(FALLING)
        reached = f(new)
        if reached * side < value * side:
            raise Raised(FALLING)
        if reached == value or used == limit:
            raise Raised(FAILED)
        points = [(x, value), (new, reached)] if side > 0 else [(new, reached), (x, value)]
        # To the right a value that is no number goes on, to the left it ends the search.
        if reached >= p if side > 0 else not value < p:
            return discrete(p, f, points[0][0], points[1][0], limit - used)


def discrete_left(p, f, least, greatest, left, x0, limit):
    return discrete_search(p, f, least, greatest, left, x0, limit, 1)


def discrete_right(p, f, least, greatest, x0, right, limit):
    return discrete_search(p, f, least, greatest, x0, right, limit, -1)


def discrete_unbound(p, f, least, greatest, point1, point2, limit):
    if p < least or p > greatest:
        raise Raised(OUT_OF_RANGE)
    if point1 == point2:
        raise Raised(DISTINCT % "DiscreteInterpolationHybridUnbound")
    low = min(point1, point2)
    at_low, at_high = f(low), f(point2)
    if at_low == p or at_high == p:
        return low if at_low == p else point2
    search = discrete_right if p <= at_low else discrete_left
    return search(p, f, least, greatest, low, point2, limit)


SEARCH = [real, "f", real, real, point, point, integer32]
HYBRID = {"counted": "DiscreteInterpolationHybrid", "called": "DiscreteInterpolationHybridLeft",
          "continuous": False}
FINDERS = [
    Finder("DiscreteInterpolation", discrete, [real, "f", point, point, integer32],
           continuous=False),
    Finder("DiscreteInterpolationHybridLeft", discrete_left, SEARCH, **HYBRID),
    Finder("DiscreteInterpolationHybridRight", discrete_right, SEARCH, **HYBRID),
    Finder("DiscreteInterpolationHybridUnbound", discrete_unbound, SEARCH, **HYBRID)]

# F and bounds of its values.
FUNCTIONS = [
    ("if(x < {c}, 0, if(x > {c} + {s}, 1, (x - {c})/{s}))", 0.0, 1.0), ("x/{s}", -100.0, 100.0),
    ("if(x < {c}, 0, 1)", 0.0, 1.0), ("if(x < 0, 0, x/(abs(x) + {s}))", 0.0, 1.0),
    ("(x - {c})/(1 + abs(x - {c}))/2 + 0.5", 0.0, 1.0), ("x*x*x + x/10", -1e6, 1e6),
    ("floor(x/3)", -1000.0, 1000.0), ("if(x < {c}, x/100, x)", -1e4, 1e4), ("-x", -100.0, 100.0),
    ("x/2147483648", -1.0, 1.0), ("x*1000", -1e6, 1e6), ("x*x", 0.0, 1e4), ("0.5", 0.0, 1.0),
    ("if(x > {c}, -5, x/{s})", -9.0, 9.0), ("if(x < {c}, 5, x/{s})", -9.0, 9.0),
    ("if(x < {c}, 0, 1 - 1/(abs(x - {c}) + 10))", 0.0, 1.0),
    ("if(x < {c}, 1/(abs(x - {c}) + 10), 1)", 0.0, 1.0), ("x - {c}", -1.0, 1.0),
    ("if(x < {c}, (x - {c})/{s} + 0.4, 0.4)", 0.0, 1.0),
    ("if(x < {c}, 0.6, (x - {c})/{s} + 0.6)", 0.0, 1.0),
    ("if(x < {c}, undefined, x)", -99.0, 99.0), ("if(x > {c}, undefined, x)", -99.0, 99.0),
    ("if(x > {c}, infinity, x)", -99.0, 99.0), ("if(x < {c}, x - 1, x + 1)", -99.0, 99.0)]


def problem(random, finder):
    c, s = random.randint(-20, 20), random.choice([1, 3, 10, 40, 1000])
    text, least, greatest = random.choice(FUNCTIONS)
    f = text.format(c=f"({c})", s=s)
    low = random.choice([c, 0]) + random.choice([random.randint(-20, 20), random.randint(-2, 1)])
    high = low + random.choice([0, 1, 1, 2, 3, 5, 10, 50, 1000])
    if random.random() < 0.08:
        low, high = random.choice([
            (0, 2**31 - 1), (-2**31, 2**31 - 1), (2**31 - 8, 2**31 - 1), (-2**31, -2**31 + 8),
            (10**9, 2 * 10**9), (2.9, 7.9), (-2.9, -0.5), (-INFINITY, 3), (0, NAN), (0, 2.0**31)])
    elif random.random() < 0.15:
        low, high = high, low
    root = random.choice([random.randint(-80, 80), point(high) + random.randint(1, 40),
                          (point(low) + point(high)) // 2])
    p = function_of(f)(float(root)) + random.choice([0, 0, 0, 1e-9, 0.25])
    if random.random() < 0.4:
        p = random.choice([0.5, least, greatest, random.uniform(least, greatest),
                           round(p, 2) if math.isfinite(p) else p])
    values = random.choice([(least, greatest)] * 5 + [
        (-INFINITY, INFINITY), (least, INFINITY), (-INFINITY, greatest), (0.0, 1.0)])
    limit = random.choice([100, 100, 100, random.randint(-1, 12)])
    values = [] if finder.worker is discrete else [*values]
    return (f, "0"), [p, Name("f"), *values, low, high, limit]


if __name__ == "__main__":
    main(lambda random: root_calls(random, FINDERS, problem))
