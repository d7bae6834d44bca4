"""Rejection from a piecewise linear envelope of a density that host procedures give."""

import math

import libm
from generators_model import AliasUrn
from host import NAN, Array, Procedure, Raised, boolean
from libm import divide
from samples import is_numeric


class Endless(Exception):
    """A sample that takes too long to be worth a call."""


class Unusable(Exception):
    """Nothing can be drawn from this description."""


class Record:
    """The procedures of one statement and their calls; the n-th and all after it may fail."""

    accepts = staticmethod(math.isfinite)
    refusal = "unable to evaluate %1 to floating-point"

    def __init__(self, kept=True, fails_at=None):
        self.kept = kept
        self.fails_at = fails_at if kept else None
        self.functions = {}
        self.calls = []

    def procedure(self, name, body):
        """Arithmetic in 64 bits, for the hardware if nothing is kept."""
        text = f"x -> {body}"
        if self.kept:
            text = f'proc(x) n := n + 1; T[n] := ["{name}", x]; evalhf({body}) end'
            if self.fails_at:
                fails = f'if n >= {self.fails_at} then error("stop %1", x) end; '
                text = text.replace("evalhf", fails + "evalhf")
        function = function_of(body)
        self.functions[text] = lambda x: self.evaluate(name, function, x)
        return Procedure(text)

    def evaluate(self, name, function, x):
        """A call that fails is made again, and what happens then passes."""
        for last in False, True:
            if self.kept:
                self.calls.append([name, x])
            if self.fails_at and len(self.calls) >= self.fails_at:
                if last:
                    raise Raised("stop %1", x)
                continue
            value = function(x)
            if self.accepts(value):
                return value
        raise Raised(self.refusal, value)


def function_of(body):
    """A procedure's body in Python, whose expressions are the host's but for the conditional."""
    names = {"undefined": NAN, "exp": libm.exp, "choose": lambda condition, x, y:
             x if condition else y}
    return eval(f"lambda x: float({body.replace('if(', 'choose(')})", names)


class Element:
    """Bounds of h on [x0, x1]: the tangents at the ends and the chords of the halves."""

    def __init__(self, h, x0, x1, y0, y1, d0, d1):
        self.ends = (x0, x1, y0, y1, d0, d1)
        xm = divide(-(y0 - d0 * x0 - y1 + d1 * x1), d0 - d1) if d0 != d1 else NAN
        if not x0 < xm < x1:
            big, small = max(abs(d0), abs(d1)), min(abs(d0), abs(d1))
            if big * 0.5 > small >= 10.0**7.5:
                raise Unusable
            xm = (x0 + x1) * 0.5
        ym = h(xm)
        self.xm = xm
        chords = (divide(ym - y0, xm - x0), divide(y1 - ym, x1 - xm))
        self.upper, self.lower = chords, (d0, d1)
        if d0 > chords[0]:
            self.upper, self.lower = self.lower, self.upper
        top = y0 + (xm - x0) * self.upper[0]
        self.rises = (not top <= y0, not y1 <= top)
        self.areas = []
        area = 0.0
        for width, low, high in (xm - x0, *sorted_by(self.rises[0], y0, top)), \
                                (x1 - xm, *sorted_by(self.rises[1], top, y1)):
            self.areas += [area + width * low, area + width * low + (high - low) * 0.5 * width]
            area = self.areas[-1]

    def bound(self, x, slopes):
        x0, x1, y0, y1, _, _ = self.ends
        return y1 + (x - x1) * slopes[1] if x >= self.xm else y0 + (x - x0) * slopes[0]

    def draw(self, stream):
        """A point under the upper bound: in a rectangle, or in the triangle on it."""
        area = stream.double01() * self.areas[3]
        u = stream.double01()
        piece = next((i for i in range(3) if self.areas[i] >= area), 3)
        half = piece // 2
        if piece % 2 == 1:
            u = (max if self.rises[half] else min)(u, stream.double01())
        low, high = [(self.ends[0], self.xm), (self.xm, self.ends[1])][half]
        return low + (high - low) * u


def sorted_by(rises, left, right):
    return (left, right) if rises else (right, left)


class Envelope:
    def __init__(self, record, setup):
        if not isinstance(setup, list) or len(setup) != 5:
            raise Raised("expected: list of size 5, received: %1", setup)
        h, h1, points, maximum, flag = setup
        if type(maximum) is not int or not -2**31 <= maximum < 2**31:
            raise Raised("invalid maximum number of envelope elements, expected: positive integer, "
                         "received %1", maximum)
        boolean(flag)
        points = base_points(points)
        self.h, self.h1 = record.functions[h], record.functions[h1]
        self.maximum = maximum
        self.elements = []
        for x0, x1 in zip(points, points[1:]):
            y0, d0, y1, d1 = self.h(x0), self.h1(x0), self.h(x1), self.h1(x1)
            self.elements.append(Element(self.h, x0, x1, y0, y1, d0, d1))
        self.choose()

    def choose(self):
        weights = [e.areas[3] for e in self.elements]
        self.urn = AliasUrn(weights) if weights else None

    def draw(self, stream):
        if self.urn is None:
            raise Raised("no weights to draw an index from")
        for _ in range(500):
            i = self.urn.draw(stream)
            element = self.elements[i]
            x = element.draw(stream)
            t = stream.double01() * element.bound(x, element.upper)
            lower = element.bound(x, element.lower)
            if lower > t:
                return x
            hx = self.h(x)
            if (t > hx or lower < 0.9 * hx) and len(self.elements) < self.maximum:
                self.split(i, x, hx, self.h1(x))
            if hx > t:
                return x
        raise Endless

    def split(self, i, x, y, d):
        x0, x1, y0, y1, d0, d1 = self.elements[i].ends
        try:
            self.elements[i] = Element(self.h, x0, x, y0, y, d0, d)
            self.elements.append(Element(self.h, x, x1, y, y1, d, d1))
        except Unusable:
            raise Raised("could not evaluate PDF to floating point") from None
        self.choose()


def base_points(points):
    if isinstance(points, list):
        for x in points:
            if x is not None and not is_numeric(x):
                raise Raised("a number expected, received %1", x)
        return [float(x) for x in points if x is not None]
    if not isinstance(points, Array) or len(points.bounds) != 1:
        raise Raised("expected base points as list or one-dimensional array, received %1", points)
    if points.datatype not in ("float[4]", "float[8]", "anything"):
        raise Raised("expected array of floats, received %1", points)
    for x in points.elements:
        if not is_numeric(x):
            raise Raised("expected vexel float, received %1", x)
    return [float(x) for x in points.elements]
