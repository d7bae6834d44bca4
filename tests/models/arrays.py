"""Arrays in their own element type: how they are read, and random ones."""

import math
from fractions import Fraction

from host import INFINITY, NAN, Array, Name, Raised, expected, float32, real
from samples import random_size, random_weights

INTEGER_BITS = {"integer[1]": 8, "integer[2]": 16, "integer[4]": 32, "integer[8]": 64}
REAL_TYPES = ["anything", *INTEGER_BITS, "float[8]", "float[4]"]
TYPES = [*REAL_TYPES, "complex", "complex[8]"]

NUMBERS = [0, 1, 2, -1, 2**53 + 1, 2**63 - 1, -2**63, 2**100, 0.0, -0.0, 1.0, 2.0, 0.5, -1.5, NAN,
           INFINITY, -INFINITY, 5e-324, 1.7976931348623157e308, Fraction(1, 2), Fraction(-7, 3)]
CONSTANTS = [Name("Pi"), Name("sqrt(2)")]
NO_NUMBERS = [Name("x"), "text", True, None]


def to_double(value):
    """The double of a host value, None if it has none."""
    number = expected(real, value)
    return None if isinstance(number, Raised) else number


def require_vector(value, message="invalid data sample, expected: one-dimensional array, "
                                  "received %1"):
    if not isinstance(value, Array) or len(value.bounds) != 1:
        raise Raised(message, value)


def extents(array):
    if not isinstance(array, Array):
        return [3]  # as good as any
    return [max(0, upper - lower + 1) for lower, upper in array.bounds]


def like(array, elements, lower=1):
    """A vector of the array's settings."""
    return Array(array.datatype, [(lower, lower + len(elements) - 1)], elements, array.order,
                 array.storage)


class Source:
    """Random arguments, some of them wrong."""

    def __init__(self, random):
        self.random = random
        self.choice = random.choice
        self.randint = random.randint

    def chance(self, probability):
        return self.random.random() < probability

    def number(self):
        """A double."""
        if self.chance(0.6):
            return float(self.randint(-3, 4))
        if self.chance(0.3):
            return self.choice([NAN, INFINITY, -INFINITY, 0.0, -0.0, 5e-324, 1e308])
        return self.random.uniform(-5.0, 5.0)

    def element(self, datatype, wrong=0.0):
        """An element of an array; wrong is the chance of one that has no real value."""
        is_wrong = self.chance(wrong)
        if datatype == "anything":
            some = NO_NUMBERS if is_wrong else NUMBERS + CONSTANTS
            return self.randint(-2, 4) if self.chance(0.6) else self.choice(some)
        if datatype == "complex":
            imaginary = [1, 2.5, NAN, Fraction(1, 2)] if is_wrong else [0, 0, 0, 0.0, -0.0]
            return self.choice(NUMBERS), self.choice(imaginary)
        if datatype == "complex[8]":
            imaginary = [1.0, NAN, 5e-324] if is_wrong else [0.0, 0.0, -0.0]
            return complex(self.number(), self.choice(imaginary))
        if datatype in INTEGER_BITS:
            most = 2**(INTEGER_BITS[datatype] - 1)
            if self.chance(0.7):
                return self.randint(-3, 4)
            return self.choice([-most, -most + 1, most - 1, self.randint(-most, most - 1)])
        return self.number() if datatype == "float[8]" else float32(self.number())

    def array(self, datatype=None, size=None, wrong=None, storage=None, dimensions=1):
        datatype = datatype or self.choice(TYPES)
        wrong = self.choice([0.0, 0.0, 0.0, 0.2]) if wrong is None else wrong
        extent = [random_size(self.random) if size is None else size]
        extent += [self.randint(0, 3) for _ in range(dimensions - 1)]
        lowers = [self.choice([1, 1, 0, -3, 100]) for _ in extent]
        return Array(datatype, [(lo, lo + n - 1) for lo, n in zip(lowers, extent)],
                     [self.element(datatype, wrong) for _ in range(math.prod(extent))],
                     order=self.choice(["column", "column", "row"]),
                     storage=storage or self.choice(["rectangular"] * 3 + ["sparse"]))

    def data(self, **options):
        """An array, now and then none or one of other dimensions."""
        if self.chance(0.03):
            return self.choice([3, Name("x"), "text", 1.5])
        if self.chance(0.03):
            return self.array(**{**options, "wrong": 0.0, "dimensions": self.choice([2, 3])})
        return self.array(**options)

    def sample(self, **options):
        """Data and weights."""
        data = self.data(**options)
        return [data, random_weights(self.random, extents(data)[0])]
