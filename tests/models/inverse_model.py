"""Samples by inversion of a distribution function that a host procedure gives."""

from fractions import Fraction

import host
from envelope import Record
from host import INFINITY, Array, Name, Procedure, Raised, RandomStream, Table, boolean
from libm import divide
from samples import is_numeric


class Calls(Record):
    """Whatever is a number will do."""

    accepts = staticmethod(lambda value: True)


def quantile(cdf, pdf, p, lower, upper, tol):
    """Newton's method; halves the interval where that leads outside or converges slowly."""
    low, high = lower, upper
    x = (lower + upper) * 0.5
    step = before = upper - lower
    g, d = cdf(x) - p, pdf(x)
    for _ in range(100):
        inside = ((x - high) * d - g) * ((x - low) * d - g) <= 0.0
        newton = inside and abs(2.0 * g) <= abs(before * d)
        before, step = step, divide(g, d) if newton else (high - low) * 0.5
        start, following = (x, x - step) if newton else (low, low + step)
        if following == start:
            return following
        x = following
        if abs(step) < tol:
            return x
        g, d = cdf(x) - p, pdf(x)
        low, high = (x, high) if g < 0.0 else (low, x)
    return x


def is_integer32(value):
    return type(value) is int and -2**31 <= value < 2**31


def is_procedure(value):
    return isinstance(value, Procedure)


def is_list(value):
    return isinstance(value, list)


LENGTH = (1, "expecting sample length as first argument", is_integer32,
          "first argument (sample length) must be positive integer, received %1")
# Of each argument: the message if it is missing, and the one if it is of the wrong kind.
ONE_VARIABLE = [
    LENGTH,
    (2, "expecting probability distribution as second argument", is_procedure,
     "expecting vexel procedure as second argument, received %1"),
    (3, "expecting probability density function as third argument", lambda value: True, None),
    (4, "expecting lower bound for the interval as fourth argument", is_numeric,
     "expecting float as fourth argument, received %1"),
    (5, "expecting upper bound for the interval as fifth argument", is_numeric,
     "expecting float as fifth argument, received %1"),
    (6, "expecting precision as sixth argument", is_numeric,
     "expecting float as sixth argument, received %1")]
# The third is to be a list and a number, which nothing is.
SEVERAL_VARIABLES = [
    LENGTH,
    (2, "expecting expression involving random variables as second argument", is_procedure,
     "expecting vexel procedure as second argument, received %1"),
    (3, "expecting list of random variables as third argument", is_list,
     "expecting list of random variables as third argument, received %1"),
    (3, "expecting list of random variables as third argument", is_numeric,
     "expecting float as third argument, received %1")]


def check(arguments, kinds):
    if len(arguments) == 1 and isinstance(arguments[0], list):
        arguments = arguments[0]  # a single argument is the sequence itself
    for i, missing, accepts, wrong in kinds:
        if len(arguments) < i:
            raise Raised(missing)
        if not accepts(arguments[i - 1]):
            raise Raised(wrong, arguments[i - 1])


def sample(stream, record, *arguments):
    check(arguments, ONE_VARIABLE)
    n = arguments[0]
    cdf, pdf = [record.functions[a] for a in arguments[1:3]]
    lower, upper, tol = map(float, arguments[3:6])
    if len(arguments) > 6:
        boolean(arguments[6])
    at_lower = cdf(lower)
    mass = cdf(upper) - at_lower
    values = [quantile(cdf, pdf, stream.double01() * mass + at_lower, lower, upper, tol)
              for _ in range(n)]
    return Array("float[8]", [(1, n)], values)


def sample_of_several(stream, record, *arguments):
    check(arguments, SEVERAL_VARIABLES)


# Distribution functions and densities, which need not belong together.
LAWS = [("x*x", "2*x"), ("x*x*(3-2*x)", "6*x*(1-x)"), ("1-exp(-x)", "exp(-x)"), ("x*x", "0.5*x"),
        ("x", "1"), ("x", "0"), ("x", "0.001"), ("x*x*x", "x"), ("if(x<{a},0,1)", "if(x<{b},0,3)"),
        ("if(x<{a},0.25,if(x<{b},0.5,2))", "if(x<{a},{b},2)"), ("exp(x)", "exp(x)"), ("{a}", "{b}"),
        ("x*x*x", "3*x*x"), ("x", "-1"), ("x*x*x*x*x", "5*x*x*x*x"), ("x*x*x*x*x", "x*x*x*x")]
ODD = [3, 0, -2, 2**31, -2**31, 2.5, Fraction(1, 3), Name("z"), None, "a", [1, 2], [], True,
       Name("Pi"), INFINITY, Procedure("x -> x"), (1, 2)]


def arguments_of_sample(random, record):
    names = {"a": round(random.random(), 3), "b": round(random.random(), 3)}
    cdf, pdf = [body.format(**names) for body in random.choice(LAWS)]
    lower = random.choice([0, 0.0, 0, -1, 0.25, Fraction(1, 7), 3])
    upper = random.choice([1, 1, 1.0, 2, 0.5, Fraction(8, 7), -0.5, INFINITY])
    tol = random.choice([1e-10, 1e-3, 0.1, 0, 0.0, 1e-15, -1, 1e-300, Fraction(1, 1000)])
    flag = [random.choice([True, 1])] if not record.kept else random.choice(
        [[], [], [True], [False], [0], [False, 7], [Name("z")]])
    return [random.choice([0, -1, 1, 2, 5]), record.procedure("F", cdf), record.procedure("f", pdf),
            lower, upper, tol] + flag


def calls(random):
    while True:
        record = Calls(random.random() < 0.6, random.choice([None] * 9 + [random.randint(1, 30)]))
        arguments = arguments_of_sample(random, record)
        model, name = sample, "STATS_VexelInverseDistributionSampleId_HW"
        if random.random() < 0.1:
            model, name = sample_of_several, "STATS_VexelInverseDistributionSample_HW"
            arguments[2:] = random.choice([[[1, 2]], [[]], [0.5]]) + [0.0, 1.0, 0.1]
        kind = random.random()
        if kind < 0.15:
            arguments[random.choice([0, 1, 3, 4, 5])] = random.choice(ODD)
        elif kind < 0.25:
            arguments = arguments[:random.randint(0, 5)]
        seed = random.getrandbits(40)
        stream = RandomStream(seed)
        if Procedure("x -> x") in arguments:
            record.functions["x -> x"] = lambda x: x
        value = host.expected(model, stream, record, *arguments)
        yield (f"n := 0: T := table(): randomize({seed}): " + host.call(name, *arguments)), value
        yield "[T, RandomInt32()]", [Table(enumerate(record.calls, 1)), stream.int32()]


if __name__ == "__main__":
    host.main(calls)
