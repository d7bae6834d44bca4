"""Continuous distributions from the numerical library, against sums for whole parameters.

Quantiles are taken back by their distribution functions.
"""

import math

from discrete_model import binomial, poisson
from distributions import converted, counted, miscounts, spoiled
from host import Name, Near, Raised, call, expected, integer32, main, real

SEARCHED = ["NonCentralChiSquare", "NonCentralFRatio", "NonCentralBeta"]


def normal(x, mu, sigma):
    return 0.5 * math.erfc((mu - x) / sigma / math.sqrt(2.0))


def log_normal(x, mu, sigma):
    return normal(math.log(x), mu, sigma)


def gamma(x, b, c):
    return 1.0 - poisson(int(c) - 1, x / b)


def chi_square(x, nu):
    return gamma(x, 2.0, nu / 2)


def beta(x, nu1, nu2):
    return 1.0 - binomial(int(nu1) - 1, int(nu1 + nu2) - 1, x)


def f_ratio(x, nu1, nu2):
    return beta(nu1 * x / (nu1 * x + nu2), nu1 / 2, nu2 / 2)


def student_t(x, nu):
    """For nu = 1 and 2."""
    return 0.5 + (math.atan(x) / math.pi if nu == 1 else 0.5 * x / math.sqrt(2.0 + x * x))


def mixture(delta, probability):
    """The sum of probability(j) with the weights of a Poisson distribution with mean delta/2."""
    weight = math.exp(-delta / 2)
    total = 0.0
    for j in range(60):
        total += weight * probability(j)
        weight *= delta / 2 / (j + 1)
    return total


def non_central_chi_square(x, nu, delta):
    return mixture(delta, lambda j: chi_square(x, nu + 2 * j))


def non_central_f_ratio(x, nu1, nu2, delta):
    if x <= 0.0:
        return 0.0
    z = nu1 * x / (nu1 * x + nu2)
    return mixture(delta, lambda j: beta(z, nu1 / 2 + j, nu2 / 2))


def non_central_beta(x, nu1, nu2, delta):
    return mixture(delta, lambda j: beta(x, nu1 + j, nu2))


def non_central_student_t(x, nu, delta):
    """For x = 0 or delta = 0."""
    return student_t(x, nu) if delta == 0 else normal(-delta, 0.0, 1.0)


# Distribution: its distribution function, and a random abscissa and parameters.
PROBABILITIES = {
    "Normal": (normal, lambda r: [r.gauss(0, 2), r.choice([0, 0.5]), r.choice([1, 2.5])]),
    "LogNormal": (log_normal, lambda r: [r.uniform(0.1, 9), r.choice([0, 0.5]), r.uniform(1, 2)]),
    "StudentT": (student_t, lambda r: [r.gauss(0, 2), r.choice([1, 2.0])]),
    "ChiSquare": (chi_square, lambda r: [r.uniform(0, 9), r.choice([2, 4, 10.0])]),
    "FRatio": (f_ratio, lambda r: [r.uniform(0, 9), r.choice([2, 4]), r.choice([2, 8.0])]),
    "Gamma": (gamma, lambda r: [r.uniform(0, 9), r.uniform(1, 3), r.choice([1, 2, 5.0])]),
    "Beta": (beta, lambda r: [r.uniform(0, 1), r.choice([1, 2, 7]), r.choice([1, 2, 4])]),
    "NonCentralChiSquare": (non_central_chi_square,
                            lambda r: [r.uniform(0, 19), r.choice([2, 6]), r.uniform(0, 5)]),
    "NonCentralFRatio": (non_central_f_ratio,
                         lambda r: [r.choice([0, -1, r.uniform(0, 9), r.uniform(0, 9)]),
                                    r.choice([2, 4]), r.choice([2, 8.0]), r.uniform(0, 5)]),
    "NonCentralBeta": (non_central_beta, lambda r: [r.uniform(0, 1), r.choice([1, 2, 7]),
                                                    r.choice([1, 2, 4]), r.uniform(0, 5)]),
    "NonCentralStudentT": (non_central_student_t,
                           lambda r: r.choice([[0, r.choice([1, 2]), r.gauss(0, 1)],
                                               [r.gauss(0, 2), r.choice([1, 2]), 0]])),
}


