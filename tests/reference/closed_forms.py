"""Writes tests/reference/data/closed_forms.txt: references of the distributions with closed formulas.

Each line: entry point, arguments (hexadecimal, so exactly the doubles meant), value to 25 digits,
condition number of the value in its first argument.  mpmath at 60 digits.
"""
import mpmath as mp

mp.mp.dps = 60
one = mp.mpf(1)

# name: (parameter sets, probability(x, *params), quantile(p, *params), points x as multiples)
def normal_cdf(z):
    return mp.erfc(-z / mp.sqrt(2)) / 2


def triangular(x, a, b, c):
    if x < c:
        return (x - a) ** 2 / (b - a) / (c - a)
    return 1 - (b - x) ** 2 / (b - a) / (b - c)


def triangular_quantile(p, a, b, c):
    if c - a <= (b - a) * p:
        return b - mp.sqrt((1 - p) * (b - a) * (b - c))
    return a + mp.sqrt((b - a) * p * (c - a))


def laplace(x, a, b):
    return 1 - mp.exp(-(x - a) / b) / 2 if x >= a else mp.exp(-(a - x) / b) / 2


FAMILIES = {
    "Uniform": ([(-1.0, 3.0)], lambda x, a, b: (x - a) / (b - a), lambda p, a, b: a + (b - a) * p,
                [-0.75, 0.1, 2.5]),
    "Triangular": ([(0.0, 2.0, 0.0), (0.0, 2.0, 0.5), (0.0, 2.0, 2.0)], triangular,
                   triangular_quantile, [1e-12, 1e-3, 0.25, 0.5, 1.0, 1.9]),
    "Weibull": ([(2.0, 1.5), (1.0, 0.2), (3.0, 10.0)],
                lambda x, b, c: 1 - mp.exp(-(x / b) ** c),
                lambda p, b, c: b * (-mp.log(1 - p)) ** (one / c), [1e-8, 0.1, 0.5, 2.0, 5.0]),
    "Rayleigh": ([(1.0,), (250.0,)], lambda x, s: 1 - mp.exp(-x ** 2 / (2 * s ** 2)),
                 lambda p, s: mp.sqrt(-2 * s ** 2 * mp.log(1 - p)), [1e-100, 1e-5, 0.5, 2.0]),
    "Power": ([(2.0, 3.0), (1.0, 0.25)], lambda x, b, c: (x / b) ** c,
              lambda p, b, c: b * p ** (one / c), [1e-30, 0.1, 0.9]),
    "Pareto": ([(1.0, 2.0), (3.0, 0.5)], lambda x, a, c: 1 - (a / x) ** c,
               lambda p, a, c: a * (1 - p) ** (-one / c), [3.0000000001, 3.25, 50.0, 1e10]),
    "Exponential": ([(1.0,), (4.0,)], lambda x, b: 1 - mp.exp(-x / b),
                    lambda p, b: -b * mp.log(1 - p), [1e-300, 1e-9, 0.5, 3.0, 30.0]),
    "Laplace": ([(0.0, 1.0), (2.0, 0.5)], laplace,
                lambda p, a, b: a - b * mp.log(2 * (1 - p)) if p >= 0.5 else a + b * mp.log(2 * p),
                [-300.0, -1.0, 0.001, 2.5, 10.0]),
    "Logistic": ([(0.0, 1.0), (1.0, 3.0)], lambda x, a, b: 1 / (1 + mp.exp(-(x - a) / b)),
                 lambda p, a, b: b * mp.log(p / (1 - p)) + a, [-650.0, -2.0, 0.0, 4.0, 30.0]),
    "Gumbel": ([(0.0, 1.0), (1.0, 2.0)], lambda x, a, b: mp.exp(-mp.exp(-(x - a) / b)),
               lambda p, a, b: a - b * mp.log(-mp.log(p)), [-5.0, -1.0, 0.5, 3.0, 30.0]),
    "Cauchy": ([(0.0, 1.0), (1.0, 2.0)],
               lambda x, a, b: mp.atan2(1, -(x - a) / b) / mp.pi,
               lambda p, a, b: -mp.cot(mp.pi * p) * b + a, [-1e200, -1e6, -1.5, 0.25, 7.0]),
    "LogNormal": ([(0.0, 1.0), (10.0, 1e-4), (-2.0, 0.5), (-600.0, 2.0)],
                  lambda x, m, s: normal_cdf((mp.log(x) - m) / s), None,
                  [1.1e-261, 0.05, 0.125, 1.0, 22026.0, 22027.5, 22025.0]),
    "Geometric": ([(0.25,), (1e-9,)], lambda x, p: 1 - (1 - p) ** (mp.floor(x) + 1), None,
                  [0.0, 0.5, 7.0, 1000.0]),
}
P = [1e-300, 1e-20, 1e-5, 0.1, 0.30, 0.49999999, 0.5000000001, 0.52, 0.75, 0.99, 1 - 2.0**-53]


def condition(f, x, value):
    if x == 0 or value == 0:
        return mp.mpf(1)
    h = abs(x) * mp.mpf(10) ** -25
    return abs(x * (f(x + h) - f(x)) / h / value)


def line(out, name, args, f):
    x = mp.mpf(args[0])
    params = [mp.mpf(v) for v in args[1:]]
    value = f(x, *params)
    if not (mp.mpf("1e-300") < abs(value) < mp.mpf("1e300")):
        return
    kappa = condition(lambda t: f(t, *params), x, value)
    out.write("%s %s %s %s\n" % (name, " ".join(float(v).hex() for v in args), mp.nstr(value, 25),
                                 mp.nstr(kappa, 3)))


with open("tests/reference/data/closed_forms.txt", "w", encoding="ascii") as out:
    out.write("# written by tests/reference/closed_forms.py\n")
    for name, (sets, probability, quantile, points) in FAMILIES.items():
        for params in sets:
            for x in points:
                if name == "Pareto" and x < params[0]:
                    continue
                if name == "LogNormal" and params[0] == 10.0 and x < 20000:
                    continue
                line(out, name + "Probability", (x, *params), probability)
            if quantile:
                for p in P:
                    line(out, name + "Deviate", (p, *params), quantile)
