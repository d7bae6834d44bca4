"""Discrete distributions whose quantiles are searches over the integers."""

import functools
import math

import libm
from distributions import converted, counted, miscounts, spoiled, whole
from host import Array, Near, RandomStream, call, expected, integer32, main, real
from interpolation_model import discrete, discrete_left
from ziggurats import normal


@functools.lru_cache(None)
def poisson(k, mean):
    term = math.exp(-mean)
    return math.fsum([term] + [term := term * mean / j for j in range(1, k + 1)])


@functools.lru_cache(None)
def binomial(k, n, p):
    if k >= n:
        return 1.0
    return math.fsum(math.comb(n, j) * p**j * (1.0 - p)**(n - j) for j in range(k + 1))


@functools.lru_cache(None)
def hypergeometric(k, n, drawn, marked):
    if k >= min(drawn, marked):
        return 1.0
    count = sum(math.comb(marked, j) * math.comb(n - marked, drawn - j) for j in range(k + 1))
    return count / math.comb(n, drawn)


@functools.lru_cache(None)
def negative_binomial(k, n, p):
    """1 far beyond the greatest n and for p not below 0.05; the secant steps may go there."""
    if k > 5000:
        return 1.0
    term = p**n
    return math.fsum([term] + [term := term * (n + j) / (j + 1) * (1.0 - p) for j in range(k)])


def poisson_quantile(limit, u, mean):
    return discrete_left(u, lambda k: poisson(k, mean), 0.0, 1.0, 0, int(mean) or 1, limit)


def binomial_quantile(limit, u, n, p):
    return discrete(u, lambda k: binomial(k, n, p), 0, n, limit)


def hypergeometric_quantile(limit, u, n, drawn, marked):
    if u >= 1.0:
        return float(min(drawn, marked))
    return float(discrete(u, lambda k: hypergeometric(k, n, drawn, marked), 0, drawn, limit))


def negative_binomial_quantile(_, u, n, p):
    """The limit is 100, whatever the host's is."""
    return discrete_left(u, lambda k: negative_binomial(k, n, p), 0.0, 1.0, 0, int(n), 100)


def binomial_variate(limit, stream, n, p):
    if not (n * p > 10.0 and n * (1.0 - p) > 10.0 and n >= 101):
        return float(binomial_quantile(limit, stream.double01(), n, p))
    y = libm.floor(normal(stream, n * p, math.sqrt(n * p * (1.0 - p))) + 0.5)
    return min(max(y, 0.0), float(n))


def by_inversion(quantile):
    return lambda limit, stream, *parameters: float(
        quantile(limit, stream.double01(), *parameters))


# Distribution: distribution function, quantile, variate, and conversions of the parameters.
DISTRIBUTIONS = {
    "Poisson": (poisson, poisson_quantile, by_inversion(poisson_quantile), [real]),
    "Binomial": (binomial, binomial_quantile, binomial_variate, [whole, real]),
    "Hypergeometric": (hypergeometric, hypergeometric_quantile,
                       by_inversion(hypergeometric_quantile), [whole] * 3),
    "NegativeBinomial": (negative_binomial, negative_binomial_quantile,
                         by_inversion(negative_binomial_quantile), [real, real]),
}

# So long that most uniforms are not searched for, some with more values than are remembered.
LONG_SAMPLES = [("Poisson", [0.3]), ("Poisson", [10.0]), ("Poisson", [1e6]),
                ("Binomial", [99, 0.3]), ("Binomial", [2**31 - 1, 2e-9]),
                ("Hypergeometric", [50, 20, 17]), ("NegativeBinomial", [3.5, 0.4])]


def probability(name, arguments):
    """Poisson truncates the abscissa and others round it down, so there is a P(X <= -0.5)."""
    function, _, _, conversions = DISTRIBUTIONS[name]
    arguments = counted(name + "Probability", arguments, len(conversions) + 1)
    x, *parameters = converted([real] + conversions, arguments)
    k = int(x) if name == "Poisson" else math.floor(x)
    value = function(k, *parameters) if k >= 0 else 0.0
    return Near(value, 1e-12 * value + 1e-250)


def quantile(limit, name, arguments):
    _, function, _, conversions = DISTRIBUTIONS[name]
    arguments = counted(name + "Deviate", arguments, len(conversions) + 1)
    return function(limit, *converted([real] + conversions, arguments))


