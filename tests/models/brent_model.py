"""Brent's method and the searches for its bracket."""

import itertools

from host import Name, Raised, integer32, main, real
from libm import divide
from root_finding import (DISTINCT, FALLING, NOT_GREATER, NOT_LESS, OUT_OF_RANGE, Finder, Problem,
                          root_calls)

SPENT = "maximum number of iterations exceeded in Brent root finding."
FAILED = "BrentMethodHybrid was not able to converge on the specified root."


def brent(target, f, a, b, tol, limit):
    def one_sign(u, v):
        return u > 0 and v > 0 or u < 0 and v < 0

    fa, fb = f(a) - target, f(b) - target
    if one_sign(fa, fb):
        raise Raised("root must be bracketed by lower and upper boundaries.")
    z, fz, d, e = b, fb, 0.0, 0.0
    for _ in range(limit):
        if one_sign(fb, fz):
            z, fz, d, e = a, fa, b - a, b - a
        if abs(fz) < abs(fb):
            a, fa, b, fb, z, fz = b, fb, z, fz, b, fb
        tol1 = 2 * tol * abs(b) + 0.5 * tol
        xm = 0.5 * (z - b)
        if abs(xm) < tol1 or fb == 0:
            return b
        step = None
        if abs(e) >= tol1 and abs(fa) > abs(fb):
            s = fb / fa
            if a == z:
                p, q = 2 * xm * s, 1 - s
            else:
                q, r = divide(fa, fz), divide(fb, fz)
                p = s * (2 * xm * q * (q - r) - (b - a) * (r - 1))
                q = (q - 1) * (r - 1) * (s - 1)
            q = -q if p > 0 else q
            if 2 * abs(p) < min(3 * xm * q - abs(tol1 * q), abs(e * q)):
                step = divide(abs(p), q)
        d, e = (xm, xm) if step is None else (step, d)
        a, fa = b, fb
        b += d if abs(d) > tol1 else -tol1 if xm < 0 else tol1
        fb = f(b) - target
    raise Raised(SPENT)


def brent_search(target, f, least, greatest, barrier, x0, tol, limit, side):
    """Extends a bracket from a barrier over x0, to the right (side 1) or to the left (-1)."""
    if not (x0 - barrier) * side > 0:
        raise Raised(NOT_GREATER if side > 0 else NOT_LESS)
    if target < least or target > greatest:
        raise Raised(OUT_OF_RANGE)
    near, far = (least, greatest) if side > 0 else (greatest, least)
    x, value = x0, f(x0)
    if limit < 1:
        raise Raised(FAILED)
    if value * side >= target * side:
        return brent(target, f, *sorted((barrier, x0)), tol, limit)
    for used in itertools.count(1):
        (x0, f0), (x1, f1) = [(barrier, near), (x, value)][::side]
        slope = divide(f1 - f0, x1 - x0)
        new = divide(far - (f0 - x0 * slope), slope)
        if new * side < x * side:
            raise Raised(FALLING)
        reached = f(new)
        if reached * side < value * side:
            raise Raised(FALLING)
        if reached == value or used == limit:
            raise Raised(FAILED)
        if reached * side >= target * side:
            return brent(target, f, *((x, new) if side > 0 else (new, x)), tol, limit - used)
        barrier, near, x, value = x, value, new, reached


def brent_left(target, f, least, greatest, left, x0, tol, limit):
    return brent_search(target, f, least, greatest, left, x0, tol, limit, 1)


def brent_right(target, f, least, greatest, x0, right, tol, limit):
    return brent_search(target, f, least, greatest, right, x0, tol, limit, -1)


def brent_unbound(target, f, least, greatest, point1, point2, tol, limit):
    if point1 == point2:
        raise Raised(DISTINCT % "BrentMethodHybridUnbound")
    low, high = (point1, point2) if point1 < point2 else (point2, point1)
    at_low, at_high = f(low), f(high)
    if at_low == target or at_high == target:
        return low if at_low == target else high
    if target > at_low:
        return brent_left(target, f, at_low, greatest, low, high, tol, limit)
    return brent_right(target, f, least, at_high, low, high, tol, limit)


SEARCH = [real, "f", real, real, real, real, integer32, integer32]
FINDERS = [
    Finder("BrentMethod", brent, [real, "f", real, real, integer32, integer32]),
    Finder("BrentMethodHybridLeft", brent_left, SEARCH, rounds=False),
    Finder("BrentMethodHybridRight", brent_right, SEARCH, called="BrentMethodHybridUnbound",
           rounds=False),
    Finder("BrentMethodHybridUnbound", brent_unbound, SEARCH, rounds=False)]


def problem(random, finder):
    p = Problem(random)
    points = [p.left, p.right]
    if random.random() < (0.5 if finder.worker in (brent, brent_unbound) else 0.05):
        points.reverse()
    values = [] if finder.worker is brent else [*p.values]
    return (p.f, p.df), [p.target, Name("f"), *values, *points, p.factor, p.limit]


main(lambda random: root_calls(random, FINDERS, problem))
