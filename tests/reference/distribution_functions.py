"""Reference values of every law's functions: writes data/distribution_functions.txt.

A line: law, parameters, x, then pairs of value and condition number of the density, its logarithm,
cdf, sf, logcdf, logsf, and the condition numbers of quantile(cdf) and isf(sf).  The condition number
is the largest over x (of a continuous law) and every real parameter.  "-" stands for what is below
1e-300 or no double.  Computed in 60 digits; points are random with a fixed seed, from the bulk and
from tails as far as logarithms reach.

usage: distribution_functions.py [LAW ...]     only these, to standard output
"""

import math
import multiprocessing
import os
import random
import sys

import mpmath as mp

import accuracy_table as sums

mp.mp.dps = 60
STEP = mp.mpf(10) ** -20
half, one, pi = mp.mpf(1) / 2, mp.mpf(1), mp.pi


def gamma_tails(a, x):
    """P(a, x) and Q(a, x), the smaller one to full precision however small it is."""
    if x <= a + 1:
        log_weight = a * mp.log(x) - x - mp.loggamma(a + 1)
        lower = mp.exp(log_weight) * sums.hypergeometric_sum(x, None, a + 1)
        if a < 1:  # both may be near 1
            with mp.workdps(400):
                lower = x ** a * mp.exp(-x) / mp.gamma(a + 1) * mp.hyp1f1(1, a + 1, x)
                return lower, 1 - lower
        return lower, 1 - lower
    c = d = mp.mpf(0)
    b = x + 1 - a
    c, d = mp.mpf(10) ** 200, 1 / b
    h = d
    for n in range(1, 200000):
        an = -n * (n - a)
        b += 2
        d = 1 / (an * d + b)
        c = b + an / c
        h *= d * c
        if abs(d * c - 1) < mp.mpf(10) ** -55:
            upper = mp.exp(a * mp.log(x) - x - mp.loggamma(a)) * h
            return 1 - upper, upper
    raise sums.TooLong


def beta_tails(a, b, x, y):
    lower, upper, _ = sums.beta_tails(a, b, x, y)
    return lower, upper


def log_beta_density(a, b, x, y):
    return (a - 1) * mp.log(x) + (b - 1) * mp.log(y) - sums.log_beta(a, b)


def gamma_law(a, x):
    return ((a - 1) * mp.log(x) - x - mp.loggamma(a), *gamma_tails(a, x))


def normal_law(z):
    return -z * z / 2 - mp.log(2 * pi) / 2, mp.erfc(-z / mp.sqrt(2)) / 2, mp.erfc(z / mp.sqrt(2)) / 2


def scaled(law, scale):
    """The law of scale times the variable."""
    return law[0] - mp.log(scale), *law[1:]


def Normal(mean, sd, x):
    return scaled(normal_law((x - mean) / sd), sd)


def LogNormal(mu, sigma, x):
    return scaled(normal_law((mp.log(x) - mu) / sigma), sigma * x)


def Uniform(a, b, x):
    return -mp.log(b - a), (x - a) / (b - a), (b - x) / (b - a)


def Exponential(scale, x):
    return -x / scale - mp.log(scale), -mp.expm1(-x / scale), mp.exp(-x / scale)


def Gamma(shape, scale, x):
    return scaled(gamma_law(shape, x / scale), scale)


def ChiSquare(df, x):
    return scaled(gamma_law(df / 2, x / 2), 2)


def Beta(a, b, x):
    return (log_beta_density(a, b, x, 1 - x), *beta_tails(a, b, x, 1 - x))


def StudentT(df, x):
    total = df + x * x
    outer, _ = beta_tails(df / 2, half, df / total, x * x / total)
    log_density = -(df + 1) / 2 * mp.log1p(x * x / df) - mp.log(df) / 2 - sums.log_beta(df / 2, half)
    tails = (outer / 2, 1 - outer / 2)
    return (log_density, *(tails if x < 0 else tails[::-1]))


