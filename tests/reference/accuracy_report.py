"""Worst and median error of probabilities of libnag2 against mpmath at 60 digits.

usage: accuracy_report.py build/lib/libnag2.so

Errors are relative, divided by max(1, kappa) with kappa = |x f(x) / F(x)|; points are random with a
fixed seed.
"""

import ctypes
import random
import sys

import mpmath as mp

mp.mp.dps = 60
LIBRARY = ctypes.CDLL(sys.argv[1])
LOWER, UPPER = 1329, 1330


def call(name, *arguments):
    function = getattr(LIBRARY, name)
    function.restype = ctypes.c_double
    kinds = [ctypes.c_int(x) if isinstance(x, int) else ctypes.c_double(x) for x in arguments]
    return function(*kinds, None)


def scaled_error(got, exact, density, x):
    error = abs(got - exact) / exact / max(1, abs(x * density / exact))
    return float(error) if error == error else float("inf")


def report(name, results):
    errors = sorted(r[0] for r in results)
    worst = max(results)
    median = errors[len(errors) // 2]
    print(f"{name:24s} {len(results):4d} points  median {median:.1e}  worst {worst[0]:.1e}  at {worst[1:]}")


def gamma():
    lower, upper = [], []
    for _ in range(60):
        a = 10 ** random.uniform(-3, 3)
        x = a * 10 ** random.uniform(-0.6, 0.5) if a > 1 else 10 ** random.uniform(-4, 1)
        density = mp.exp((mp.mpf(a) - 1) * mp.log(x) - x - mp.loggamma(a))
        for tail, limits, found in ((LOWER, (0, x), lower), (UPPER, (x, mp.inf), upper)):
            exact = mp.gammainc(a, *limits, regularized=True)
            if exact > 1e-300:
                got = call("nag2_gamma_probability", tail, x, a, 1.0)
                found.append((scaled_error(got, exact, density, x), a, x))
    report("gamma lower", lower)
    report("gamma upper", upper)


def beta():
    found = []
    for _ in range(50):
        a, b, x = 10 ** random.uniform(-3, 2.5), 10 ** random.uniform(-3, 2.5), random.random()
        exact = mp.betainc(a, b, 0, x, regularized=True)
        density = mp.mpf(x) ** (a - 1) * (1 - mp.mpf(x)) ** (b - 1) / mp.beta(a, b)
        if exact > 1e-300:
            got = call("nag2_beta_probability", x, a, b, 0.0)
            found.append((scaled_error(got, exact, density, x), a, b, x))
    report("beta lower", found)


random.seed(3)
gamma()
beta()
