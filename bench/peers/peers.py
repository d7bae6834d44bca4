"""The jobs of docs/performance.md in NumPy, SciPy and bottleneck."""

import math
import time

import bottleneck
import numpy as np
from scipy import optimize, special, stats
from scipy.stats import qmc, sampling


def measure(job, count, run):
    best, total, runs = float("inf"), 0.0, 0
    while runs < 3 or total < 0.3:
        start = time.perf_counter()
        run()
        seconds = time.perf_counter() - start
        best, total, runs = min(best, seconds), total + seconds, runs + 1
    print(f"{job}\tPython\t{best / count:.6g}", flush=True)


random = np.random.default_rng(1)
large = random.normal(10.0, 2.0, 10_000_000)
medium = large[:1_000_000]

measure("mean of 10^7", 1, lambda: np.mean(large))
weights = np.abs(large[::-1])
measure("weighted mean of 10^7", 1, lambda: np.average(large, weights=weights))
measure("moments 2, 3, 4 of 10^6", 1, lambda: stats.moment(medium, [2, 3, 4]))
for job in ("moments 1 to 4 of 10^6, in one read", "moments 1 to 4 of 10^6, a state"):
    measure(job, 1, lambda: stats.moment(medium, [1, 2, 3, 4]))
measure("covariance of 10^7", 1, lambda: np.cov(large, weights)[0, 1])
measure("median of 10^7", 1, lambda: np.median(large))
measure("25 quantiles of 10^7", 1, lambda: np.quantile(large, np.arange(1, 26) / 26))
measure("trimmed mean of 10^7", 1, lambda: stats.trim_mean(large, 0.1))
measure("Shapiro-Wilk, n = 5000", 1, lambda: stats.shapiro(medium[:5000]))
measure("sort of 10^7", 1, lambda: np.sort(large))
integers = random.integers(-2**31, 2**31, 10_000_000, dtype=np.int32)
measure("sort of 10^7 integers of 32 bits", 1, lambda: np.sort(integers))
measure("stable argsort of 10^6", 1, lambda: np.argsort(medium, kind="stable"))
measure("ranks of 10^6", 1, lambda: stats.rankdata(medium, method="ordinal"))
numbers = random.integers(0, 1000, 1_000_000, dtype=np.int32)
measure("tally of 10^6, 1000 values", 1, lambda: np.unique(numbers, return_counts=True))
levels = numbers.astype(float)
measure("tally of 10^6 doubles, 1000 values", 1, lambda: np.unique(levels, return_counts=True))
measure("10^7 into 100 bins", 1, lambda: np.histogram(large, bins=100, range=(-2.0, 22.0)))
measure("cumulative sum of 10^7", 1, lambda: np.cumsum(large))
measure("moving mean, 101 over 10^6", 1, lambda: bottleneck.move_mean(medium, 101))
measure("moving median, 101 over 10^6", 1, lambda: bottleneck.move_median(medium, 101))
measure("filter, 16 taps over 10^6", 1, lambda: np.convolve(medium, np.full(16, 1 / 16)))
taps = np.full(101, 1 / 101)
measure("filter, 101 taps over 10^6", 1, lambda: np.convolve(medium, taps))

n = 1_000_000
measure("uniform variates", n, lambda: random.random(n))
measure("normal variates", n, lambda: random.standard_normal(n))
measure("exponential variates", n, lambda: random.standard_exponential(n))
measure("gamma(2.5) variates", n, lambda: random.standard_gamma(2.5, n))
measure("beta(2, 3) variates", n, lambda: random.beta(2, 3, n))
measure("Poisson(10) variates", n, lambda: random.poisson(10, n))
measure("binomial(100, 0.3) variates", n, lambda: random.binomial(100, 0.3, n))
urn = np.arange(1, 1001) / np.arange(1, 1001).sum()
measure("alias urn of 1000", n, lambda: random.choice(1000, n, p=urn))
shuffled = large.copy()
measure("shuffle of 10^7", 1, lambda: random.shuffle(shuffled))

# UNU.RAN, as SciPy has it; what the user gives are Python's functions, asked for only when it is set up or rejects.
class OwnLaw:
    def pdf(self, x):
        return math.exp(-x * x / 2)

    def dpdf(self, x):
        return -x * math.exp(-x * x / 2)

    def cdf(self, x):
        return 0.5 * math.erfc(-x * math.sqrt(0.5))


