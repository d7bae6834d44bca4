"""Reference values for the accuracy tests: writes tests/reference/data/accuracy.txt.

Each line: distribution, tail (L or U), parameters, x, the tail probability as high + low part (two
doubles, together good to 30 digits), the density or point probability at x.
The quantile of the high part is x - low / density to twice double precision (signs turned in the
upper tail), so one table serves probabilities and quantiles.  Points are random with a fixed seed,
over ordinary arguments, both tails to 1e-300 and extreme parameters.

Sums run in fixed point with Python's integers, over series whose terms are all positive.
"""

import math
import multiprocessing
import os
import random

import mpmath as mp

mp.mp.dps = 80
BITS = 320  # fixed-point fraction of the sums
MAX_TERMS = 200000


class TooLong(Exception):
    pass


def hypergeometric_sum(x, numerator, denominator, bits=BITS):
    """sum over n of x^n (numerator)_n / (denominator)_n, numerator None: x^n / (denominator)_n."""
    one = 1 << bits
    scale = mp.mpf(2) ** bits
    ratio = int(mp.floor(x * scale))
    top = None if numerator is None else int(mp.floor(numerator * scale))
    bottom = int(mp.floor(denominator * scale))
    term = total = one
    for n in range(MAX_TERMS):
        term = term * ratio // bottom if top is None else (term * ratio >> bits) * top // bottom
        if top is not None:
            top += one
        bottom += one
        total += term
        if term == 0 or (term << (bits - 60)) < total:
            return mp.mpf(total) / scale
    raise TooLong


def log_beta(a, b):
    return mp.loggamma(a) + mp.loggamma(b) - mp.loggamma(a + b)


def beta_tails(a, b, x, y):
    """I_x(a, b), its complement and the density times x y."""
    if a * y < b * x:
        upper, lower, weight = beta_tails(b, a, y, x)
        return lower, upper, weight
    weight = mp.exp(a * mp.log(x) + b * mp.log(y) - log_beta(a, b))
    lower = weight / a * hypergeometric_sum(x, a + b, a + 1)
    return lower, 1 - lower, weight


def gamma_tails(a, x):
    """P(a, x), Q(a, x) and the density times x."""
    with mp.workdps(450):
        a, x = mp.mpf(a), mp.mpf(x)
        far = x > a + 1
        weight = mp.exp(a * mp.log(x) - x - mp.loggamma(a))
        lower = weight / a * hypergeometric_sum(x, None, a + 1, 1400 if far else BITS)
        return lower, 1 - lower, weight


def normal(tail, x):
    x = mp.mpf(x)
    density = mp.exp(-x * x / 2) / mp.sqrt(2 * mp.pi)
    return mp.erfc((x if tail == "U" else -x) / mp.sqrt(2)) / 2, density


def student(tail, nu, x):
    nu, x = mp.mpf(nu), mp.mpf(x)
    total = nu + x * x
    outer, _, weight = beta_tails(nu / 2, mp.mpf(1) / 2, nu / total, x * x / total)
    outer /= 2
    inside = (tail == "L") == (x > 0)
    return (1 - outer if inside else outer), weight / abs(x)


def gamma(tail, a, x):
    lower, upper, weight = gamma_tails(mp.mpf(a), mp.mpf(x))
    return (lower if tail == "L" else upper), weight / x


def chi_square(tail, nu, x):
    value, density = gamma(tail, mp.mpf(nu) / 2, mp.mpf(x) / 2)
    return value, density / 2


def beta(tail, a, b, x):
    a, b, x = mp.mpf(a), mp.mpf(b), mp.mpf(x)
    lower, upper, weight = beta_tails(a, b, x, 1 - x)
    return (lower if tail == "L" else upper), weight / (x * (1 - x))


def f(tail, m, n, x):
    m, n, x = mp.mpf(m), mp.mpf(n), mp.mpf(x)
    total = m * x + n
    lower, upper, weight = beta_tails(m / 2, n / 2, m * x / total, n / total)
    return (lower if tail == "L" else upper), weight / x