def FRatio(df1, df2, x):
    total = df1 * x + df2
    u, v = df1 * x / total, df2 / total
    return (log_beta_density(df1 / 2, df2 / 2, u, v) + mp.log(df1 * df2 / total ** 2),
            *beta_tails(df1 / 2, df2 / 2, u, v))


def Cauchy(location, scale, x):
    z = (x - location) / scale
    return -mp.log(pi * scale * (1 + z * z)), mp.atan2(1, -z) / pi, mp.atan2(1, z) / pi


def Laplace(location, scale, x):
    z = (x - location) / scale
    tail = mp.exp(-abs(z)) / 2
    return (-abs(z) - mp.log(2 * scale), *((tail, 1 - tail) if z < 0 else (1 - tail, tail)))


def Logistic(location, scale, x):
    z = (x - location) / scale
    return (-z - mp.log(scale) - 2 * mp.log1p(mp.exp(-z)), 1 / (1 + mp.exp(-z)), 1 / (1 + mp.exp(z)))


def Gumbel(location, scale, x):
    z = (x - location) / scale
    return -z - mp.exp(-z) - mp.log(scale), mp.exp(-mp.exp(-z)), -mp.expm1(-mp.exp(-z))


def Weibull(shape, scale, x):
    w = (x / scale) ** shape
    return mp.log(shape / x) + mp.log(w) - w, -mp.expm1(-w), mp.exp(-w)


def Pareto(shape, minimum, x):
    log = shape * mp.log(x / minimum)
    return mp.log(shape / x) - log, -mp.expm1(-log), mp.exp(-log)


def Power(shape, maximum, x):
    log = shape * mp.log(x / maximum)
    return mp.log(shape / x) + log, mp.exp(log), -mp.expm1(log)


def Rayleigh(scale, x):
    h = (x / scale) ** 2 / 2
    return mp.log(x) - 2 * mp.log(scale) - h, -mp.expm1(-h), mp.exp(-h)


def Maxwell(scale, x):
    h = (x / scale) ** 2 / 2
    log_density, lower, upper = gamma_law(one * 3 / 2, h)
    return log_density + mp.log(x / scale ** 2), lower, upper


def Triangular(a, b, mode, x):
    below, above = (x - a) ** 2 / ((b - a) * (mode - a)), (b - x) ** 2 / ((b - a) * (b - mode))
    if x < mode:
        return mp.log(2 * (x - a) / ((b - a) * (mode - a))), below, 1 - below
    return mp.log(2 * (b - x) / ((b - a) * (b - mode))), 1 - above, above


def InverseGaussian(mean, shape, x):
    root = mp.sqrt(shape / x)
    with mp.workdps(100):  # the two parts of the upper tail may nearly cancel
        a, b = root * (x / mean - 1), root * (x / mean + 1)
        factor = mp.exp(2 * shape / mean)
        lower = mp.erfc(-a / mp.sqrt(2)) / 2 + factor * mp.erfc(b / mp.sqrt(2)) / 2
        upper = mp.erfc(a / mp.sqrt(2)) / 2 - factor * mp.erfc(b / mp.sqrt(2)) / 2
    return mp.log(root / x) - mp.log(2 * pi) / 2 - a * a / 2, lower, upper


def Moyal(location, scale, x):
    z = (x - location) / scale
    u = mp.exp(-z / 2)
    return (-(z + u * u) / 2 - mp.log(2 * pi) / 2 - mp.log(scale), mp.erfc(u / mp.sqrt(2)),
            mp.erf(u / mp.sqrt(2)))


def ExponentialPower(location, scale, shape, x):
    z = (x - location) / scale
    g = abs(z) ** (2 / shape) / 2
    tail = gamma_tails(shape / 2, g)[1] / 2
    log_density = -g - mp.log(scale) - (shape / 2 + 1) * mp.log(2) - mp.loggamma(shape / 2 + 1)
    return (log_density, *((tail, 1 - tail) if z < 0 else (1 - tail, tail)))


