"""The package beside NumPy, SciPy, bottleneck and pandas, each job in one run with its peers.

    PYTHONPATH=build/python python3 bench/python_bench.py [--wall] [--table] [--behind] [word of a job's name ...]

Times are the least processor times of many short runs, those of two threads added up; with --wall the least times
by the clock.  Ratios are to the fastest peer there.  What is not installed is left out.  --table writes rows of
Markdown, --behind only what takes longer here than in some peer.
"""

import argparse
import importlib
import time
import timeit

import numpy as np

import vexel as vx

PEERS = {}
for module in ("scipy.stats", "scipy.special", "bottleneck", "pandas"):
    try:
        PEERS[module] = importlib.import_module(module)
    except ImportError:
        print(f"({module} is not installed)")
ss, sp, bn, pd = (PEERS.get(m) for m in ("scipy.stats", "scipy.special", "bottleneck", "pandas"))


def normal(*shape):
    return np.random.default_rng(1).normal(size=shape)


# Each group makes its data and gives jobs: name, ours, peers by name; a peer that lacks it is None.

def scalars():
    ten, law, gamma, rng, numpys = normal(10), vx.Normal(), vx.Gamma(2.5, 2), vx.Random(1), np.random.default_rng(1)
    hundred, matrix = normal(100), normal(10, 3)
    there = ss and (ss.norm(), ss.gamma(2.5, scale=2))
    yield "Normal().cdf", lambda: law.cdf(1.0), {"scipy": ss and (lambda: there[0].cdf(1.0))}
    yield "Gamma().sf", lambda: gamma.sf(40.0), {"scipy": ss and (lambda: there[1].sf(40.0))}
    yield "mean of 10", lambda: vx.mean(ten), {"numpy": lambda: np.mean(ten), "bottleneck": bn and (lambda: bn.nanmean(ten))}
    yield "std of 10", lambda: vx.std(ten), {"numpy": lambda: np.std(ten, ddof=1), "bottleneck": bn and (lambda: bn.nanstd(ten, ddof=1))}
    yield "median of 10", lambda: vx.median(ten), {"numpy": lambda: np.median(ten), "bottleneck": bn and (lambda: bn.median(ten))}
    yield "quantile of 10", lambda: vx.quantile(ten, 0.9), {"numpy": lambda: np.quantile(ten, 0.9)}
    yield "mean of 10 x 3, axis 0", lambda: vx.mean(matrix, axis=0), {"numpy": lambda: np.mean(matrix, axis=0)}
    yield "sort of 100", lambda: vx.sort(hundred), {"numpy": lambda: np.sort(hundred)}
    yield "argsort of 100", lambda: vx.argsort(hundred), {"numpy": lambda: np.argsort(hundred, kind="stable")}
    yield "rank of 100", lambda: vx.rank(hundred), {"scipy": ss and (lambda: ss.rankdata(hundred)), "bottleneck": bn and (lambda: bn.rankdata(hundred))}
    yield "median of 100", lambda: vx.median(hundred), {"numpy": lambda: np.median(hundred), "bottleneck": bn and (lambda: bn.median(hundred))}
    yield "a uniform", lambda: rng.uniform(), {"numpy": lambda: numpys.random()}


def axes():
    for shape in ((10**6, 10), (10**5, 100), (1000, 1000), (100, 10**5), (10, 10**6), (100, 100, 1000)):
        for kind in ("float64", "float32"):
            x = np.random.default_rng(1).normal(size=shape).astype(kind)
            for axis in range(x.ndim):
                def name(what):
                    return f"{what} {' x '.join(map(str, shape))}, axis {axis}" + (", float32" if kind == "float32" else "")
                jobs = {"mean": (lambda: vx.mean(x, axis=axis), lambda: np.mean(x, axis=axis), bn and (lambda: bn.nanmean(x, axis))),
                        "var": (lambda: vx.var(x, axis=axis), lambda: np.var(x, axis=axis, ddof=1), bn and (lambda: bn.nanvar(x, axis, ddof=1))),
                        "std": (lambda: vx.std(x, axis=axis), lambda: np.std(x, axis=axis, ddof=1), bn and (lambda: bn.nanstd(x, axis, ddof=1))),
                        "median": (lambda: vx.median(x, axis=axis), lambda: np.median(x, axis=axis), bn and (lambda: bn.median(x, axis))),
                        "minimum": (lambda: vx.quantile(x, 0, axis=axis), lambda: np.min(x, axis=axis), bn and (lambda: bn.nanmin(x, axis))),
                        "maximum": (lambda: vx.quantile(x, 1, axis=axis), lambda: np.max(x, axis=axis), bn and (lambda: bn.nanmax(x, axis))),
                        "iqr": (lambda: vx.iqr(x, axis=axis), lambda: np.subtract(*np.quantile(x, [0.75, 0.25], axis=axis)), None),
                        "sort": (lambda: vx.sort(x, axis=axis), lambda: np.sort(x, axis=axis), None),
                        "argsort": (lambda: vx.argsort(x, axis=axis), lambda: np.argsort(x, axis=axis, kind="stable"), None),
                        "rank": (lambda: vx.rank(x, axis=axis), None, bn and (lambda: bn.rankdata(x, axis))),
                        "quartiles": (lambda: vx.quantile(x, [0.25, 0.5, 0.75], axis=axis), lambda: np.quantile(x, [0.25, 0.5, 0.75], axis=axis), None)}
                for what, (ours, numpys, bns) in jobs.items():
                    yield name(what), ours, {"numpy": numpys, "bottleneck": bns}
            if ss and x.ndim == 2 and kind == "float64" and x.shape[0] in (10**5, 1000):
                yield name("moment 3"), lambda: vx.moment(x, 3, axis=axis), {"scipy": lambda: ss.moment(x, 3, axis=axis)}


