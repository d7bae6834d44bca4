"""Distribution functions and quantiles that have closed forms."""

import math

import libm
from distributions import converted, counted, miscounts, random_arguments, whole
from host import INFINITY, Raised, call, expected, main, real
from libm import divide


def uniform_probability(x, a, b):
    return 0.0 if x <= a else 1.0 if x >= b else divide(x - a, b - a)


def uniform_quantile(p, a, b):
    return a + (b - a) * p


def triangular_probability(x, a, b, c):
    if x < a:
        return 0.0
    if x < c:
        return divide(x - a, b - a) * divide(x - a, c - a)
    if x >= b:
        return 1.0
    return divide((c - a) + (x - c) * divide((b - c) + (b - x), b - c), b - a)


def triangular_quantile(p, a, b, c):
    if c - a <= (b - a) * p:
        from_top = libm.sqrt((1.0 - p) * (b - a) * (b - c))
        if p < 0.5 and b > a and math.isfinite(from_top):
            return a + (b - a) * divide((c - a) + p * (b - c), (b - a) + from_top)
        return b - from_top
    return a + libm.sqrt((b - a) * p * (c - a))


def inverse_power(x, c):
    """x^(1/c), mended by the rounding error of 1/c."""
    exponent = divide(1.0, c)
    result = libm.power(x, exponent)
    if not (x > 0.0 and 0.0 < result < INFINITY and math.isfinite(c)):
        return result
    remainder = divide(libm.fma(-exponent, c, 1.0), c)
    return result + result * (remainder * libm.log(x))


def weibull_probability(x, b, c):
    return 0.0 if x < 0.0 else -libm.expm1(-libm.power(divide(x, b), c))


def weibull_quantile(p, b, c):
    return b * inverse_power(-libm.log1p(-p), c)


def rayleigh_probability(x, sigma):
    z = divide(x, sigma)
    return 0.0 if x < 0.0 else -libm.expm1(-0.5 * z * z)


def rayleigh_quantile(p, sigma):
    return abs(sigma) * libm.sqrt(-2.0 * libm.log1p(-p))


def power_probability(x, b, c):
    return 0.0 if x < 0.0 else 1.0 if x > b else libm.power(divide(x, b), c)


def power_quantile(p, b, c):
    return b * inverse_power(p, c)


def pareto_probability(x, a, c):
    if x < a:
        return 0.0
    if not a > 0.0 or not math.isfinite(c) or math.isinf(x):
        return 1.0 - libm.power(divide(a, x), c)
    if x <= 2.0 * a:
        log_ratio = libm.log1p((x - a) / a)
    elif math.isinf(x / a):
        log_ratio = libm.log(x) - libm.log(a)
    else:
        log_ratio = libm.log(x / a)
    return -libm.expm1(-c * log_ratio)


def pareto_quantile(p, a, c):
    if not p < 1.0 or not math.isfinite(c):
        return a * libm.power(1.0 - p, divide(-1.0, c))
    return a * libm.exp(divide(-libm.log1p(-p), c))


def exponential_probability(x, b):
    return -libm.expm1(divide(-x, b))


def exponential_quantile(p, b):
    if p < 0.0 or p > 1.0:
        raise Raised("invalid value for the tail probability: %1", p)
    return -b * libm.log1p(-p)


def laplace_probability(x, a, b):
    if x >= a:
        return 1.0 - 0.5 * libm.exp(divide(-(x - a), b))
    return 0.5 * libm.exp(divide(-(a - x), b))


def laplace_quantile(p, a, b):
    if p >= 0.5:
        return a - b * libm.log(2.0 * (1.0 - p))
    return a + b * libm.log(2.0 * p)


def logistic_probability(x, a, b):
    z = divide(x - a, b)
    if z < 0.0:
        return libm.exp(z) / (1.0 + libm.exp(z))
    return 1.0 / (1.0 + libm.exp(-z))


def logistic_quantile(p, a, b):
    if 0.25 <= p <= 0.75:
        return b * libm.log1p((2.0 * p - 1.0) / (1.0 - p)) + a
    return b * libm.log(divide(p, 1.0 - p)) + a


def gumbel_probability(x, a, b):
    return libm.exp(-libm.exp(divide(-(x - a), b)))


def gumbel_quantile(p, a, b):
    return a - b * libm.log(-libm.log(p))


def cauchy_probability(x, a, b):
    return libm.atan2(1.0, divide(-(x - a), b)) / math.pi


def cauchy_quantile(p, a, b):
    if p < 0.25:
        return divide(-1.0, libm.tan(math.pi * (p + 0.0))) * b + a
    if p > 0.75:
        return divide(1.0, libm.tan(math.pi * (1.0 - p))) * b + a
    return libm.tan(math.pi * (p - 0.5)) * b + a