def checked(operation, size, arguments, first=real):
    """The arguments as doubles, the first one as given."""
    return converted([first] + [real] * (size - 1), counted(operation, arguments, size))


def probability(name, size, arguments):
    value = PROBABILITIES[name][0](*checked(name + "Probability", size, arguments))
    return Near(value, 1e-12)


def probability_of_quantile(name, size, arguments):
    p = checked(name + "Deviate", size, arguments)[0]
    return Near(p, 1e-10)


def quantile(name, *arguments):
    return call(f"STATS_Vexel{name}Deviate_HW", *arguments)


def log_normal_quantile_call(random):
    """The quantile's distance, in units of its last place, from exp(mu + z) at 40 digits."""
    p, mu, sigma = random.random(), random.randint(-9999, 9999) / 16.0, random.uniform(0.1, 2.0)
    z, y = quantile("Normal", p, 0, sigma), quantile("LogNormal", p, mu, sigma)
    return (f"Digits := 40: z := {z}: y := {y}: x := abs(y/exp(z + {mu}) - 1)*2.0^53: "
            "Digits := 15: evalf(x)"), Near(0.0, 4.0)


def quantile_outside(random, name):
    """A quantile at no probability."""
    error = "the specified approximation point must be between function bounds."
    if name == "NonCentralBeta":
        error = "root must be bracketed by lower and upper boundaries."
    parameters = PROBABILITIES[name][1](random)[1:]
    return quantile(name, random.choice([-0.5, 1.5]), *parameters), Raised(error)


def misuse(random, name, operation, size, first=real):
    """A call of wrong arguments, with its error; None if they happen to be right."""
    arguments = spoiled(random, [1] * size)
    error = expected(checked, name + operation, size, arguments, first)
    if isinstance(error, Raised):
        return call(f"STATS_Vexel{name}{operation}_HW", *arguments), error
    return None


def calls(random):
    for name, (_, point) in PROBABILITIES.items():
        size = len(point(random))
        yield from miscounts(name + "Probability", size)
        if name != "NonCentralStudentT":
            yield from miscounts(name + "Deviate", size)
    for name, size in [("StudentT", 1), ("NonCentralFRatio", 3)]:
        yield from miscounts(name + "RandomVariate", size)
        yield from miscounts(name + "RandomSample", size + 1)
    while True:
        for name, (_, point) in PROBABILITIES.items():
            arguments = spoiled(random, point(random))
            size = len(point(random))
            yield (call(f"STATS_Vexel{name}Probability_HW", *arguments),
                   expected(probability, name, size, arguments))
            if name != "NonCentralStudentT":
                parameters = point(random)[1:]
                arguments = spoiled(random, [random.uniform(0.01, 0.99)] + parameters)
                inner = Name(quantile(name, *arguments))
                yield (call(f"STATS_Vexel{name}Probability_HW", inner, *parameters),
                       expected(probability_of_quantile, name, size, arguments))
        for name in SEARCHED:
            yield quantile_outside(random, name)
        wrong = [misuse(random, "StudentT", "RandomVariate", 1),
                 misuse(random, "StudentT", "RandomSample", 2, integer32),
                 misuse(random, "NonCentralFRatio", "RandomVariate", 3),
                 misuse(random, "NonCentralFRatio", "RandomSample", 4, integer32)]
        yield from [w for w in wrong if w is not None]
        yield log_normal_quantile_call(random)
        digits = random.choice([4, 7, 10])
        arguments = PROBABILITIES["NonCentralBeta"][1](random)
        rounded = call("STATS_VexelNonCentralBetaProbability_HW", *arguments)
        yield (f"Digits := {digits}: p := {rounded}: Digits := 15: "
               f"[p, istrue(p = evalf(p, {digits}))]",
               [Near(non_central_beta(*arguments), 2.0 * 10.0**-digits), True])


if __name__ == "__main__":
    main(calls)