def random_variate(limit, stream, name, arguments):
    _, _, variate, conversions = DISTRIBUTIONS[name]
    arguments = counted(name + "RandomVariate", arguments, len(conversions))
    return [variate(limit, stream, *converted(conversions, arguments)), stream.int32()]


def random_sample(limit, stream, name, arguments):
    _, _, variate, conversions = DISTRIBUTIONS[name]
    arguments = counted(name + "RandomSample", arguments, len(conversions) + 1)
    n, *parameters = converted([integer32] + conversions, arguments)
    values = [variate(limit, stream, *parameters) for _ in range(n)]
    return [Array("float[8]", [(1, n)], values), stream.int32()]


def possible_parameters(random, name):
    p = random.choice([0.5, 0.05, 0.99, random.uniform(0.05, 0.99), random.uniform(0.05, 0.99)])
    if name == "Poisson":
        return [random.choice([0.0, 0.4, 1, 7.9, 30.0, 200.5, random.random() * 10.0])]
    if name == "Binomial":
        n = random.choice([0, 1, 2, 10, 50, 100, 101, 200.5, 300])
        return [n, random.choice([0.0, 1.0, 10.0 / n if n > 10 else p, p, p])]
    if name == "Hypergeometric":
        n = random.choice([1, 5, 20, 100, 300.5, 1000])
        return [n, random.randint(0, min(int(n), 60)), random.randint(0, int(n))]
    return [random.choice([0.5, 1, 1.5, 2.7, 5, 10, 50.2, random.random() * 20.0]), p]


def calls(random):
    for name, (_, _, _, conversions) in DISTRIBUTIONS.items():
        for operation, more in [("Probability", 1), ("Deviate", 1), ("RandomVariate", 0),
                                ("RandomSample", 1)]:
            yield from miscounts(name + operation, len(conversions) + more)
    for name, parameters in LONG_SAMPLES:
        sample = call(f"STATS_Vexel{name}RandomSample_HW", 3000, *parameters)
        variate = call(f"STATS_Vexel{name}RandomVariate_HW", *parameters)
        yield (f"randomize(11): x := tolist({sample}): randomize(11): "
               f"istrue(x = [seq({variate}, i = 1 .. 3000)])", True)
    for p in (0.1, 0.9):  # rounded normals, some of them beyond 0 or n
        arguments = [3000, 101, p]
        statement = call("STATS_VexelBinomialRandomSample_HW", *arguments)
        yield (f"randomize(11): [{statement}, RandomInt32()]",
               random_sample(100, RandomStream(11), "Binomial", arguments))
    while True:
        for name in DISTRIBUTIONS:
            parameters = possible_parameters(random, name)
            x = random.choice([0, -0.5, 1.5, random.randint(0, 40), random.random() * 20.0])
            if name == "NegativeBinomial":
                x = abs(x)
            arguments = spoiled(random, [x] + parameters)
            yield (call(f"STATS_Vexel{name}Probability_HW", *arguments),
                   expected(probability, name, arguments))

            limit = random.choice([100, 100, 100, 0, 1, 2, 3, 5, 8])
            setting = ("clear(_EnvStatisticsIterations)" if limit == 100 else
                       f"_EnvStatisticsIterations := {limit}")
            u = random.choice([0.0, 0.37, -0.5, 1.5, 0.999, random.random(), random.random()])
            arguments = spoiled(random, [u] + parameters)
            yield (f"{setting}: " + call(f"STATS_Vexel{name}Deviate_HW", *arguments),
                   expected(quantile, limit, name, arguments))

            seed = random.randrange(2**64)
            arguments = spoiled(random, parameters)
            statement = call(f"STATS_Vexel{name}RandomVariate_HW", *arguments)
            yield (f"{setting}: randomize({seed}): [{statement}, RandomInt32()]",
                   expected(random_variate, limit, RandomStream(seed), name, arguments))

            arguments = spoiled(random, [random.choice([0, -3, 1, 5, 40, 400]), *parameters])
            statement = call(f"STATS_Vexel{name}RandomSample_HW", *arguments)
            yield (f"{setting}: randomize({seed}): [{statement}, RandomInt32()]",
                   expected(random_sample, limit, RandomStream(seed), name, arguments))


if __name__ == "__main__":
    main(calls)
