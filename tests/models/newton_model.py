"""Newton-Raphson root finders: plain with soft barriers, safeguarded, and with a search."""

import itertools

from host import Name, Raised, integer32, main, real
from libm import divide
from root_finding import FALLING, Finder, Problem, root_calls

NOT_BETWEEN = "the specified initial point must be between the specified barriers"
FAILED = "%s root-finding method failed to converge."


def newton(target, f, df, x0, left, right, tol, limit):
    def relative(x, y):
        return divide(abs(x - y), abs(y) + abs(x))

    if left is not None and x0 < left or right is not None and x0 > right:
        raise Raised(NOT_BETWEEN)
    x, gx, d = x0, f(x0) - target, df(x0)
    if limit < 1:
        return 0.0
    for step in itertools.count(1):
        if d == 0:
            for barrier in (left, right):
                if d == 0 and barrier is not None:
                    x = (x + barrier) * 0.5
                    d = df(x)
            if d == 0:
                raise Raised(FAILED % "NewtonRaphson")
            gx = f(x)
        new = x - divide(gx, d)
        if left is not None and new < left:
            new = (left + x) * 0.5
        if right is not None and new > right:
            new = (right + x) * 0.5
        value, d = f(new), df(new)
        if relative(new, x) < tol:
            reached = [b for b in (left, right) if b is not None and relative(new, b) < tol]
            return reached[0] if reached else new
        if step == limit:
            return new
        x, gx = new, value - target


def safeguarded(target, f, df, x, gx, d, low, high, tol, passes, failure):
    """Newton steps inside a bracket, bisections where they would leave it or hardly narrow it."""
    dx = before = abs(high - low)
    for _ in range(passes):
        if (((x - high) * d - gx) * ((x - low) * d - gx) > 0
                or abs(2 * gx) > abs(before * d)):
            before, dx = dx, (high - low) * 0.5
            x = low + dx
            if x == low:
                return x
        elif d == 0:
            if gx == 0:
                return x
            raise Raised(failure)
        else:
            before, dx = dx, gx / d
            if x - dx == x:
                return x
            x -= dx
        if abs(dx) < tol:
            return x
        gx, d = f(x) - target, df(x)
        if gx < 0:
            low = x
        else:
            high = x
    return x


def newton_safe(target, f, df, x0, lower, upper, tol, limit):
    if not lower <= x0 <= upper:
        raise Raised(NOT_BETWEEN)
    fl, fh = f(lower) - target, f(upper) - target
    if fl > 0 and fh > 0 or fl < 0 and fh < 0:
        raise Raised("root must be bracketed by lower and upper barriers")
    if fl == 0 or fh == 0:
        return lower if fl == 0 else upper
    gx, d = f(x0) - target, df(x0)
    if gx == 0:
        return x0
    low, high = (lower, upper) if fl < 0 else (upper, lower)
    return safeguarded(target, f, df, x0, gx, d, low, high, tol, limit,
                       FAILED % "NewtonRaphsonSafe")


def newton_hybrid(target, f, df, x0, least, greatest, left, right, tol, limit):
    failure = FAILED % "NewtonRaphsonHybrid"
    if left is not None and x0 < left or right is not None and x0 > right:
        raise Raised(NOT_BETWEEN)
    if target <= least or target >= greatest:
        raise Raised("the specified approximation point must be strictly between the specified "
                     "bounds")
    used = 0
    if left is None or right is None:
        gx = f(x0) - target
        if gx == 0:
            return x0
        rightward = gx < 0
        if rightward:
            left = x0 if left is None or x0 > left else left
        else:
            right = x0 if right is None or x0 < right else right
        x = x0
        while left is None or right is None:
            d = df(x) if used < limit else 0
            if d == 0:
                raise Raised(failure)
            new = x - gx / d
            if new < x if rightward else new > x:
                raise Raised(FALLING)
            value = f(new)
            found = value > target if rightward else value < target
            if value > target:
                right = new
            elif value < target:
                left = new
            gx = value - (greatest if rightward else least)
            x = new
            used += 0 if found else 1
    x = (left + right) * 0.5
    gx, d = f(x) - target, df(x)
    if gx == 0:
        return x
    return safeguarded(target, f, df, x, gx, d, left, right, tol, limit - used, failure)


FINDERS = [
    Finder("NewtonRaphson", newton,
           [real, "f", "df", real, "barrier", "barrier", real, integer32]),
    Finder("NewtonRaphsonSafe", newton_safe,
           [real, "f", "df", real, real, real, real, integer32]),
    Finder("NewtonRaphsonHybrid", newton_hybrid,
           [real, "f", "df", real, real, real, "barrier", "barrier", real, integer32])]


def problem(random, finder):
    p = Problem(random)
    points = [p.left, p.right]
    if finder.worker is not newton_safe:
        flags = [random.random() < 0.5, random.random() < 0.5]
        points = [value if flag else random.choice([value, Name("y")])
                  for flag, value in zip(flags, points)]
        points = [flags[0], points[0], flags[1], points[1]]
    values = [*p.values] if finder.worker is newton_hybrid else []
    factor = random.choice([p.factor, p.factor, 0.5, 1e-3])
    return (p.f, p.df), [p.target, Name("f"), Name("df"), p.between, *values, *points, factor,
                         p.limit]


if __name__ == "__main__":
    main(lambda random: root_calls(random, FINDERS, problem))