def geometric_probability(x, p):
    trials = libm.floor(x) + 1.0
    if p < 1.0 and p != 0.0:
        return -libm.expm1(trials * libm.log1p(-p))
    return 1.0 - libm.power(1.0 - p, trials)


def geometric_quantile(u, p):
    if u == 0.0:
        return 0
    return libm.truncated(libm.ceil(divide(libm.log1p(-u), libm.log1p(-p))) - 1.0)


def bernoulli_probability(x, p):
    return 1.0 - p if x == 0 else p if x == 1 else 0.0


def bernoulli_quantile(u, p):
    return 0 if 1.0 - p >= u else 1


def discrete_uniform_probability(x, a, b):
    k = libm.truncated(libm.floor(x))
    return 0.0 if k < a else 1.0 if k > b else divide(k - a + 1.0, b - a + 1.0)


def discrete_uniform_quantile(u, a, b):
    return a if u == 0.0 else libm.truncated(libm.ceil(a - 1.0 + u * (b - a + 1.0)))


def normal_approximation(p):
    """The normal quantile with the library's own coefficients."""
    q = 1.0 - p
    lower = q > 0.5
    t = libm.sqrt(-2.0 * libm.log(1.0 - q if lower else q))
    z = t - divide(2.515517 + 0.80253 * t + 0.01028 * t * t,
                   1.0 + 1.432788 * t + 0.189269 * t * t + 0.001308 * t * t * t)
    return -z if lower else z


def w_approximation(x):
    """Counts one argument and reads three."""
    raise Raised("index %1 out of range", 2)


# Operation: its function, the conversions of its arguments, and their kinds.
FORMS = {
    "NormalDeviateApprox": (normal_approximation, [real], "p"),
    "NormalWApprox": (w_approximation, [real], "p"),
    "BernoulliProbability": (bernoulli_probability, [whole, real], "np"),
    "DiscreteUniformProbability": (discrete_uniform_probability, [real, whole, whole], "xnn"),
    "DiscreteUniformDeviate": (discrete_uniform_quantile, [real, whole, whole], "pnn"),
}
for name, probability, quantile, kinds in [
        ("Uniform", uniform_probability, uniform_quantile, "xx"),
        ("Triangular", triangular_probability, triangular_quantile, "xxx"),
        ("Weibull", weibull_probability, weibull_quantile, "ss"),
        ("Rayleigh", rayleigh_probability, rayleigh_quantile, "s"),
        ("Power", power_probability, power_quantile, "ss"),
        ("Pareto", pareto_probability, pareto_quantile, "ss"),
        ("Exponential", exponential_probability, exponential_quantile, "s"),
        ("Laplace", laplace_probability, laplace_quantile, "xs"),
        ("Logistic", logistic_probability, logistic_quantile, "xs"),
        ("Gumbel", gumbel_probability, gumbel_quantile, "xs"),
        ("Cauchy", cauchy_probability, cauchy_quantile, "xs"),
        ("Geometric", geometric_probability, geometric_quantile, "p"),
        ("Bernoulli", bernoulli_probability, bernoulli_quantile, "p"),
        ("DiscreteUniform", discrete_uniform_probability, discrete_uniform_quantile, "nn")]:
    conversions = [real] * (len(kinds) + 1)
    FORMS.setdefault(name + "Probability", (probability, conversions, "x" + kinds))
    FORMS.setdefault(name + "Deviate", (quantile, conversions, "p" + kinds))


def evaluate(operation, arguments):
    function, conversions, _ = FORMS[operation]
    return function(*converted(conversions, counted(operation, arguments, len(conversions))))


def move_to_branches(random, operation, arguments):
    """Orders most triangles' corners, and sets some abscissas to a parameter."""
    if operation.startswith("Triangular") and all(isinstance(a, float) for a in arguments):
        lower, mode, upper = sorted(arguments[-3:])
        arguments[-3:] = random.choice([[lower, upper, mode], [lower, upper, mode],
                                        [lower, upper, lower], arguments[-3:]])
    if operation.endswith("Probability") and len(arguments) > 1 and random.random() < 0.2:
        arguments[0] = random.choice(arguments[1:])


def calls(random):
    for operation, (_, conversions, _) in FORMS.items():
        yield from miscounts(operation, len(conversions))
    while True:
        for operation in FORMS:
            arguments = random_arguments(random, FORMS[operation][2])
            move_to_branches(random, operation, arguments)
            yield (call(f"STATS_Vexel{operation}_HW", *arguments),
                   expected(evaluate, operation, arguments))


if __name__ == "__main__":
    main(calls, count=8000)