def poisson(tail, mean, k):
    lower, upper, _ = gamma_tails(mp.mpf(k) + 1, mp.mpf(mean))
    mean = mp.mpf(mean)
    return (upper if tail == "L" else lower), mp.exp(k * mp.log(mean) - mean - mp.loggamma(k + 1))


def binomial(tail, n, p, k):
    p = mp.mpf(p)
    below, above, weight = beta_tails(mp.mpf(k) + 1, mp.mpf(n) - k, p, 1 - p)
    point = weight / ((n - k) * p) * 1
    return (above if tail == "L" else below), point


def log_choose(n, k):
    return mp.loggamma(n + 1) - mp.loggamma(k + 1) - mp.loggamma(n - k + 1)


def hypergeometric(tail, n, l, m, k):
    n, l, m, k = int(n), int(l), int(m), int(k)
    first = max(0, l + m - n)
    last = min(l, m)

    def falling(start, step):
        log_point = log_choose(m, start) + log_choose(n - m, l - start) - log_choose(n, l)
        term = total = 1 << BITS
        i = start
        while first <= i + step <= last and term:
            if step < 0:
                term = term * i * (n - m - l + i) // ((m - i + 1) * (l - i + 1))
            else:
                term = term * (m - i) * (l - i) // ((i + 1) * (n - m - l + i + 1))
            total += term
            i += step
        return mp.exp(log_point) * mp.mpf(total) / mp.mpf(2) ** BITS, mp.exp(log_point)

    below_mean = k * n <= l * m
    if below_mean:
        lower, point = falling(k, -1)
        upper = 1 - lower
    else:
        upper = falling(k + 1, 1)[0] if k < last else mp.mpf(0)
        lower = 1 - upper
        point = mp.exp(log_choose(m, k) + log_choose(n - m, l - k) - log_choose(n, l))
    return (lower if tail == "L" else upper), point


def mixture(half, last, tail_at, weight_at, step):
    """Poisson(half) mixture over j of tails, filled from the last one down: positive terms only.

    tail_at(j): tail with j; weight_at(j): density times x; step: T(j) = T(j+1) + weight_at(j)/(.)"""
    tail = tail_at(last)
    log_half = mp.log(half)
    poisson_weight = mp.exp(last * log_half - half - mp.loggamma(last + 1))
    weight = weight_at(last)
    value = density = mp.mpf(0)
    for j in range(last, -1, -1):
        value += poisson_weight * tail
        density += poisson_weight * weight
        if j:
            poisson_weight *= j / half
            weight, gain = step(j, weight)
            tail += gain
    return value, density


def last_term(half):
    return int(half + 45 * math.sqrt(half) + 150)


def noncentral_chi_square(tail, nu, delta, x):
    a, x, half = mp.mpf(nu) / 2, mp.mpf(x) / 2, mp.mpf(delta) / 2

    def weight_at(j):
        return mp.exp((a + j) * mp.log(x) - x - mp.loggamma(a + j))

    def step(j, weight):  # weight at j to the one at j - 1; P(a+j-1) = P(a+j) + weight(j-1)/(a+j-1)
        weight = weight * (a + j - 1) / x
        return weight, weight / (a + j - 1)

    value, density = mixture(half, last_term(half), lambda j: gamma_tails(a + j, x)[0], weight_at, step)
    return value, density / (2 * x)


def beta_mixture(a, b, x, y, half):
    def weight_at(j):
        return mp.exp((a + j) * mp.log(x) + b * mp.log(y) - log_beta(a + j, b))

    def step(j, weight):
        weight = weight * (a + j - 1) / ((a + j - 1 + b) * x)
        return weight, weight / (a + j - 1)

    return mixture(half, last_term(half), lambda j: beta_tails(a + j, b, x, y)[0], weight_at, step)