def summaries():
    x = normal(10**6)
    few, some, q = x[:1000], normal(10**5), np.arange(1, 100) / 100
    matrix, weights = x.reshape(-1, 10), np.abs(x[::-1])
    for n, y in ((1000, few), (10**6, x)):
        yield f"mean of {n}", lambda: vx.mean(y), {"numpy": lambda: np.mean(y), "bottleneck": bn and (lambda: bn.nanmean(y))}
        yield f"std of {n}", lambda: vx.std(y), {"numpy": lambda: np.std(y, ddof=1), "bottleneck": bn and (lambda: bn.nanstd(y, ddof=1))}
        yield f"median of {n}", lambda: vx.median(y), {"numpy": lambda: np.median(y), "bottleneck": bn and (lambda: bn.median(y))}
        yield f"5th smallest of {n}", lambda: vx.order_statistic(y, 5), {
            "numpy": lambda: np.partition(y, 4)[4], "bottleneck": bn and (lambda: bn.partition(y, 4)[4])}
        yield f"3 quantiles of {n}", lambda: vx.quantile(y, [0.25, 0.5, 0.75]), {"numpy": lambda: np.quantile(y, [0.25, 0.5, 0.75])}
        yield f"99 quantiles of {n}", lambda: vx.quantile(y, q), {"numpy": lambda: np.quantile(y, q)}
        yield f"skewness of {n}", lambda: vx.skewness(y), {"scipy": ss and (lambda: ss.skew(y, bias=False))}
        yield f"kurtosis of {n}", lambda: vx.kurtosis(y), {"scipy": ss and (lambda: ss.kurtosis(y, bias=False))}
        yield f"trimmed mean of {n}", lambda: vx.trimmed_mean(y, 0.1), {"scipy": ss and (lambda: ss.trim_mean(y, 0.1))}
        s = pd and pd.Series(y)
        yield f"describe {n}", lambda: vx.describe(y), {"pandas": pd and (lambda: s.describe()), "scipy": ss and (lambda: ss.describe(y))}
    yield "weighted mean of 1000000", lambda: vx.mean(x, weights=weights), {"numpy": lambda: np.average(x, weights=weights)}
    yield "mean with missing, 1000000", lambda: vx.mean(x, nan_policy="omit"), {"numpy": lambda: np.nanmean(x), "bottleneck": bn and (lambda: bn.nanmean(x))}
    frame = pd and pd.DataFrame(matrix)
    yield "cov 100000 x 10", lambda: vx.cov(matrix), {"numpy": lambda: np.cov(matrix, rowvar=False), "pandas": pd and (lambda: frame.cov())}
    yield "corr 100000 x 10", lambda: vx.corr(matrix), {"numpy": lambda: np.corrcoef(matrix, rowvar=False), "pandas": pd and (lambda: frame.corr())}
    yield "corr of 1000000", lambda: vx.corr(x, weights), {"numpy": lambda: np.corrcoef(x, weights), "scipy": ss and (lambda: ss.pearsonr(x, weights))}
    for n, y in ((1000, few), (10**5, some)):
        z, tied, mine = normal(2, n)[1], (3 * y).round(), (4 * normal(2, n)[1]).round()
        yield f"Spearman of {n}", lambda: vx.corr(y, z, method="spearman"), {"scipy": ss and (lambda: ss.spearmanr(y, z))}
        yield f"Kendall of {n}", lambda: vx.corr(y, z, method="kendall"), {"scipy": ss and (lambda: ss.kendalltau(y, z))}
        yield f"Kendall of {n}, ties", lambda: vx.corr(tied, mine, method="kendall"), {"scipy": ss and (lambda: ss.kendalltau(tied, mine))}


