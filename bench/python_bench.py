"""The package beside NumPy, SciPy, bottleneck and pandas, each job in one run with its peers.

    PYTHONPATH=build/python python3 bench/python_bench.py [word of a job's name ...]

Times are the least processor times of many short runs; ratios are to the fastest peer there.  What is not installed
is left out.
"""

import importlib
import sys
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

generator = np.random.default_rng(1)
ten = generator.normal(size=10)
x = generator.normal(size=10**6)
matrix = x.reshape(1000, 1000)
ties = generator.integers(0, 100, 10**6)
some = x[:100_000]
p = generator.uniform(size=100_000)
normal, gamma, student, poisson = vx.Normal(), vx.Gamma(2.5, 2), vx.StudentT(3.5), vx.Poisson(40)
rng = vx.Random(1)
numpys = np.random.default_rng(1)

# Job: ours, then peers by name; None where a peer lacks it.
JOBS = {
    "scalar: Normal().cdf": (lambda: normal.cdf(1.0), {"scipy": ss and (lambda f=ss.norm(): lambda: f.cdf(1.0))()}),
    "scalar: Gamma().sf": (lambda: gamma.sf(40.0), {"scipy": ss and (lambda f=ss.gamma(2.5, scale=2): lambda: f.sf(40.0))()}),
    "scalar: mean of 10": (lambda: vx.mean(ten), {"numpy": lambda: np.mean(ten), "bottleneck": bn and (lambda: bn.nanmean(ten))}),
    "scalar: std of 10": (lambda: vx.std(ten), {"numpy": lambda: np.std(ten, ddof=1)}),
    "scalar: median of 10": (lambda: vx.median(ten), {"numpy": lambda: np.median(ten), "bottleneck": bn and (lambda: bn.median(ten))}),
    "scalar: quantile of 10": (lambda: vx.quantile(ten, 0.9), {"numpy": lambda: np.quantile(ten, 0.9)}),
    "scalar: a uniform": (lambda: rng.uniform(), {"numpy": lambda: numpys.random()}),
    "mean 1e6": (lambda: vx.mean(x), {"numpy": lambda: np.mean(x), "bottleneck": bn and (lambda: bn.nanmean(x))}),
    "mean 1000x1000, axis 0": (lambda: vx.mean(matrix, axis=0), {"numpy": lambda: np.mean(matrix, axis=0)}),
    "std 1e6": (lambda: vx.std(x), {"numpy": lambda: np.std(x, ddof=1), "bottleneck": bn and (lambda: bn.nanstd(x))}),
    "median 1e6": (lambda: vx.median(x), {"numpy": lambda: np.median(x), "bottleneck": bn and (lambda: bn.median(x))}),
    "three quantiles 1e6": (lambda: vx.quantile(x, [0.25, 0.5, 0.75]), {"numpy": lambda: np.quantile(x, [0.25, 0.5, 0.75])}),
    "describe 1e6": (lambda: vx.describe(x), {"pandas": pd and (lambda s=pd.Series(x): lambda: s.describe())()}),
    "skewness 1e6": (lambda: vx.skewness(x), {"scipy": ss and (lambda: ss.skew(x))}),
    "sort 1e6": (lambda: vx.sort(x), {"numpy": lambda: np.sort(x)}),
    "rank 1e6": (lambda: vx.rank(x), {"scipy": ss and (lambda: ss.rankdata(x)), "bottleneck": bn and (lambda: bn.rankdata(x))}),
    "tally 1e6": (lambda: vx.tally(ties), {"numpy": lambda: np.unique(ties, return_counts=True)}),
    "histogram 1e6": (lambda: vx.histogram(x, 50), {"numpy": lambda: np.histogram(x, 50)}),
    "moving median 1e5, 101": (lambda: vx.moving(some, 101, "median"), {
        "bottleneck": bn and (lambda: bn.move_median(some, 101, 1)), "pandas": pd and (lambda s=pd.Series(some): lambda: s.rolling(101, min_periods=1).median())()}),
    "kendall 1e5": (lambda: vx.corr(some, some[::-1], method="kendall"), {"scipy": ss and (lambda: ss.kendalltau(some, some[::-1]))}),
    "kde 1e5": (lambda: vx.kde(some), {}),
    "Normal cdf 1e5": (lambda: normal.cdf(some), {"scipy": ss and (lambda: ss.norm.cdf(some)), "scipy.special": sp and (lambda: sp.ndtr(some))}),
    "Gamma cdf 1e5": (lambda: gamma.cdf(abs(some)), {"scipy": ss and (lambda: ss.gamma.cdf(abs(some), 2.5, scale=2))}),
    "StudentT quantile 1e5": (lambda: student.quantile(p), {"scipy": ss and (lambda: ss.t.ppf(p, 3.5))}),
    "Poisson quantile 1e5": (lambda: poisson.quantile(p), {"scipy": ss and (lambda: ss.poisson.ppf(p, 40))}),
    "normal 1e6": (lambda: rng.normal(10**6), {"numpy": lambda: numpys.normal(size=10**6)}),
    "uniform 1e6": (lambda: rng.uniform(10**6), {"numpy": lambda: numpys.random(10**6)}),
    "Gamma sample 1e6": (lambda: gamma.sample(10**6, rng), {"numpy": lambda: numpys.gamma(2.5, 2, 10**6)}),
    "Sobol 65536 x 10": (lambda: vx.Sobol(10).points(65536), {"scipy": ss and (lambda: ss.qmc.Sobol(10, scramble=False).random(65536))}),
    "bootstrap 1000, 9999": (lambda: vx.bootstrap(x[:1000], "mean", rng=1), {
        "scipy": ss and (lambda: ss.bootstrap((x[:1000],), np.mean))}),
}


def least(functions, budget=0.5):
    """Processor seconds of a call of each: the least of short runs taken in turn, so that other work troubles
    all alike.  Of what two threads do they are the sum."""
    runs = []
    for f in functions:
        start = time.perf_counter()
        f()
        runs.append((f, max(1, int(0.01 / max(time.perf_counter() - start, 1e-8)))))
    found = [float("inf")] * len(runs)
    end = time.perf_counter() + budget * len(runs)
    rounds = 0
    while rounds < 3 or (rounds < 25 and time.perf_counter() < end):
        rounds += 1
        for i, (f, number) in enumerate(runs):
            found[i] = min(found[i], timeit.timeit(f, number=number, timer=time.process_time) / number)
    return found


def shown(seconds):
    for unit, size in (("s", 1.0), ("ms", 1e-3), ("us", 1e-6)):
        if seconds >= size:
            return f"{seconds / size:.3g} {unit}"
    return f"{seconds * 1e9:.0f} ns"


def main(words):
    for name, (ours, peers) in JOBS.items():
        if words and not any(w in name for w in words):
            continue
        names = [n for n, f in peers.items() if f]
        mine, *others = least([ours, *(peers[n] for n in names)])
        theirs = dict(zip(names, others))
        ratio = f"  {min(theirs.values()) / mine:6.2f} x" if theirs else ""
        print(f"{name:26} {shown(mine):>9}{ratio:11}  " + ", ".join(f"{n} {shown(t)}" for n, t in theirs.items()), flush=True)


if __name__ == "__main__":
    main(sys.argv[1:])