def mixture(nc, part):
    """Poisson mixture, of mean nc / 2, of the laws part(j): all terms positive."""
    mean = nc / 2
    density = lower = upper = mp.mpf(0)
    largest = mp.mpf(0)
    start = max(0, int(mean - 30 * mp.sqrt(mean) - 80))
    j = start
    while True:
        weight = mp.exp(j * mp.log(mean) - mean - mp.loggamma(j + 1)) if mean else one * (j == 0)
        d, l, u = part(j)
        terms = (weight * mp.exp(d), weight * l, weight * u)
        density, lower, upper = density + terms[0], lower + terms[1], upper + terms[2]
        largest = max(t / s for t, s in zip(terms, (density, lower, upper)) if s)
        j += 1
        if mean == 0 or (j > mean and largest < mp.mpf(10) ** -32):
            break
        if j - start > 3000:
            raise sums.TooLong
    if start > 0 and lower < mp.mpf(10) ** -100:
        raise sums.TooLong  # what lies before the start may count
    return mp.log(density), lower, upper


def NonCentralChiSquare(df, nc, x):
    return mixture(nc, lambda j: ChiSquare(df + 2 * j, x))


def NonCentralBeta(a, b, nc, x):
    return mixture(nc, lambda j: Beta(a + j, b, x))


def NonCentralFRatio(df1, df2, nc, x):
    total = df1 * x + df2
    log_density, lower, upper = NonCentralBetaAt(df1 / 2, df2 / 2, nc, df1 * x / total, df2 / total)
    return log_density + mp.log(df1 * df2 / total ** 2), lower, upper


def NonCentralBetaAt(a, b, nc, x, y):
    return mixture(nc, lambda j: (log_beta_density(a + j, b, x, y), *beta_tails(a + j, b, x, y)))


def NonCentralStudentT(df, nc, x):
    """The integral over s = sqrt(chi-square / df): tails phi-weighted, all positive."""
    log_factor = df / 2 * mp.log(df / 2) + mp.log(2) - mp.loggamma(df / 2)

    def log_chi(s):
        return log_factor + (df - 1) * mp.log(s) - df * s * s / 2

    def trapezoid(f, log_f):
        # In s = exp(u): analytic, so that the rule converges geometrically.
        grid = [mp.mpf(i) / 8 for i in range(-800, 60)]
        peak = max(grid, key=lambda u: log_f(mp.exp(u)))
        width = mp.mpf(1)
        while log_f(mp.exp(peak + width)) - log_f(mp.exp(peak)) < -3 and width > mp.mpf(10) ** -6:
            width /= 2
        total, step = mp.mpf(0), min(width, 1 / (1 + abs(nc))) / 24
        for sign in (1, -1):
            i = 0 if sign > 0 else 1
            while True:
                s = mp.exp(peak + sign * i * step)
                term = f(s) * s
                total += term
                if term < total * mp.mpf(10) ** -34:
                    break
                i += 1
                if i > 20000:
                    raise sums.TooLong
        return total * step

    def tail(sign):
        z = lambda s: sign * (x * s - nc) / mp.sqrt(2)
        return trapezoid(lambda s: mp.exp(log_chi(s)) * mp.erfc(z(s)) / 2,
                         lambda s: log_chi(s) + mp.log(mp.erfc(z(s))) + mp.log(s))

    log_normal = lambda s: -(x * s - nc) ** 2 / 2 - mp.log(2 * pi) / 2 + mp.log(s) + log_chi(s)
    density = trapezoid(lambda s: mp.exp(log_normal(s)), lambda s: log_normal(s) + mp.log(s))
    return mp.log(density), tail(-1), tail(1)


def Bernoulli(p, k):
    return (mp.log(p), one, mp.mpf(0)) if k else (mp.log1p(-p), 1 - p, p)


