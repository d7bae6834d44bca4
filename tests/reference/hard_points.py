"""Points at which libraries in wide use have failed, with their values: writes data/hard_points.txt.

A line: law, method, parameters, argument, value.  Probabilities by sums or integrals in 60 digits;
a quantile's argument is the law's own probability, rounded, so that the value is good to its
condition.
"""

import os

import mpmath as mp

import accuracy_table as sums

mp.mp.dps = 60


def student_lower(df, nc, x):
    """P(T <= x), x < 0, over the chi variable."""
    df, nc, x = mp.mpf(df), mp.mpf(nc), mp.mpf(x)
    log_scale = mp.log(2) + df / 2 * mp.log(df / 2) - mp.loggamma(df / 2)
    s0 = 2 * df / (-x * nc + mp.sqrt(x * x * nc * nc + 4 * df * (df + x * x)))
    width = 1 / mp.sqrt(2 * df)

    def integrand(s):
        return mp.exp(log_scale + (df - 1) * mp.log(s) - df * s * s / 2) * mp.ncdf(x * s - nc)

    nodes = [s0 * mp.exp(width * k / 2) for k in range(-48, 33)]
    return mp.quad(integrand, [0] + nodes + [mp.inf])


def chi_square_lower(df, nc, x):
    df, nc, x = mp.mpf(df), mp.mpf(nc), mp.mpf(x)
    return mp.nsum(lambda j: mp.exp(j * mp.log(nc / 2) - nc / 2 - mp.loggamma(j + 1)) *
                   mp.gammainc(df / 2 + j, 0, x / 2, regularized=True), [0, 400], method="d")


def rows():
    yield "Beta quantile", (5, 5), 0.5, 0.5
    for df, nc, x in ((8, 8.26915191978, -10.0), (8, 8.26915191978, -2.0), (1000, 23.0, -1.0)):
        yield "NonCentralStudentT cdf", (df, nc), x, student_lower(df, nc, x)
    yield "Binomial quantile", (4, 1.0), 0.3, 4
    yield "Poisson quantile", (1e15,), 0.5, 1e15  # the median of a whole mean is the mean
    x = mp.findroot(lambda t: mp.log(chi_square_lower(0.001, 100, t)) - mp.log(mp.mpf(3.659e-14)),
                    (mp.mpf("5.8"), mp.mpf("5.9")), solver="secant")
    yield "NonCentralChiSquare quantile", (0.001, 100), 3.659e-14, x
    yield "NonCentralChiSquare logcdf", (2, 1e4), 1.0, mp.log(mp.quad(
        lambda t: mp.exp(-(t + 1e4) / 2) / 2 * mp.besseli(0, mp.sqrt(1e4 * t)), [k / mp.mpf(64) for k in range(65)]))
    yield "StudentT logsf", (3,), 1e200, mp.log(6 * mp.sqrt(3) / mp.pi / 3) - 3 * mp.log(mp.mpf(1e200))
    z = mp.mpf(10) ** 6
    yield "Normal logsf", (0, 1), 1e6, -z * z / 2 - mp.log(z * mp.sqrt(2 * mp.pi)) - 1 / z ** 2
    lower = sums.gamma_tails(mp.mpf(1e-3), mp.mpf(1e-300))[0]
    yield "Gamma cdf", (1e-3, 1), 1e-300, lower


def main():
    path = os.path.join(os.path.dirname(os.path.abspath(__file__)), "data", "hard_points.txt")
    with open(path, "w") as out:
        print("# law method parameters argument value: hard_points.py", file=out)
        for name, parameters, x, value in rows():
            print(name, *parameters, repr(x), mp.nstr(mp.mpf(value), 20), file=out)


main()
