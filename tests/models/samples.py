"""Arguments of entry points on samples: how they are read, and random ones."""

import math
from fractions import Fraction

from host import (INFINITY, NAN, Array, Name, Raised, Sequence, boolean, call, expected, float32,
                  real, to_text)


# How the library reads a sample.

def is_numeric(value):
    return isinstance(value, (int, float, Fraction)) and not isinstance(value, bool)


def vector(array):
    """The values along the first dimension, read where they lie if they are 64-bit floats.

    Of more dimensions the block's first values count; a conversion puts it in column order.
    """
    if not isinstance(array, Array):
        raise Raised("invalid data sample, expected: rtable, received %1", array)
    if not array.elements:
        return []
    n = array.bounds[0][1] - array.bounds[0][0] + 1
    in_place = array.datatype == "float[8]" and array.storage == "rectangular"
    step = 1 if in_place and array.order == "row" else len(array.elements) // n
    return [_element(e) for e in array.elements[:n * step:step]]


def _element(e):
    if isinstance(e, complex):
        e = (e.real, e.imag)
    if isinstance(e, tuple):
        if e[1] != 0 or not is_numeric(e[0]):
            raise Raised("unable to evaluate %1 to floating-point", e)
        return float(e[0])
    return real(e)


def sample(data, weights, ignore=False):
    """Points and weights (None without); ignored are pairs where one is missing."""
    x, w = vector(data), vector(weights)
    if w and len(w) != len(x):
        raise Raised("vector of points and vector of weights are expected to have the same size, "
                     "received %1, %2", data, weights)
    pairs = list(zip(x, w or [1.0] * len(x)))
    if boolean(ignore):
        pairs = [p for p in pairs if not any(map(math.isnan, p))]
    return [p[0] for p in pairs], [p[1] for p in pairs] if w else None


# Random arguments.

def random_floats(random, n, kinds=("ties", "plain", "positive", "missing", "infinite", "large")):
    kind = random.choice(kinds)

    def one():
        if kind == "ties":
            return float(random.randint(-3, 4))
        if kind == "positive":
            return random.choice([random.uniform(0, 10), float(random.randint(1, 5))])
        if kind == "missing" and random.random() < 0.25:
            return NAN
        if kind == "infinite" and random.random() < 0.2:
            return random.choice([INFINITY, -INFINITY, NAN, 0.0, 1e308])
        if kind == "zeros":
            return random.choice([0.0, -0.0, 1.0, -1.0])
        if kind == "large":
            return random.choice([1, -1]) * 10.0**random.randint(-300, 300)
        return random.gauss(0, 3)
    return [one() for _ in range(n)]


def random_object(random, value):
    return random.choice([value, value, random.randint(-3, 5), Fraction(1, 3), Fraction(-2, 7),
                          Name("Pi"), Name("sqrt(2)")])


def random_elements(random, datatype, floats):
    """Elements of a datatype; floats are those of the float types."""
    if datatype.startswith("integer"):
        most = 2**(8 * int(datatype[8]) - 1)
        return [random.choice([-most, most - 1]) if random.random() < 0.05
                else random.randint(-4, 9) for _ in floats]
    if datatype == "float[4]":
        return [float32(v) + 0.0 for v in floats]  # no zeros with a sign by underflow
    if datatype == "complex[8]":
        return [complex(v, 0.0) for v in floats]
    if datatype == "complex":
        return [(random.choice([v, random.randint(-3, 5)]), random.choice([0, 0.0]))
                for v in floats]
    if datatype == "anything":
        return [random_object(random, v) for v in floats]
    return floats


DATATYPES = ["float[8]"] * 6 + ["float[4]", "anything", "anything", "complex", "complex[8]",
                                "integer[1]", "integer[2]", "integer[4]", "integer[8]"]


def random_size(random):
    return random.randint(40, 300) if random.random() < 0.06 else random.randint(0, 12)


def random_array(random, floats, datatypes=DATATYPES):
    """An array whose first dimension has as many elements as there are floats."""
    n = len(floats)
    datatype = random.choice(datatypes)
    lower = random.choice([1, 1, 1, 0, -3, 2])
    bounds = [(lower, lower + n - 1)]
    if random.random() < 0.08:
        columns = random.randint(1, 3)
        bounds.append((0, columns - 1))
        floats = [v for v in floats for _ in range(columns - 1)] + floats
    elements = random_elements(random, datatype, floats)
    if len(bounds) == 1 and n > 0 and random.random() < 0.05:
        spoil(random, datatype, elements)
    return Array(datatype, bounds, elements, random.choice(["column", "column", "row"]),
                 random.choice(["rectangular"] * 4 + ["sparse"]))


def spoil(random, datatype, elements):
    """Puts something in that is no real number."""
    at = random.randrange(len(elements))
    if datatype == "anything":
        elements[at] = random.choice([Name("z"), "a", True, [1], None])
    elif datatype == "complex":
        elements[at] = random.choice([(1, 2), (0.5, -0.5), (1, NAN)])
    elif datatype == "complex[8]":
        elements[at] = random.choice([complex(1, 2), complex(0.5, 1e-300), complex(3, NAN)])


def random_data(random, floats, **options):
    if random.random() < 0.02:
        return random.choice([5, 2.5, Name("z"), None, [1, 2], "a", True])
    return random_array(random, floats, **options)


def random_weights(random, n, empty=0.45):
    if random.random() < empty:
        bounds = random.choice([[(1, 0)], [(5, 1)], [(1, 0), (1, 3)], [(1, 2), (1, 0)]])
        return Array(random.choice(DATATYPES), bounds, [])
    if random.random() < 0.06:
        n = max(n + random.choice([-1, 1, 2]), 0)
    kind = random.choice(["counts", "plain", "missing", "any"])
    values = [float(random.randint(0, 3)) if kind == "counts"
              else NAN if kind == "missing" and random.random() < 0.2
              else random.gauss(0, 1) if kind == "any"
              else random.uniform(0, 2) for _ in range(n)]
    return random_data(random, values)


def random_boolean(random):
    if random.random() < 0.05:
        return random.choice([0, 1, 2, -1, 2**31, 1.0, Name("z"), None, "true"])
    return random.random() < 0.5


def random_integer(random, choices):
    if random.random() < 0.03:
        return random.choice([1.0, True, Name("z"), None, Fraction(1, 2), 2**63, "1"])
    return random.choice(choices)


# Calls.

def check_count(arguments, valid, message):
    if not valid and isinstance(message, Raised):
        raise message
    if not valid:
        raise Raised(message, arguments[0] if len(arguments) == 1 else
                     Sequence(arguments) if arguments else None)


def calls_of(random, entries):
    """For ever calls of each entry point and what they must give.

    An entry is its name, its model, a function that makes arguments, and the message for any other
    number of them, or the error if the arguments are none of its values.
    """
    def checked(model, message, count, arguments):
        check_count(arguments, len(arguments) == count, message)
        return model(*arguments)

    while True:
        for name, model, arguments_of, message in entries:
            arguments = arguments_of()
            count = len(arguments)
            if random.random() < 0.01:
                arguments = random.choice([arguments[:-1], arguments + [1], arguments[:1], []])
            value = expected(checked, model, message, count, arguments)
            if isinstance(value, Raised) or random.random() < 0.9:
                yield call(name, *arguments), value
            else:  # the data stay as they are
                again = call(name, Name("d"), *arguments[1:])
                yield f"d := {to_text(arguments[0])}: [{again}, d]", [value, arguments[0]]
