"""Errors of libnag2's probabilities and quantiles at the points of tests/reference/data/accuracy.txt, beside R,
SciPy and Boost where they are installed; --markdown writes the page docs/accuracy.md.  With the
command, also the quantiles that the statistics library finds by searches on these probabilities.

usage: accuracy_report.py build/lib/libnag2.so [build/bin/vexel] [--markdown]
"""

import ctypes
import json
import math
import os
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
TABLE = os.path.join(HERE, "..", "data", "accuracy.txt")
PAGE = os.path.join(HERE, "..", "..", "docs", "accuracy.md")
TAILS = {"L": 1329, "U": 1330}
GOAL = 1e-14

TITLES = {
    "normal": "normal", "student": "Student t", "gamma": "gamma", "chi_square": "chi-square",
    "beta": "beta", "f": "F", "poisson": "Poisson", "binomial": "binomial",
    "hypergeometric": "hypergeometric", "noncentral_t": "non-central t",
    "noncentral_chi_square": "non-central chi-square", "noncentral_f": "non-central F",
    "noncentral_beta": "non-central beta"}
QUANTILES = ("normal", "student", "gamma", "chi_square", "beta", "f")
SEARCHED = {"poisson": "Poisson", "binomial": "Binomial", "hypergeometric": "Hypergeometric",
            "noncentral_chi_square": "NonCentralChiSquare", "noncentral_f": "NonCentralFRatio",
            "noncentral_beta": "NonCentralBeta"}

INTRODUCTION = """# Accuracy

Relative errors of the numerical library's lower (L) and upper (U) tail probabilities and of its
quantiles, written by `make accuracy`.  The references are sums in 80 or more digits
(tests/reference/accuracy_table.py); the points are random with a fixed seed: ordinary arguments,
tails to 1e-300, and parameters as extreme as gamma shapes 1e-3 to 1e6, t with 0.1 to 1e8 degrees of
freedom, beta parameters 1e-3 to 1e5, Poisson means to 1e6, binomial n and hypergeometric populations
to 1e7, noncentrality to 1e3.

The unit is 1e-14 max(1, k) for a probability and 1e-14 max(1, 1/k) for a quantile, with k = |x f(x) /
F(x)| the condition number of the point (for a discrete law k P(X = k) / F(k)): 1 is the goal, and
what lies below it is as good as the arguments' own rounding allows, to within some 45 epsilons.
"inf" is a NaN, a zero or a failure.  Boost runs with its default policy, long double inside.  Medians stand first, worst errors second.

Quantiles of discrete and non-central laws are searches on the probabilities, so they are measured
through the entry points, at 15 Digits.  A discrete quantile, asked half a point probability below
P(X <= k), is right or "inf".  The non-central searches end at an absolute width too: 1e-15 joins
their unit.
"""


def rows():
    with open(TABLE) as table:
        for line in table:
            if not line.startswith("#"):
                name, tail, *numbers = line.split()
                numbers = [float(x) for x in numbers]
                yield name, tail, numbers[:-4], numbers[-4], numbers[-3], numbers[-2], numbers[-1]


class Library:
    def __init__(self, path):
        self.library = ctypes.CDLL(path)

    def real(self, name, *arguments):
        function = getattr(self.library, name)
        function.restype = ctypes.c_double
        kinds = [ctypes.c_int(v) if isinstance(v, int) else ctypes.c_double(v) for v in arguments]
        return function(*kinds, None)

    def discrete(self, name, tail, *arguments):
        kinds = [ctypes.c_int64(v) if isinstance(v, int) else ctypes.c_double(v) for v in arguments]
        results = [ctypes.c_double() for _ in range(3)]
        getattr(self.library, name)(*kinds, *map(ctypes.byref, results), None)
        return results[0 if tail == "L" else 1].value

    def probability(self, name, tail, parameters, x):
        p, t = parameters, TAILS[tail]
        if name == "poisson":
            return self.discrete("nag2_poisson", tail, p[0], int(x))
        if name == "binomial":
            return self.discrete("nag2_binomial", tail, int(p[0]), p[1], int(x))
        if name == "hypergeometric":
            return self.discrete("nag2_hypergeometric", tail, *map(int, p), int(x))
        if name == "gamma":
            p = [*p, 1.0]
        if name == "beta":
            return self.real("nag2_beta_probability", x, *p, 0.0)
        if name.startswith("noncentral"):
            return self.real(f"nag2_{name}_probability", x, *p, 1e-14, 100)
        full = "student_t" if name == "student" else name
        return self.real(f"nag2_{full}_probability", t, x, *p)

    def quantile(self, name, tail, parameters, p):
        if name in ("normal", "student"):
            full = "student_t" if name == "student" else name
            return self.real(f"nag2_{full}_quantile", TAILS[tail], p, *parameters)
        if tail == "U":
            return None
        extra = {"gamma": [1.0, 0.0], "beta": [0.0]}.get(name, [])
        return self.real(f"nag2_{name}_quantile", p, *parameters, *extra)