def orders():
    for n in (1000, 10**5, 10**6, 10**7):
        generator = np.random.default_rng(1)
        whole = generator.integers(-2**62, 2**62, n)
        kinds = {"": generator.normal(size=n), ", ties": generator.integers(0, 100, n).astype(float), ", float32": generator.normal(size=n).astype("float32"),
                 ", int64": whole, ", int32": (whole >> 31).astype("int32")}
        for kind, x in kinds.items():
            yield f"sort {n}{kind}", lambda: vx.sort(x), {"numpy": lambda: np.sort(x)}
            if n > 10**6:
                continue
            yield f"argsort {n}{kind}", lambda: vx.argsort(x), {"numpy": lambda: np.argsort(x), "numpy, stable": lambda: np.argsort(x, kind="stable")}
            yield f"rank {n}{kind}", lambda: vx.rank(x), {"scipy": ss and (lambda: ss.rankdata(x)), "bottleneck": bn and (lambda: bn.rankdata(x)),
                                                          "pandas": pd and (lambda s=pd.Series(x): lambda: s.rank())()}
            yield f"tally {n}{kind}", lambda: vx.tally(x), {"numpy": lambda: np.unique(x, return_counts=True),
                                                            "pandas": pd and (lambda s=pd.Series(x): lambda: s.value_counts())()}
            if kind in (", ties", ", int64"):
                yield f"mode {n}{kind}", lambda: vx.mode(x), {"scipy": ss and (lambda: ss.mode(x))}
        y, edges = kinds[""], np.sort(normal(101))
        edges[[0, -1]] = -9, 9
        yield f"histogram {n}, 50 bins", lambda: vx.histogram(y, 50), {"numpy": lambda: np.histogram(y, 50)}
        yield f"histogram {n}, 100 uneven bins", lambda: vx.histogram(y, edges), {"numpy": lambda: np.histogram(y, edges)}
        yield f"cumulative sum {n}", lambda: vx.cumulative(y), {"numpy": lambda: np.cumsum(y)}


def windows():
    for n, w in ((1000, 10), (10**5, 101), (10**6, 101)):
        x = normal(n)
        s = pd and pd.Series(x)
        names = {"mean": "mean", "sum": "sum", "std": "std", "var": "var", "min": "min", "max": "max", "median": "median"}
        for what, theirs in names.items():
            def peer(f, w=w, theirs=theirs):
                return lambda: f(x, w, 1, ddof=1) if theirs in ("std", "var") else f(x, w, 1)
            yield f"moving {what}, {w} of {n}", lambda: vx.moving(x, w, what, align="right", min_count=1), {
                "bottleneck": bn and peer(getattr(bn, "move_" + theirs)),
                "pandas": pd and n <= 10**5 and (lambda r=s.rolling(w, min_periods=1): lambda: getattr(r, theirs)())()}
        for taps in (np.full(16, 1 / 16), np.linspace(0.1, 1, 101)):
            yield f"filter {n}, {taps.size} taps", lambda: vx.filter(x, taps), {
                "numpy": lambda: np.convolve(x, taps), "scipy": ss and (lambda f=importlib.import_module("scipy.signal"): lambda: f.lfilter(taps, 1, x))()}


def tests():
    for n in (1000, 10**5):
        x, z, law = normal(n), normal(2, n)[1], vx.Normal()
        yield f"t test of {n}", lambda: vx.t_test(x), {"scipy": ss and (lambda: ss.ttest_1samp(x, 0))}
        yield f"t test of {n} and {n}", lambda: vx.t_test(x, z), {"scipy": ss and (lambda: ss.ttest_ind(x, z, equal_var=False))}
        yield f"Kolmogorov-Smirnov of {n}", lambda: vx.ks_test(x, law), {"scipy": ss and (lambda: ss.ks_1samp(x, ss.norm.cdf))}
    x, counts = normal(5000), np.random.default_rng(1).poisson(100, 50)
    yield "Shapiro-Wilk of 5000", lambda: vx.shapiro(x), {"scipy": ss and (lambda: ss.shapiro(x))}
    yield "Shapiro-Wilk of 50", lambda: vx.shapiro(x[:50]), {"scipy": ss and (lambda: ss.shapiro(x[:50]))}
    yield "chi-square of 50", lambda: vx.chi_square_test(counts), {"scipy": ss and (lambda: ss.chisquare(counts))}
    for n in (100, 1000):
        y = normal(n)
        yield f"bootstrap of {n}, mean, 9999", lambda: vx.bootstrap(y, "mean", rng=1), {"scipy": ss and (lambda: ss.bootstrap((y,), np.mean))}
        yield f"bootstrap of {n}, median, 9999", lambda: vx.bootstrap(y, "median", rng=1), {"scipy": ss and (lambda: ss.bootstrap((y,), np.median))}
    some, at = normal(10**4), np.linspace(-3, 3, 100)
    ours, theirs = vx.kde(some), ss and ss.gaussian_kde(some)
    yield "kernel density of 10000, made", lambda: vx.kde(some), {"scipy": ss and (lambda: ss.gaussian_kde(some)(np.linspace(-4, 4, 512)))}
    yield "kernel density of 10000 at 100", lambda: ours(at), {"scipy": ss and (lambda: theirs(at))}