def noncentral_beta(tail, a, b, delta, x):
    x = mp.mpf(x)
    value, weight = beta_mixture(mp.mpf(a), mp.mpf(b), x, 1 - x, mp.mpf(delta) / 2)
    return value, weight / (x * (1 - x))


def noncentral_f(tail, m, n, delta, x):
    m, n, x = mp.mpf(m), mp.mpf(n), mp.mpf(x)
    total = m * x + n
    value, weight = beta_mixture(m / 2, n / 2, m * x / total, n / total, mp.mpf(delta) / 2)
    return value, weight / x


def noncentral_t(tail, nu, delta, x):
    """Sum over j of beta tails; below zero the two halves cancel, hence the precision."""
    with mp.workdps(420):
        nu, delta, x = mp.mpf(nu), mp.mpf(delta), mp.mpf(x)
        sign, d = (1, delta) if x > 0 else (-1, -delta)
        total = x * x + nu
        u, v, b = x * x / total, nu / total, nu / 2
        half = d * d / 2
        last = int(half + 60 * mp.sqrt(half) + 700)

        def tails(offset):
            tail = mp.mpf(0)  # what lies beyond the last term is far below the weights' rounding
            log_weight = (offset + last) * mp.log(u) + b * mp.log(v) - log_beta(offset + last, b)
            weight = mp.exp(log_weight)
            tail = weight / (offset + last) * series(u, offset + last + b, offset + last + 1)
            found = [(tail, weight)]
            for j in range(last, 0, -1):
                weight = weight * (offset + j - 1) / ((offset + j - 1 + b) * u)
                tail += weight / (offset + j - 1)
                found.append((tail, weight))
            return found[::-1]

        def series(z, top, bottom):
            term = sum_ = mp.mpf(1)
            n = 0
            while term > sum_ * mp.mpf(10) ** -420:
                term *= z * (top + n) / (bottom + n)
                sum_ += term
                n += 1
                if n > 3000:
                    raise TooLong
            return sum_

        even, odd = tails(mp.mpf(1) / 2), tails(mp.mpf(1))
        p = mp.exp(-half)
        q = d / mp.sqrt(2) * p / mp.gamma(mp.mpf(3) / 2)
        value = mp.erfc(d / mp.sqrt(2)) / 2
        density = mp.mpf(0)
        for j in range(last + 1):
            value += (p * even[j][0] + q * odd[j][0]) / 2
            density += (p * even[j][1] + q * odd[j][1]) / abs(x)
            p *= half / (j + 1)
            q *= half / (j + mp.mpf(3) / 2)
        return (value if x > 0 else 1 - value), density


def either_log(low, high):
    return 10 ** random.uniform(low, high)


def gaussian_score():
    return random.choice([random.uniform(-3, 3), random.uniform(-36, 8)])


def gamma_like(a, z):
    """Where the gamma law of shape a has about the normal score z."""
    w = 1 - 1 / (9 * a) + z / (3 * math.sqrt(a))
    if w > 0.05 and a > 0.3:
        return a * w ** 3
    return a * 10 ** random.uniform(-min(300, 290 / a) if random.random() < 0.5 else -3, 0.5)


def ordinary_parameter():
    """Half of them whole or half-whole, as degrees of freedom and counts are."""
    value = random.uniform(0.5, 20)
    return value if random.random() < 0.5 else round(2 * value) / 2