R_NAMES = {"normal": "norm", "student": "t", "gamma": "gamma", "chi_square": "chisq", "beta": "beta",
           "f": "f", "poisson": "pois", "binomial": "binom", "hypergeometric": "hyper",
           "noncentral_t": "t", "noncentral_chi_square": "chisq", "noncentral_f": "f",
           "noncentral_beta": "beta"}


class R:
    """One R process computes every value."""

    def __init__(self, points):
        script = ["options(warn = -1)"]
        for name, tail, parameters, x, high, _, _ in points:
            numbers = list(parameters)
            if name == "hypergeometric":
                n, l, m = parameters
                numbers = [m, n - m, l]
            arguments = ", ".join(map(repr, numbers))
            end = (", " + arguments if arguments else "") + f", lower.tail = {'T' if tail == 'L' else 'F'}"
            short = R_NAMES[name]
            quantile = f"q{short}({high!r}{end})" if name in QUANTILES else "0"
            script.append(f"cat(sprintf('%.17g %.17g\\n', as.double(p{short}({x!r}{end})), as.double({quantile})))")
        done = subprocess.run(["R", "--vanilla", "--slave"], input="\n".join(script) + "\n",
                              capture_output=True, text=True, check=True, timeout=300)
        self.values = iter([tuple(float(v) if v not in ("NA", "NaN") else math.nan for v in line.split())
                            for line in done.stdout.splitlines()])

    def both(self, *_):
        return next(self.values)


class Boost:
    """A program, compiled here, computes every value with Boost's default policy."""

    def __init__(self, points):
        lines = [" ".join((name, tail, repr(x), repr(high), *map(repr, parameters)))
                 for name, tail, parameters, x, high, _, _ in points]
        with tempfile.TemporaryDirectory() as folder:
            program = os.path.join(folder, "boost_values")
            subprocess.run(["g++", "-O2", "-std=c++17", os.path.join(HERE, "boost_values.cpp"), "-o", program],
                           check=True, capture_output=True)
            done = subprocess.run([program], input="\n".join(lines) + "\n", capture_output=True, text=True,
                                  check=True, timeout=300)
        self.values = iter([tuple(map(float, line.split())) for line in done.stdout.splitlines()])

    def both(self, *_):
        return next(self.values)


class SciPy:
    def __init__(self, _):
        from scipy import special, stats
        s = special
        self.probabilities = {
            "normal": (s.ndtr, lambda x: s.ndtr(-x)), "student": (s.stdtr, None),
            "gamma": (s.gammainc, s.gammaincc),
            "chi_square": (lambda n, x: s.chdtr(n, x), lambda n, x: s.chdtrc(n, x)),
            "beta": (s.betainc, None), "f": (s.fdtr, s.fdtrc),
            "poisson": (lambda m, k: s.pdtr(k, m), lambda m, k: s.pdtrc(k, m)),
            "binomial": (lambda n, p, k: s.bdtr(k, int(n), p), lambda n, p, k: s.bdtrc(k, int(n), p)),
            "hypergeometric": (lambda n, l, m, k: stats.hypergeom.cdf(k, int(n), int(m), int(l)),
                               lambda n, l, m, k: stats.hypergeom.sf(k, int(n), int(m), int(l))),
            "noncentral_t": (s.nctdtr, None),
            "noncentral_chi_square": (lambda n, d, x: s.chndtr(x, n, d), None),
            "noncentral_f": (s.ncfdtr, None)}
        self.quantiles = {"normal": s.ndtri, "student": s.stdtrit, "gamma": s.gammaincinv,
                          "chi_square": lambda n, p: 2 * s.gammaincinv(n / 2, p), "beta": s.betaincinv,
                          "f": s.fdtri}

    def both(self, name, tail, parameters, x, high):
        function = self.probabilities.get(name, (None, None))["LU".index(tail)]
        quantile = self.quantiles.get(name) if tail == "L" else None
        return (float(function(*parameters, x)) if function else None,
                float(quantile(*parameters, high)) if quantile else None)