def laws():
    x, p = normal(10**5), np.random.default_rng(1).uniform(size=10**5)
    law, gamma, student, poisson, rng = vx.Normal(), vx.Gamma(2.5, 2), vx.StudentT(3.5), vx.Poisson(40), vx.Random(1)
    numpys, n = np.random.default_rng(1), 10**6
    yield "Normal cdf 1e5", lambda: law.cdf(x), {"scipy": ss and (lambda: ss.norm.cdf(x)), "scipy.special": sp and (lambda: sp.ndtr(x))}
    yield "Gamma cdf 1e5", lambda: gamma.cdf(abs(x)), {"scipy": ss and (lambda: ss.gamma.cdf(abs(x), 2.5, scale=2))}
    yield "StudentT quantile 1e5", lambda: student.quantile(p), {"scipy": ss and (lambda: ss.t.ppf(p, 3.5))}
    yield "Poisson quantile 1e5", lambda: poisson.quantile(p), {"scipy": ss and (lambda: ss.poisson.ppf(p, 40))}
    yield "normal 1e6", lambda: rng.normal(n), {"numpy": lambda: numpys.normal(size=n)}
    yield "uniform 1e6", lambda: rng.uniform(n), {"numpy": lambda: numpys.random(n)}
    yield "Gamma sample 1e6", lambda: gamma.sample(n, rng), {"numpy": lambda: numpys.gamma(2.5, 2, n)}
    yield "Sobol 65536 x 10", lambda: vx.Sobol(10).points(65536), {"scipy": ss and (lambda: ss.qmc.Sobol(10, scramble=False).random(65536))}


GROUPS = (scalars, axes, summaries, orders, windows, tests, laws)


def least(functions, timer, budget=0.5):
    """Seconds of a call of each: the least of short runs taken in turn, so that other work troubles all alike."""
    runs = []
    for f in functions:
        f()
        start = time.perf_counter()
        f()
        runs.append((f, max(1, int(0.01 / max(time.perf_counter() - start, 1e-8)))))
    found = [float("inf")] * len(runs)
    end = time.perf_counter() + budget * len(runs)
    rounds = 0
    while rounds < 3 or (rounds < 25 and time.perf_counter() < end):
        rounds += 1
        for i, (f, number) in enumerate(runs):
            found[i] = min(found[i], timeit.timeit(f, number=number, timer=timer) / number)
    return found


def shown(seconds):
    for unit, size in (("s", 1.0), ("ms", 1e-3), ("µs", 1e-6)):
        if seconds >= size:
            return f"{seconds / size:.3g} {unit}"
    return f"{seconds * 1e9:.0f} ns"


def main():
    options = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    for name in ("--wall", "--table", "--behind"):
        options.add_argument(name, action="store_true")
    options.add_argument("words", nargs="*")
    given = options.parse_args()
    timer = time.perf_counter if given.wall else time.process_time
    for group in GROUPS:
        for name, ours, peers in group():
            if given.words and not any(w in name or w == group.__name__ for w in given.words):
                continue
            names = [n for n, f in peers.items() if f]
            mine, *others = least([ours, *(peers[n] for n in names)], timer)
            ratio = min(others) / mine if others else float("nan")
            if given.behind and not ratio < 1:
                continue
            theirs = ", ".join(f"{n} {shown(t)}" for n, t in zip(names, others))
            if given.table:
                print(f"| {name} | {shown(mine)} | {theirs} | {ratio:.2g} |", flush=True)
            else:
                print(f"{name:40} {shown(mine):>9}  {ratio:6.2f} x  {theirs}", flush=True)


if __name__ == "__main__":
    main()
