"""Errors of every method of the functions' laws at the points of tests/reference/data/distribution_functions.txt, beside R,
SciPy and Boost where they are installed: writes docs/functions/accuracy.md.

usage: functions_report.py build/lib include
"""

import math
import os
import subprocess
import sys
import tempfile
import warnings

HERE = os.path.dirname(os.path.abspath(__file__))
PAGE = os.path.join(HERE, "..", "..", "docs", "functions", "accuracy.md")
METHODS = ("density", "log density", "cdf", "sf", "logcdf", "logsf", "quantile", "isf")
DISCRETE = ("Bernoulli", "Binomial", "Poisson", "Geometric", "NegativeBinomial", "Hypergeometric", "DiscreteUniform")

INTRODUCTION = """# Accuracy of the distributions

Relative errors of every method of every law, written by `make accuracy`: medians first, worst errors second. The
references have 60 digits (tests/reference/distribution_functions.py); the points are random with a fixed seed, from the bulk and from
both tails as far as logarithms reach, with ordinary and extreme parameters.

The unit is 1e-14 max(1, k), k the condition number with respect to x and to each real parameter: 1 is the goal. "inf" is a
NaN, a zero or an infinity where there is a number. Quantiles of continuous laws are asked at the doubles nearest cdf and sf. Where a
system has no logarithms, those of its values stand. Boost runs with its default policy, long double inside.
"""


def rows():
    with open(os.path.join(HERE, "..", "..", "tests", "reference", "data", "distribution_functions.txt")) as table:
        for line in table:
            name, *words = line.split()
            if name == "#":
                continue
            numbers = [math.nan if w == "-" else float(w) for w in words]
            at, rest = numbers[:-14], numbers[-14:]
            values, conditions = rest[0:12:2], rest[1:12:2]
            yield name, at[:-1], at[-1], values, conditions, rest[12:]


def probability(value):
    return value if 0 < value < 1 else 0.5


def programs_values(points, libraries, include):
    lines = [" ".join((name, *map(repr, [*parameters, x, probability(values[2]), probability(values[3])])))
             for name, parameters, x, values, _, _ in points]
    with tempfile.TemporaryDirectory() as folder:
        program = os.path.join(folder, "function_values")
        subprocess.run(["g++", "-O1", "-std=c++20", f"-I{include}", os.path.join(HERE, "function_values.cpp"), "-o", program,
                        f"-L{libraries}", "-lvexel", f"-Wl,-rpath,{os.path.abspath(libraries)}"], check=True)
        done = subprocess.run([program], input="\n".join(lines) + "\n", capture_output=True, text=True, check=True,
                              timeout=600)
    numbers = [list(map(float, line.split())) for line in done.stdout.splitlines()]
    return [n[:8] for n in numbers], [n[8:] for n in numbers]


def scipy_law(name, p):
    from scipy import stats as s
    simple = {"Normal": s.norm, "Cauchy": s.cauchy, "Laplace": s.laplace, "Logistic": s.logistic, "Gumbel": s.gumbel_r,
              "Moyal": s.moyal, "Exponential": lambda b: s.expon(0, b), "Rayleigh": lambda b: s.rayleigh(0, b),
              "Maxwell": lambda b: s.maxwell(0, b), "LogNormal": lambda m, d: s.lognorm(d, 0, math.exp(m)),
              "Uniform": lambda a, b: s.uniform(a, b - a), "Gamma": lambda a, b: s.gamma(a, 0, b), "Beta": s.beta,
              "ChiSquare": s.chi2, "StudentT": s.t, "FRatio": s.f, "Weibull": lambda c, b: s.weibull_min(c, 0, b),
              "Pareto": lambda a, m: s.pareto(a, 0, m), "Power": lambda c, m: s.powerlaw(c, 0, m),
              "Triangular": lambda a, b, m: s.triang((m - a) / (b - a), a, b - a),
              "InverseGaussian": lambda m, l: s.invgauss(m / l, 0, l),
              "ExponentialPower": lambda m, b, c: s.gennorm(2 / c, m, b * 2 ** (c / 2)),
              "NonCentralChiSquare": s.ncx2, "NonCentralFRatio": s.ncf, "NonCentralStudentT": s.nct,
              "Bernoulli": s.bernoulli, "Binomial": lambda n, p: s.binom(int(n), p), "Poisson": s.poisson,
              "Geometric": lambda p: s.geom(p, -1), "NegativeBinomial": s.nbinom,
              "Hypergeometric": lambda n, m, d: s.hypergeom(int(n), int(m), int(d)),
              "DiscreteUniform": lambda a, b: s.randint(int(a), int(b) + 1)}
    return simple[name](*p) if name in simple else None


