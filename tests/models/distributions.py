"""What the models of the distributions share: counts of arguments, random arguments and outputs."""

import math
from fractions import Fraction

from host import INFINITY, NAN, Array, Name, Raised, Range, Sequence, call, expected, real
from libm import truncated

ODD_NUMBERS = [INFINITY, -INFINITY, NAN, 0.0, -0.0, 1e308, 5e-324, Fraction(1, 3), Fraction(-1, 2),
               Name("Pi"), Name("sqrt(2)"), 10**30, 1, 0]
NO_NUMBERS = [Name("unknown"), None, True, "a", [1.0, 2.0], complex(1.0, 2.0), Range((1, 2))]
IRREGULAR_COUNTS = {
    "UniformProbability": "VexelUniformRandomVariate expects 3 arguments, received: %1",
    "UniformDeviate": "VexelUniformRandomVariate expects 3 arguments, received: %1",
    "MoyalRandomVariate": "VexelMoyalRandomVariate expects 2 argument, received: %1",
    "InverseGaussianRandomVariate":
        "VexelInverseGaussianRandomVariate expects 2 argument, received: %1",
    "NormalDeviateApprox": "VexelNormalDeviateApprox expects 1 arguments, received: %1",
    "NormalWApprox": "VexelNormalDeviateApprox expects 1 arguments, received: %1",
    "ErrorRandomSample": "expected 4 arguments, received: %1",
    "ErrorRandomVariate": "expected 3 arguments, received: %1",
    "NonCentralChiSquareRandomSample":
        "VexelNonCentralChiSquareRandomSample expects 4 or 6 arguments, received: %1",
}


def counted(operation, arguments, size):
    """The arguments as received; raises the operation's message unless there are as many.

    A call with one argument hands over that argument itself: NULL counts as none, a list by its
    elements.
    """
    received = arguments[0] if len(arguments) == 1 else Sequence(arguments) if arguments else None
    parts = received if isinstance(received, list) else [] if received is None else [received]
    if len(parts) != size:
        plural = "argument" if size == 1 else "arguments"
        raise Raised(IRREGULAR_COUNTS.get(
            operation, f"Vexel{operation} expects {size} {plural}, received: %1"), received)
    return parts


def miscounts(operation, size):
    """Calls with an argument too few and one too many; none has a value to convert."""
    for count in (size - 1, size + 1):
        arguments = [Name("unknown")] * count
        yield (call(f"STATS_Vexel{operation}_HW", *arguments),
               expected(counted, operation, arguments, size))


def converted(conversions, arguments):
    return [convert(argument) for convert, argument in zip(conversions, arguments)]


def whole(value):
    return truncated(real(value))


def _probability(random):
    return random.choice([0.0, 1.0, 0.25, 0.5, 0.75, 1e-10, 1.0 - 1e-10, -0.5, 1.5, 0.3, 0.1, 0.9,
                          random.random(), random.random(), random.random(), random.random()])


def _positive(random):
    """A scale or a shape."""
    return random.choice([1.0, 2.0, 0.5, 0.25, 3.0, 1.5, 10.0, 0.1, 1e-3, 50.0, 51.0, -1.0, -0.5,
                          1.0 + 2.0**-52, 1.0 - 2.0**-53, 1e-17, 0.0] +
                         [math.exp(random.gauss(0.0, 1.5)) for _ in range(17)])


def _location(random):
    return random.choice([0.0, 1.0, -1.0, 0.5, 2.25, 100.0, 1e6] +
                         [random.gauss(0.0, 3.0) for _ in range(5)])


def _count(random):
    return random.choice([0, 1, 2, 5, 10, 20, 100, 101, 2.5, 101.5, -1, -0.5,
                          random.randint(1, 300), random.randint(1, 20), random.randint(1, 20)])


KINDS = {"p": _probability, "s": _positive, "x": _location, "n": _count}


def random_arguments(random, kinds, odd=0.12):
    """An argument for each letter of kinds, some odd numbers.

    p: a probability, s: a scale or shape, x: a location or abscissa, n: a whole number, b: true or
    false.
    """
    arguments = []
    for kind in kinds:
        choice = random.random()
        if kind == "b":
            arguments.append(random.random() < 0.5)
        elif choice < odd:
            arguments.append(random.choice(ODD_NUMBERS))
        else:
            arguments.append(KINDS[kind](random))
    return spoiled(random, arguments)


def spoiled(random, arguments):
    """The arguments; few of them no numbers or of a wrong count."""
    choice = random.random()
    if choice < 0.03 and arguments:
        arguments[random.randrange(len(arguments))] = random.choice(NO_NUMBERS)
    elif choice < 0.05:
        arguments.pop(random.randrange(len(arguments)))
    elif choice < 0.06:
        arguments.append(0.5)
    return arguments


def random_output(random):
    """An array of zeros for a sample; few are of another kind, or no array."""
    rows = random.choice([0, 1, 2, 5, 8])
    columns = random.choice([1, 3])
    bounds = [(1, rows), (-1, columns - 2)] if random.random() < 0.3 else [(rows, 2 * rows - 1)]
    if rows == 0:
        bounds = [(1, 0)]
    elements = [0.0] * rows * (columns if len(bounds) == 2 else 1)
    choice = random.random()
    if choice < 0.02:
        return Array("float[8]", bounds, elements, storage="sparse")
    if choice < 0.04:
        return Array("float[4]", bounds, elements)
    if choice < 0.05:
        return Name("unknown")
    return Array("float[8]", bounds, elements, random.choice(["row", "column"]))


def filled(output, values):
    """The output with the values in the order of its storage."""
    if len(output.bounds) == 2 and output.order == "column":
        rows = output.bounds[0][1] - output.bounds[0][0] + 1
        values = [v for row in range(rows) for v in values[row::rows]]
    return Array("float[8]", output.bounds, values, output.order)