def Binomial(n, p, k):
    log_point = sums.log_choose(n, k) + k * mp.log(p) + (n - k) * mp.log1p(-p)
    upper, lower = beta_tails(k + 1, n - k, p, 1 - p)
    return log_point, lower, upper


def Poisson(mean, k):
    upper, lower = gamma_tails(k + 1, mean)
    return k * mp.log(mean) - mean - mp.loggamma(k + 1), lower, upper


def Geometric(p, k):
    log_sf = (k + 1) * mp.log1p(-p)
    return mp.log(p) + k * mp.log1p(-p), -mp.expm1(log_sf), mp.exp(log_sf)


def NegativeBinomial(n, p, k):
    log_point = mp.loggamma(n + k) - mp.loggamma(n) - mp.loggamma(k + 1) + n * mp.log(p) + k * mp.log1p(-p)
    return (log_point, *beta_tails(n, k + 1, p, 1 - p))


def Hypergeometric(population, marked, drawn, k):
    numbers = (population, drawn, marked, k)
    lower, point = sums.hypergeometric("L", *numbers)
    upper, _ = sums.hypergeometric("U", *numbers)
    return mp.log(point), lower, upper


def DiscreteUniform(a, b, k):
    n = b - a + 1
    return -mp.log(n), (k - a + 1) / n, (b - k) / n


def wide(low, high):
    return 10 ** random.uniform(low, high)


def real_point(center, spread):
    side = random.choice([-1, 1])
    return center + spread * random.choice(
        [random.uniform(-4, 4), side * wide(0, 2), side * wide(2, 6), side * wide(-12, 0)])


def positive_point(center, spread):
    return random.choice([abs(center + spread * random.uniform(-4, 4)), center * wide(-2, 2),
                          center * wide(-30, 0), center * wide(0, 4)])


def unit_point(a, b):
    u = random.choice([random.betavariate(min(a, 1e5), min(b, 1e5)), wide(-20, 0), 1 - wide(-15, -1)])
    return min(max(u, 1e-300), 1 - 2.0 ** -53)


def whole_point(center, spread, low, high):
    k = random.choice([center + spread * random.uniform(-4, 4), center + spread * random.uniform(-30, 30),
                       center * wide(-3, 1)])
    return float(min(max(math.floor(k), low), high))


def location_scale():
    return random.choice([(0.0, 1.0), (random.uniform(-5, 5), wide(-2, 2))])