def scipy_values(points):
    warnings.simplefilter("ignore")
    found = []
    for name, parameters, x, values, _, _ in points:
        law = scipy_law(name, parameters)
        if law is None:
            found.append([None] * 8)
            continue
        density, log = (law.pmf, law.logpmf) if name in DISCRETE else (law.pdf, law.logpdf)
        calls = [(density, x), (log, x), (law.cdf, x), (law.sf, x), (law.logcdf, x), (law.logsf, x),
                 (law.ppf, probability(values[2])), (law.isf, probability(values[3]))]
        found.append([float(f(v)) for f, v in calls])
    return found


R_LAWS = {"Normal": "norm", "LogNormal": "lnorm", "Uniform": "unif", "Exponential": "exp", "Gamma": "gamma",
          "Beta": "beta", "ChiSquare": "chisq", "StudentT": "t", "FRatio": "f", "Cauchy": "cauchy", "Logistic": "logis",
          "Weibull": "weibull", "NonCentralChiSquare": "chisq", "NonCentralBeta": "beta", "NonCentralFRatio": "f",
          "NonCentralStudentT": "t", "Binomial": "binom", "Poisson": "pois", "Geometric": "geom",
          "NegativeBinomial": "nbinom", "Hypergeometric": "hyper"}


def r_values(points):
    script = ["options(warn = -1)"]
    for name, p, x, values, _, _ in points:
        if name not in R_LAWS:
            script.append("cat('\\n')")
            continue
        arguments = {"Exponential": lambda: [1 / p[0]], "Gamma": lambda: [p[0], 1 / p[1]],
                     "Hypergeometric": lambda: [p[1], p[0] - p[1], p[2]]}.get(name, lambda: p)()
        a, law = ", ".join(map(repr, arguments)), R_LAWS[name]
        u, v = probability(values[2]), probability(values[3])
        script.append(f"cat(sprintf('%.17g', as.double(c(d{law}({x!r}, {a}), d{law}({x!r}, {a}, log = TRUE), "
                      f"p{law}({x!r}, {a}), p{law}({x!r}, {a}, lower.tail = F), p{law}({x!r}, {a}, log.p = T), "
                      f"p{law}({x!r}, {a}, lower.tail = F, log.p = T), q{law}({u!r}, {a}), "
                      f"q{law}({v!r}, {a}, lower.tail = F)))), '\\n')")
    done = subprocess.run(["R", "--vanilla", "--slave"], input="\n".join(script) + "\n", capture_output=True, text=True,
                          check=True, timeout=600)
    return [[math.nan if w in ("NA", "NaN") else float(w) for w in line.split()] or [None] * 8
            for line in done.stdout.splitlines()]


def errors(points, values):
    """(law, method) -> errors in units of the goal."""
    found = {}
    for (name, _, x, exact, conditions, quantiles), got in zip(points, values, strict=True):
        if got[0] is None or all(map(math.isnan, got)):
            continue
        wanted = [*zip(exact, conditions)]
        if name not in DISCRETE:
            wanted += [(x if 0 < exact[2] < 1 else math.nan, quantiles[0]), (x if 0 < exact[3] < 1 else math.nan, quantiles[1])]
        for method, value, (reference, condition) in zip(METHODS, got, wanted):
            if math.isnan(reference) or abs(reference) < 1e-300:
                continue
            error = abs(value - reference) / abs(reference) / (1e-14 * max(1.0, condition))
            found.setdefault((name, method), []).append(math.inf if math.isnan(error) else error)
    return found


def cell(scaled):
    if not scaled:
        return "–"
    scaled = sorted(scaled)
    return f"{scaled[len(scaled) // 2]:.1g}, {scaled[-1]:.2g}"


def main():
    points = list(rows())
    own, boost = programs_values(points, *sys.argv[1:3])
    systems = [("vexel", errors(points, own))]
    for title, peer in (("R", r_values), ("SciPy", scipy_values)):
        try:
            systems.append((title, errors(points, peer(points))))
        except (OSError, ImportError, subprocess.SubprocessError):
            print(f"{title} is not there", file=sys.stderr)
    systems.append(("Boost", errors(points, boost)))
    lines = ["| law | method | points | " + " | ".join(title for title, _ in systems) + " |",
             "|---" * (3 + len(systems)) + "|"]
    for (name, method), scaled in systems[0][1].items():
        cells = " | ".join(cell(found.get((name, method))) for _, found in systems)
        lines.append(f"| {name} | {method} | {len(scaled)} | {cells} |")
    print("\n".join(lines))
    with open(PAGE, "w") as page:
        page.write(INTRODUCTION + "\n" + "\n".join(lines) + "\n")


if __name__ == "__main__":
    main()