def relative(got, exact, rest):
    """|got - (exact + rest)| / |exact|, rest far below exact."""
    error = abs((got - exact) - rest) / abs(exact)
    return error if error == error else math.inf


def collect(library):
    points = list(rows())
    systems = [("vexel", library)]
    for title, peer in (("R", R), ("SciPy", SciPy), ("Boost", Boost)):
        try:
            systems.append((title, peer(points)))
        except (OSError, ImportError, subprocess.SubprocessError):
            print(f"{title} is not there", file=sys.stderr)
    found = {}
    for name, tail, parameters, x, high, low, density in points:
        kappa = abs(x * density / high)
        for title, system in systems:
            if title == "vexel":
                values = (system.probability(name, tail, parameters, x),
                          system.quantile(name, tail, parameters, high) if name in QUANTILES else None)
            else:
                values = system.both(name, tail, parameters, x, high)
            if name not in QUANTILES or (tail == "U" and name not in ("normal", "student")):
                values = (values[0], None)
            shift = (-low if tail == "L" else low) / density
            for operation, got, error, condition in (
                    (f"probability {tail}", values[0], lambda g: relative(g, high, low), kappa),
                    (f"quantile {tail}", values[1], lambda g: relative(g, x, shift),
                     1 / kappa if kappa else math.inf)):
                if got is not None:
                    scaled = error(got) / (GOAL * max(1.0, condition))
                    found.setdefault((name, operation), {}).setdefault(title, []).append(
                        (scaled, *parameters, x, high))
    return [title for title, _ in systems], found


def searched(command):
    """Errors of the quantiles found by searches, through the command's entry points."""
    points = []
    for name, tail, parameters, x, high, low, density in rows():
        if name not in SEARCHED or tail != "L":
            continue
        p = high
        if not name.startswith("noncentral"):
            p = high - 0.5 * density
            if min(high - p, p - (high - density)) < 4e-16 * high or (x == 0.0 and name != "poisson"):
                continue  # no double lies clear of both steps
        points.append((name, parameters, x, p, density / high, -low / density))
    script = "".join(f"STATS_Vexel{SEARCHED[name]}Deviate_HW({p!r}, {', '.join(map(repr, parameters))});\n"
                     for name, parameters, _, p, _, _ in points)
    with tempfile.NamedTemporaryFile("w", suffix=".vx") as file:
        file.write(script)
        file.flush()
        done = subprocess.run([command, "--json", "--quiet", file.name], capture_output=True, text=True,
                              timeout=300)
    found = {}
    for (name, parameters, x, p, slope, shift), line in zip(points, done.stdout.splitlines(), strict=True):
        got = json.loads(line)
        if not isinstance(got, (int, float)):
            scaled = math.inf
        elif name.startswith("noncentral"):
            unit = GOAL * max(x, 1 / slope) + 1e-15
            scaled = abs((got - x) - shift) / unit
        else:
            scaled = 0.0 if got == x else math.inf
        found.setdefault((name, "quantile L"), {}).setdefault("vexel", []).append(
            (scaled, *parameters, x, p))
    return found


def cell(errors):
    if not errors:
        return "–"
    scaled = sorted(e[0] for e in errors)
    return f"{scaled[len(scaled) // 2]:.2g}, {scaled[-1]:.2g}"


def main():
    titles, found = collect(Library(sys.argv[1]))
    if len(sys.argv) > 2 and not sys.argv[2].startswith("--"):
        found.update(searched(sys.argv[2]))
        order = list(TITLES)
        found = dict(sorted(found.items(), key=lambda item: (order.index(item[0][0]), item[0][1][-1])))
    lines = ["| distribution | operation | points | " + " | ".join(titles) + " |",
             "|---" * (3 + len(titles)) + "|"]
    for (name, operation), errors in found.items():
        cells = " | ".join(cell(errors.get(title)) for title in titles)
        lines.append(f"| {TITLES[name]} | {operation} | {len(errors['vexel'])} | {cells} |")
        worst = max(errors["vexel"])
        if worst[0] > 0.5:
            print(f"{name} {operation}: {worst[0]:.2g} at {worst[1:]}", file=sys.stderr)
    print("\n".join(lines))
    if "--markdown" in sys.argv:
        with open(PAGE, "w") as page:
            page.write(INTRODUCTION + "\n" + "\n".join(lines) + "\n")


if __name__ == "__main__":
    main()