def points(name):
    """Parameters and x."""
    plain = random.random() < 0.5
    shape = random.uniform(0.3, 12) if plain else wide(-2, 5)
    scale = random.choice([1.0, wide(-3, 3)])
    if name in ("Normal", "Cauchy", "Laplace", "Logistic", "Gumbel", "Moyal"):
        location, s = location_scale()
        return location, s, real_point(location, s)
    if name == "LogNormal":
        mu, sigma = random.uniform(-3, 3), wide(-1.5, 0.7)
        return mu, sigma, math.exp(max(-600, min(600, real_point(mu, sigma))))
    if name == "Uniform":
        a, w = random.uniform(-2, 2), wide(-2, 2)
        return a, a + w, a + w * random.choice([random.random(), wide(-9, 0)])
    if name in ("Exponential", "Rayleigh", "Maxwell"):
        return scale, positive_point(scale, scale)
    if name == "Gamma":
        return shape, scale, positive_point(shape * scale, math.sqrt(shape) * scale)
    if name == "ChiSquare":
        return shape, positive_point(shape, math.sqrt(2 * shape))
    if name == "Beta":
        other = random.uniform(0.3, 12) if plain else wide(-2, 4)
        return shape, other, unit_point(shape, other)
    if name == "StudentT":
        df = float(random.randint(1, 30)) if plain else wide(-1, 6)
        return df, real_point(0, 1) * random.choice([1, 1, wide(0, 100 / (df + 1))])
    if name == "FRatio":
        other = random.uniform(0.5, 20) if plain else wide(-1, 4)
        return shape, other, positive_point(1, math.sqrt(2 / shape + 2 / other))
    if name in ("Weibull", "Power"):
        c = random.uniform(0.4, 6) if plain else wide(-1.5, 2.5)
        x = min(1e250, max(1e-250, scale * wide(-8 / c, 2 / c)))
        return c, scale, x if name == "Weibull" else scale * random.choice([random.random(), 1 - wide(-12, -1), min(1, wide(-8 / c, 0))])
    if name == "Pareto":
        c = wide(-1, 1.5)
        return c, scale, scale * random.choice([1 + wide(-12, 0), min(1e250, wide(0, 8 / c))])
    if name == "Triangular":
        a, w = random.uniform(-2, 2), wide(-1, 2)
        b, mode = a + w, a + w * random.random()
        x = random.choice([a + w * random.random(), a + w * wide(-9, 0), b - w * wide(-9, 0)])
        return a, b, mode, x
    if name == "InverseGaussian":
        mean, lam = wide(-2, 2), wide(-2, 4)
        return mean, lam, positive_point(mean, mean * math.sqrt(mean / lam))
    if name == "ExponentialPower":
        location, s = location_scale()
        return location, s, wide(-1, 1), real_point(location, s)
    if name.startswith("NonCentral"):
        nc = random.uniform(0.1, 10) if plain else wide(-3, 2.5)
        df = random.uniform(0.5, 20) if plain else wide(-1, 2)
        other = random.uniform(0.5, 20) if plain else wide(-0.5, 2.5)
        if name == "NonCentralChiSquare":
            return df, nc, positive_point(df + nc, math.sqrt(2 * df + 4 * nc))
        if name == "NonCentralBeta":
            return df, other, nc, unit_point(df + nc / 2, other)
        if name == "NonCentralFRatio":
            return df, other, nc, positive_point((df + nc) / df, math.sqrt(1 / df + 2 / other))
        nc = random.choice([-1, 1]) * min(nc, 20.0)
        df = max(df, 0.8)
        return df, nc, nc + random.uniform(-9, 9) * random.choice([1, 1, 5])
    p = random.choice([random.random(), wide(-6, 0)])
    if name == "Bernoulli":
        return p, float(random.randint(0, 1))
    if name == "Binomial":
        n = float(random.randint(1, 200) if plain else int(wide(1, 6)))
        return n, p, whole_point(n * p, math.sqrt(n * p * (1 - p)) + 1, 0, n - 1)
    if name == "Poisson":
        mean = random.uniform(0.3, 60) if plain else wide(-3, 5)
        return mean, whole_point(mean, math.sqrt(mean) + 1, 0, math.inf)
    if name == "Geometric":
        return p, whole_point(1 / p, 1 / p, 0, math.inf)
    if name == "NegativeBinomial":
        n = random.uniform(0.3, 20) if plain else wide(-2, 4)
        return n, p, whole_point(n * (1 - p) / p, math.sqrt(n * (1 - p)) / p + 1, 0, 1e6)
    if name == "Hypergeometric":
        n = random.randint(5, 500) if plain else int(wide(2, 6))
        m, d = random.randint(1, n - 1), random.randint(1, n - 1)
        spread = math.sqrt(d * (m / n) * (1 - m / n) * (n - d) / n) + 1
        return float(n), float(m), float(d), whole_point(d * m / n, spread, max(0, m + d - n), min(m, d) - 1)
    a, w = float(random.randint(-100, 100)), float(int(wide(0, 9)))
    return a, a + w, a + math.floor(w * random.choice([random.random(), wide(-9, 0)]))


def hypergeometric_condition(at):
    """Of the point probability with respect to the four numbers, by gamma functions of real ones."""
    def log_point(n, m, d, k):
        return (sums.log_choose(m, k) + sums.log_choose(n - m, d - k) - sums.log_choose(n, d))
    found = mp.mpf(0)
    for i, v in enumerate(at):
        moved = [w + STEP * (j == i) for j, w in enumerate(at)]
        found = max(found, abs(v * (log_point(*moved) - log_point(*at)) / STEP))
    return found