rejection = sampling.TransformedDensityRejection(OwnLaw(), random_state=1)
inversion = sampling.NumericalInversePolynomial(OwnLaw(), u_resolution=1e-12, random_state=1)
measure("own log-concave density", n, lambda: rejection.rvs(n))
measure("own distribution function", n, lambda: inversion.rvs(n))


def call(job, low, high, f):
    x = low + (high - low) * (np.arange(1_000_000) + 0.5) / 1_000_000
    measure(job, 1_000_000, lambda: f(x))


call("normal probability", -3, 3, special.ndtr)
call("Student t(5) probability", -3, 3, lambda x: special.stdtr(5, x))
call("gamma(2.5) probability", 0, 8, lambda x: special.gammainc(2.5, x))
call("beta(2, 3) probability", 0, 1, lambda x: special.betainc(2, 3, x))
call("F(5, 7) probability", 0, 5, lambda x: special.fdtr(5, 7, x))
call("Poisson(10) probability", 0, 25, lambda x: special.pdtr(np.floor(x), 10))
call("binomial(100, 0.3) probability", 10, 50, lambda x: special.bdtr(np.floor(x), 100, 0.3))
call("normal quantile", 0, 1, special.ndtri)
call("Student t(5) quantile", 0, 1, lambda p: special.stdtrit(5, p))
call("gamma(2.5) quantile", 0, 1, lambda p: special.gammaincinv(2.5, p))
call("beta(2, 3) quantile", 0, 1, lambda p: special.betaincinv(2, 3, p))

# Changing parameters, as calls.cpp has them.
m = 100_000
a, b = np.exp(4 * random.random((2, m)) - 0.5)
nc, p, z = 20 * random.random(m), random.random(m), random.standard_normal(m)
at_gamma = np.maximum(1e-3 * a, a + z * np.sqrt(a))
mean = a / (a + b)
at_beta = np.clip(mean + z * np.sqrt(mean * (1 - mean) / (a + b + 1)), 1e-3, 0.999)
at_chi = np.maximum(0.01, a + nc + z * np.sqrt(2 * (a + 2 * nc)))
trials, share = np.ceil(20 * a), b / (a + b)
measure("normal cdf, a call", m, lambda: special.ndtr(3 * z))
measure("normal quantile, a call", m, lambda: special.ndtri(p))
measure("t cdf, a call", m, lambda: special.stdtr(a, z))
measure("gamma cdf, a call", m, lambda: special.gammainc(a, at_gamma))
measure("gamma quantile, a call", m, lambda: special.gammaincinv(a, p))
measure("beta cdf, a call", m, lambda: special.betainc(a, b, at_beta))
measure("beta quantile, a call", m, lambda: special.betaincinv(a, b, p))
measure("F quantile, a call", m, lambda: special.fdtri(a, b, p))
measure("Poisson cdf, a call", m, lambda: special.pdtr(np.round(at_gamma), a))
few = slice(0, 10_000)
measure("non-central chi-square cdf, a call", m, lambda: special.chndtr(at_chi, a, nc))
measure("non-central chi-square quantile, a call", 10_000,
        lambda: special.chndtrix(p[few], a[few], nc[few]))
measure("non-central t cdf, a call", 10_000,
        lambda: special.nctdtr(a[few], nc[few] / 4, nc[few] / 4 + 1.3 * z[few]))
measure("non-central F cdf, a call", 10_000,
        lambda: special.ncfdtr(a[few], b[few], nc[few], 3 * np.exp(z[few] / 2)))

sobol, halton = qmc.Sobol(10, scramble=False), qmc.Halton(10, scramble=False)
measure("Sobol points, 10 dimensions", 2**20 * 10, lambda: sobol.reset().random(2**20))
measure("Halton points, 10 dimensions", 1e7, lambda: halton.reset().random(1_000_000))
measure("Brent solve, the user's function", 1, lambda: optimize.brentq(lambda x: x**3 - 2 * x - 5, 2.0, 3.0))
x = random.standard_normal(1000)
measure("bootstrap, 2000 means of 1000", 1,
        lambda: [random.choice(x, 1000).mean() for _ in range(2000)])