def points(name, tail):
    z = gaussian_score()
    z = z if tail == "L" else -z
    ordinary = random.random() < 0.4
    if name == "normal":
        return (z,)
    if name == "student":
        nu = random.randint(1, 30) if ordinary else either_log(-1, 8)
        return (float(nu), z if nu > 30 else random.choice([z, z * either_log(0, 30 / nu)]))
    if name in ("gamma", "chi_square"):
        a = ordinary_parameter() if ordinary else either_log(-3, 6)
        return (a, gamma_like(a, z)) if name == "gamma" else (2 * a, 2 * gamma_like(a, z))
    if name in ("beta", "f"):
        a, b = ((ordinary_parameter(), ordinary_parameter()) if ordinary
                else (either_log(-3, 5), either_log(-3, 5)))
        u, v = gamma_like(a, z / 1.4), gamma_like(b, -z / 1.4)
        if v == 0:
            return points(name, tail)
        return (a, b, u / (u + v)) if name == "beta" else (2 * a, 2 * b, b * u / (a * v))
    if name == "poisson":
        mean = random.uniform(0.5, 50) if ordinary else either_log(-2, 6)
        return (mean, float(max(0, int(mean + z * math.sqrt(mean)))))
    if name == "binomial":
        n = random.randint(2, 200) if ordinary else int(either_log(1, 7))
        p = random.random() if ordinary else random.choice([random.random(), either_log(-6, 0)])
        k = int(n * p + z * math.sqrt(n * p * (1 - p)))
        return (float(n), p, float(min(n - 1, max(0, k))))
    if name == "hypergeometric":
        n = random.randint(10, 500) if ordinary else int(either_log(2, 7))
        l, m = random.randint(1, n - 1), random.randint(1, n - 1)
        p = m / n
        k = int(l * p + z * math.sqrt(l * p * (1 - p) * (n - l) / n))
        return (float(n), float(l), float(m), float(min(l, m, max(0, l + m - n, k))))
    delta = either_log(-2, 1) if ordinary else either_log(-3, 3)
    if name == "noncentral_t":
        delta = random.choice([-1, 1]) * min(delta, 30)
        nu = random.randint(1, 30) if ordinary else either_log(0, 3)
        return (float(nu), delta, delta + random.uniform(-12, 6))
    z = random.uniform(-12, 5)
    a = random.uniform(0.5, 10) if ordinary else either_log(-1, 2)
    mean = a + delta / 2
    spread = gamma_like(mean, z)
    if name == "noncentral_chi_square":
        return (2 * a, delta, 2 * spread)
    b = random.uniform(0.5, 10) if ordinary else either_log(-0.5, 3)
    v = gamma_like(b, -z / 2)
    if name == "noncentral_beta":
        return (a, b, delta, spread / (spread + v))
    return (2 * a, 2 * b, delta, b * spread / (a * v))


COUNTS = {"normal": ("LU", 60), "student": ("L", 160), "gamma": ("LU", 90), "chi_square": ("LU", 70),
          "beta": ("L", 240), "f": ("LU", 120), "poisson": ("LU", 80), "binomial": ("LU", 80),
          "hypergeometric": ("LU", 60), "noncentral_t": ("L", 60), "noncentral_chi_square": ("L", 80),
          "noncentral_f": ("L", 80), "noncentral_beta": ("L", 80)}


def rows(job):
    name, tail, count = job
    random.seed(name + tail)
    found = []
    for _ in range(20 * count):
        if len(found) == count:
            break
        at = points(name, tail)
        if not all(map(math.isfinite, at)) or (name != "normal" and at[-1] == 0.0 and name not in
                                               ("poisson", "binomial", "hypergeometric")):
            continue
        try:
            value, density = globals()[name](tail, *at)
        except (TooLong, ValueError, ZeroDivisionError, OverflowError):
            continue
        if not (1e-300 < value < 1 - mp.mpf(2) ** -53) or not 1e-300 < density < 1e300:
            continue
        high = float(value)
        low = float(value - mp.mpf(high))
        numbers = [*at, high, low, float(density)]
        found.append(" ".join([name, tail, *(repr(float(x)).removesuffix(".0") for x in numbers)]))
    return found


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    with multiprocessing.Pool(2) as pool:
        jobs = [(name, tail, count) for name, (tails, count) in COUNTS.items() for tail in tails]
        lines = [line for found in pool.map(rows, jobs, 1) for line in found]
    with open(os.path.join(here, "..", "data", "accuracy.txt"), "w") as out:
        out.write("# distribution tail parameters x probability(high low) density: accuracy_table.py\n")
        out.write("\n".join(lines) + "\n")


if __name__ == "__main__":
    main()