DISCRETE = {"Bernoulli": (0,), "Binomial": (1,), "Poisson": (0,), "Geometric": (0,),
            "NegativeBinomial": (0, 1), "Hypergeometric": (), "DiscreteUniform": ()}  # real parameters
LAWS = ("Normal LogNormal Uniform Exponential Gamma Beta ChiSquare StudentT FRatio Cauchy Laplace Logistic "
        "Gumbel Weibull Pareto Power Rayleigh Maxwell Triangular InverseGaussian Moyal ExponentialPower "
        "NonCentralChiSquare NonCentralBeta NonCentralFRatio NonCentralStudentT " + " ".join(DISCRETE)).split()


def six(law, numbers):
    log_density, lower, upper = law(*numbers)
    log_lower = mp.log(lower) if lower < half else mp.log1p(-upper)
    log_upper = mp.log(upper) if upper < half else mp.log1p(-lower)
    return mp.exp(log_density), log_density, lower, upper, log_lower, log_upper


def shown(value):
    return repr(float(value)).removesuffix(".0") if 1e-300 < abs(value) < 1e300 else "-"


def line(name, at):
    law = globals()[name]
    exact = [mp.mpf(v) for v in at]
    values = six(law, exact)
    varied = DISCRETE.get(name, range(len(at)))
    conditions = [mp.mpf(0)] * 6
    quantile = isf = mp.mpf(0)
    slope = values[0] * exact[-1]  # of a tail in log x
    for i in varied:
        moved = list(exact)
        moved[i] = moved[i] * (1 + STEP) if moved[i] else STEP
        if moved[i] == 0:
            continue
        change = [(b - a) / STEP for a, b in zip(values, six(law, moved))]
        if exact[i] == 0:
            change = [mp.mpf(0)] * 6
        conditions = [max(c, abs(d / v)) if v else c for c, d, v in zip(conditions, change, values)]
        if name not in DISCRETE and slope:
            own = i == len(at) - 1
            quantile = max(quantile, abs((values[2] if own else change[2]) / slope))
            isf = max(isf, abs((values[3] if own else change[3]) / slope))
    if name == "Hypergeometric":
        own = hypergeometric_condition(exact) * values[0]
        slopes = (own, own / values[0], own, own, own / values[2], own / values[3])
        conditions = [abs(c / v) if v else c for c, v in zip(slopes, values)]
    words = [name, *(repr(float(v)).removesuffix(".0") for v in at)]
    for v, c in zip(values, conditions):
        words += [shown(v), f"{float(min(c, mp.mpf(10) ** 300)):.2g}"]
    words += [f"{float(min(c, mp.mpf(10) ** 300)):.2g}" for c in (quantile, isf)]
    return " ".join(words)


def rows(name):
    random.seed(name)
    count = 30 if name.startswith("NonCentral") else 60
    found = []
    for _ in range(20 * count):
        if len(found) == count:
            break
        at = points(name)
        try:
            if name not in DISCRETE and at[-1] == 0:
                continue
            found.append(line(name, at))
        except (sums.TooLong, ValueError, TypeError, ZeroDivisionError, OverflowError, mp.libmp.NoConvergence):
            continue
    print(name, len(found), file=sys.stderr, flush=True)
    return found


def main():
    if len(sys.argv) > 1:
        for name in sys.argv[1:]:
            print("\n".join(rows(name)))
        return
    with multiprocessing.Pool(2) as pool:
        lines = [text for found in pool.map(rows, LAWS, 1) for text in found]
    here = os.path.dirname(os.path.abspath(__file__))
    with open(os.path.join(here, "data", "distribution_functions.txt"), "w") as out:
        out.write("# law parameters x (value condition) of pdf logpdf cdf sf logcdf logsf, conditions of quantile "
                  "isf: distribution_functions.py\n")
        out.write("\n".join(lines) + "\n")


if __name__ == "__main__":
    main()
