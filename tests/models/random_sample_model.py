"""The random sample driver with the built-in distributions."""

import math

from discrete_model import DISTRIBUTIONS, possible_parameters
from distributions import converted, filled, random_arguments, random_output
from host import (INFINITY, Array, Name, Procedure, Raised, RandomStream, Sequence, boolean, call,
                  expected, integer64, main, real)
from variates_model import VARIATES

CODES = {1: "Bernoulli", 2: "Beta", 3: "Binomial", 4: "Cauchy", 5: "ChiSquare",
         6: "DiscreteUniform", 8: "Error", 9: "Exponential", 10: "FRatio", 11: "Gamma",
         12: "Geometric", 13: "Gumbel", 14: "Hypergeometric", 15: "InverseGaussian", 16: "Laplace",
         17: "Logistic", 18: "LogNormal", 19: "Maxwell", 20: "Moyal", 21: "NegativeBinomial",
         22: "NonCentralBeta", 23: "NonCentralStudentT", 24: "Normal", 25: "Pareto", 26: "Poisson",
         27: "Power", 28: "Rayleigh", 30: "Triangular", 31: "Uniform", 33: "Weibull"}
NO_CODES = [0, 7, 32, 34, -1, 127, 128, 2.0, Name("unknown")]
# What the host computes as Python does: without rounding to Digits, or in hardware.
PROCEDURES = {
    "x -> x": (1, lambda x: x),
    "(x, y) -> y": (2, lambda x, y: y),
    "(x, y, z) -> x": (3, lambda x, y, z: x),
    "x -> 1.0 + x": (1, lambda x: 1.0 + x),
    "(x, y) -> x - 2.0*y": (2, lambda x, y: x - 2.0 * y),
    "(x, y, z) -> x + y - z": (3, lambda x, y, z: x + y - z),
}


def generator_of(description):
    """The function from a stream to a variate."""
    kind, setup = description
    if integer64(kind) == 1:  # an envelope, whose setup is another
        raise Raised("expected: list of size 5, received: %1", setup)
    if not isinstance(setup, list):
        raise Raised("expected: list, received: %1", setup)
    if len(setup) != 2:
        raise Raised("expected: list of size 2, received: %1", setup)
    code, coefficients = setup
    if type(code) is not int or not -128 <= code < 128:
        raise Raised("invalid random variate type, expected: integer, received: %1", code)
    if not isinstance(coefficients, list):
        raise Raised("expected: list of coefficients, received: %1", coefficients)
    if len(coefficients) > 5:
        raise Raised("invalid number of parameters: %1", coefficients)
    if code not in CODES:
        raise Raised("unable to initialize random variate generator with parameters %1",
                     description)
    block = [real(c) for c in coefficients] + [0.0] * 5
    if CODES[code] in DISTRIBUTIONS:
        _, _, variate, conversions = DISTRIBUTIONS[CODES[code]]
        return lambda stream: variate(100, stream, *converted(conversions, block))
    variate, conversions, _ = VARIATES[CODES[code]]
    return lambda stream: variate(stream, *converted(conversions, block))


def finite(value):
    if not math.isfinite(value):
        raise Raised("unable to evaluate %1 to floating-point", value)
    return value


def random_sample(stream, *arguments, make=generator_of):
    if len(arguments) != 4:
        raise Raised("expected 4 arguments, received: %1", Sequence(arguments))
    output, procedure, descriptions, hardware = arguments
    if not isinstance(descriptions, list):
        raise Raised("expected: vexel list, received: %1", descriptions)
    if not descriptions:
        return [output, stream.int32()]
    if not isinstance(output, Array):
        raise Raised("an array expected, received %1", output)
    if output.storage != "rectangular":
        raise Raised("output rtable has invalid storage type %1", output)
    if output.datatype != "float[8]":
        raise Raised("output rtable has invalid data type %1", output)
    generators = [make(description) for description in descriptions]
    if procedure is None:
        values = [generators[0](stream) for _ in output.elements]
    else:
        boolean(hardware)
        if procedure not in PROCEDURES:
            raise Raised("expected: vexel procedure, received: %1", procedure)
        combine = PROCEDURES[procedure][1]
        values = [finite(combine(*[g(stream) for g in generators])) for _ in output.elements]
    return [filled(output, values), stream.int32()]


def random_description(random, odd):
    code = random.choice(list(CODES))
    name = CODES[code]
    if name in DISTRIBUTIONS:
        parameters = possible_parameters(random, name)
    elif name == "NonCentralBeta":
        parameters = [random.choice([0.5, 2.0, 50.0]), 1.5, 2.0]
    else:
        parameters = random_arguments(random, VARIATES[name][2], odd)
    choice = random.random()
    if choice < 0.02:
        code = random.choice(NO_CODES)
    elif choice < 0.03:
        parameters += [1.0] * random.choice([5, 5 - len(parameters)])
    elif choice < 0.04:
        parameters = random.choice([1.5, None])
    setup = [code, parameters]
    if 0.04 < choice < 0.06:
        setup = random.choice([7, [code], [code, parameters, 1], parameters])
    return [random.choice([0, 2, -1] + [1, Name("unknown")] * (choice > 0.98)), setup]


def calls(random):
    while True:
        if random.random() < 0.5:
            procedure, hardware, odd = None, Name("unknown"), 0.12
            count = random.choice([0, 1, 1, 1, 2])
        else:
            procedure = Procedure(random.choice(list(PROCEDURES)))
            hardware = "0" in procedure or "+" in procedure or random.random() < 0.5
            odd = 0.0
            count = PROCEDURES[procedure][0]
        descriptions = [random_description(random, odd) for _ in range(count)]
        arguments = [random_output(random), procedure, descriptions, hardware]
        choice = random.random()
        if choice < 0.02:
            arguments.pop()
        elif choice < 0.04:
            arguments[random.randrange(1, 4)] = random.choice([INFINITY, Name("unknown")])
        seed = random.randrange(2**64)
        stream = RandomStream(seed)
        statement = call("STATS_VexelRandomSample_HW", *arguments)
        yield (f"randomize({seed}): [{statement}, RandomInt32()]",
               expected(random_sample, stream, *arguments))


if __name__ == "__main__":
    main(calls)
