"""SciPy's names: `from vexel.compat import scipy as stats` in place of `from scipy import stats`.

Distributions take their shapes, `loc` and `scale` as SciPy's do, at each call or frozen; functions
take SciPy's arguments and give results that unpack like SciPy's.  What differs from SciPy, and why,
is in docs/from-scipy.md.

Examples
--------
>>> from vexel.compat import scipy as stats
>>> stats.norm.cdf([0, 1.0], loc=1)
array([0.15865525, 0.5       ])
>>> frozen = stats.gamma(2.5, scale=2)
>>> frozen.mean(), frozen.args
(5.0, (2.5,))
"""

from __future__ import annotations

from collections.abc import Callable
from itertools import accumulate
from math import factorial
from types import SimpleNamespace
from typing import Any, NamedTuple

import numpy as np

import vexel as vx
from vexel._results import TestResult
from vexel.compat._families import Family, Frozen, stream

# ---- distributions

def _fitted(law: Any, back: Callable[[dict[str, Any]], tuple[float, ...]]) -> Callable[..., Any]:
    return lambda data: back(law.fit(data).parameters)


def _both(p: dict[str, Any]) -> tuple[float, ...]:
    return tuple(p.values())


norm = Family("norm", "", vx.Normal, located=True, fit=_fitted(vx.Normal, _both))
lognorm = Family("lognorm", "s", lambda s, scale: vx.LogNormal(np.log(scale), s), scaled=True,
                  fit=_fitted(vx.LogNormal, lambda p: (p["sigma"], 0.0, float(np.exp(p["mu"])))))
uniform = Family("uniform", "", lambda loc, scale: vx.Uniform(loc, loc + scale), located=True,
                  fit=_fitted(vx.Uniform, lambda p: (p["a"], p["b"] - p["a"])))
expon = Family("expon", "", vx.Exponential, scaled=True,
                fit=_fitted(vx.Exponential, lambda p: (0.0, p["scale"])))
gamma = Family("gamma", "a", vx.Gamma, scaled=True,
                fit=_fitted(vx.Gamma, lambda p: (p["shape"], 0.0, p["scale"])))
beta = Family("beta", "a b", vx.Beta)
chi2 = Family("chi2", "df", vx.ChiSquare)
t = Family("t", "df", vx.StudentT)
f = Family("f", "dfn dfd", vx.FRatio)
cauchy = Family("cauchy", "", vx.Cauchy, located=True, fit=_fitted(vx.Cauchy, _both))
laplace = Family("laplace", "", vx.Laplace, located=True, fit=_fitted(vx.Laplace, _both))
logistic = Family("logistic", "", vx.Logistic, located=True, fit=_fitted(vx.Logistic, _both))
gumbel_r = Family("gumbel_r", "", vx.Gumbel, located=True, fit=_fitted(vx.Gumbel, _both))
weibull_min = Family("weibull_min", "c", vx.Weibull, scaled=True,
                      fit=_fitted(vx.Weibull, lambda p: (p["shape"], 0.0, p["scale"])))
pareto = Family("pareto", "b", vx.Pareto, scaled=True,
                 fit=_fitted(vx.Pareto, lambda p: (p["shape"], 0.0, p["minimum"])))
powerlaw = Family("powerlaw", "a", vx.Power, scaled=True,
                   fit=_fitted(vx.Power, lambda p: (p["shape"], 0.0, p["maximum"])))
rayleigh = Family("rayleigh", "", vx.Rayleigh, scaled=True,
                   fit=_fitted(vx.Rayleigh, lambda p: (0.0, p["scale"])))
maxwell = Family("maxwell", "", vx.Maxwell, scaled=True,
                  fit=_fitted(vx.Maxwell, lambda p: (0.0, p["scale"])))
triang = Family("triang", "c", lambda c, loc, scale: vx.Triangular(loc, loc + scale, loc + c * scale),
                 located=True)
invgauss = Family("invgauss", "mu", lambda mu, scale: vx.InverseGaussian(mu * scale, scale), scaled=True,
                   fit=_fitted(vx.InverseGaussian, lambda p: (p["mean"] / p["shape"], 0.0, p["shape"])))
moyal = Family("moyal", "", vx.Moyal, located=True, fit=_fitted(vx.Moyal, _both))
gennorm = Family("gennorm", "beta", lambda b, loc, scale:
                  vx.ExponentialPower(loc, scale * 2 ** (-1 / b), 2 / b), located=True,
                  fit=_fitted(vx.ExponentialPower, lambda p: (2 / p["shape"], p["location"], p["scale"] * 2 ** (p["shape"] / 2))))
ncx2 = Family("ncx2", "df nc", vx.NonCentralChiSquare)
ncf = Family("ncf", "dfn dfd nc", vx.NonCentralFRatio)
nct = Family("nct", "df nc", vx.NonCentralStudentT)
bernoulli = Family("bernoulli", "p", vx.Bernoulli)
binom = Family("binom", "n p", vx.Binomial)
poisson = Family("poisson", "mu", vx.Poisson)
geom = Family("geom", "p", vx.Geometric, shift=1)
nbinom = Family("nbinom", "n p", vx.NegativeBinomial)
hypergeom = Family("hypergeom", "M n N", vx.Hypergeometric)
randint = Family("randint", "low high", lambda low, high: vx.DiscreteUniform(low, high - 1))


# ---- functions

def gmean(a: Any, axis: Any = 0, dtype: Any = None, weights: Any = None, nan_policy: Any = "propagate") -> Any:
    return vx.mean(a if dtype is None else np.asarray(a, dtype), kind="geometric", axis=axis, weights=weights, nan_policy=nan_policy)


def hmean(a: Any, axis: Any = 0, dtype: Any = None, *, weights: Any = None, nan_policy: Any = "propagate") -> Any:
    return vx.mean(a if dtype is None else np.asarray(a, dtype), kind="harmonic", axis=axis, weights=weights, nan_policy=nan_policy)


def moment(a: Any, order: Any = 1, axis: Any = 0, nan_policy: Any = "propagate", *, center: Any = None) -> Any:
    return vx.moment(a, order, axis=axis, nan_policy=nan_policy, center=center)


def skew(a: Any, axis: Any = 0, bias: bool = True, nan_policy: Any = "propagate") -> Any:
    return vx.skewness(a, axis=axis, bias=bias, nan_policy=nan_policy)


def kurtosis(a: Any, axis: Any = 0, fisher: bool = True, bias: bool = True,
             nan_policy: Any = "propagate") -> Any:
    return vx.kurtosis(a, axis=axis, bias=bias, nan_policy=nan_policy) + (0 if fisher else 3)


def trim_mean(a: Any, proportiontocut: float, axis: Any = 0) -> Any:
    return vx.trimmed_mean(a, proportiontocut, axis=axis)


def iqr(x: Any, axis: Any = None, rng: tuple[float, float] = (25, 75), scale: Any = 1.0, nan_policy: Any = "propagate",
        interpolation: str = "linear", keepdims: bool = False) -> Any:
    if interpolation != "linear":
        raise NotImplementedError(f'iqr: interpolation must be "linear", got {interpolation!r}')
    divisor = 2 * vx.Normal().quantile(0.75) if scale == "normal" else scale
    if tuple(rng) == (25, 75):
        return vx.iqr(x, axis=axis, nan_policy=nan_policy, keepdims=keepdims) / divisor
    low, high = vx.quantile(x, np.sort(rng) / 100, axis=axis, nan_policy=nan_policy, keepdims=keepdims)
    return (high - low) / divisor


def median_abs_deviation(x: Any, axis: Any = 0, *, scale: Any = 1.0, nan_policy: Any = "propagate") -> Any:
    factor = 1 / vx.Normal().quantile(0.75) if scale == "normal" else 1 / scale
    return vx.median_absolute_deviation(x, scale=factor, axis=axis, nan_policy=nan_policy)


def sem(a: Any, axis: Any = 0, ddof: int = 1, nan_policy: Any = "propagate") -> Any:
    a = np.asarray(a, dtype=np.float64)
    n = np.sum(~np.isnan(a), axis=axis)
    return vx.std(a, ddof=ddof, axis=axis, nan_policy=nan_policy) / np.sqrt(n)


def rankdata(a: Any, method: Any = "average", *, axis: Any = None, nan_policy: Any = "propagate") -> Any:
    ranks = vx.rank(np.reshape(a, -1) if axis is None else a, method=method, axis=-1 if axis is None else axis, nan_policy=nan_policy)
    if nan_policy == "propagate" and np.isnan(ranks).any():  # one missing value, and none of its lane has a rank
        ranks[np.broadcast_to(np.isnan(ranks).any(axis=axis, keepdims=True), ranks.shape)] = np.nan
    return ranks


class DescribeResult(NamedTuple):
    nobs: Any
    minmax: tuple[Any, Any]
    mean: Any
    variance: Any
    skewness: Any
    kurtosis: Any


def describe(a: Any, axis: Any = 0, ddof: int = 1, bias: bool = True, nan_policy: Any = "propagate") -> Any:
    d = vx.describe(a, axis=axis, nan_policy=nan_policy)
    options = {"axis": axis, "nan_policy": nan_policy}
    nobs = np.asarray(d.count if nan_policy == "omit" else np.add(d.count, d.missing)).astype(int)
    return DescribeResult(nobs[()] if nan_policy == "omit" else int(nobs.flat[0]), (d.min, d.max), d.mean,
                          vx.var(a, ddof=ddof, **options), vx.skewness(a, bias=bias, **options), vx.kurtosis(a, bias=bias, **options))


def pearsonr(x: Any, y: Any) -> Any:
    return _correlation(x, y, "pearson")


def spearmanr(a: Any, b: Any = None, axis: Any = 0, nan_policy: Any = "propagate") -> Any:
    if axis is None:
        a, b = np.ravel(a), b if b is None else np.ravel(b)
    if b is not None and np.ndim(a) == np.ndim(b) == 1:
        return _correlation(a, b, "spearman", nan_policy)
    tables = [np.atleast_2d(m).T if np.ndim(m) < 2 or axis == 1 else np.asarray(m) for m in (a, b) if m is not None]
    columns = np.hstack(tables)
    if columns.shape[1] < 2:
        raise ValueError(f"spearmanr: a must be two variables, got {columns.shape[1]}")
    if columns.shape[1] == 2:
        return _correlation(columns[:, 0], columns[:, 1], "spearman", nan_policy)
    found = np.array([[_correlation(x, y, "spearman", nan_policy) for y in columns.T] for x in columns.T])
    return TestResult(*np.moveaxis(found, -1, 0))


def kendalltau(x: Any, y: Any, *, nan_policy: Any = "propagate", method: str = "auto", variant: str = "b",
               alternative: str = "two-sided") -> Any:
    """Tau-b; its p-value from the law of the count of inversions, or from the normal law with ties and many values."""
    if variant != "b" or method not in ("auto", "exact", "asymptotic") or alternative != "two-sided":
        raise NotImplementedError('kendalltau: variant="b" and alternative="two-sided" are what there is')
    x, y = np.ravel(x), np.ravel(y)
    tau = vx.corr(x, y, method="kendall", nan_policy=nan_policy)
    if np.isnan(tau):
        return TestResult(np.nan, np.nan)
    there = ~(np.isnan(np.asarray(x, dtype=float)) | np.isnan(np.asarray(y, dtype=float)))
    ties = [vx.tally(v[there]).counts for v in (x, y)]
    n = int(there.sum())
    pairs = n * (n - 1)
    tied = [float(np.sum(c * (c - 1))) for c in ties]
    score = round(tau * np.sqrt((pairs - tied[0]) * (pairs - tied[1])) / 2)  # concordant less discordant pairs
    far = (pairs // 2 - abs(score)) // 2
    if method == "exact" and any(tied):
        raise ValueError("kendalltau: method must not be exact where there are ties")
    if method == "exact" or method == "auto" and not any(tied) and (n <= 33 or far <= 1):
        return TestResult(tau, _few_inversions(n, far) if score else 1.0)
    second = [float(np.sum(c * (c - 1) * (2 * c + 5))) for c in ties]
    third = [float(np.sum(c * (c - 1) * (c - 2))) for c in ties]
    variance = (pairs * (2 * n + 5) - sum(second)) / 18 + tied[0] * tied[1] / (2 * pairs)
    if n > 2:
        variance += third[0] * third[1] / (9 * pairs * (n - 2))
    return TestResult(tau, 2 * vx.Normal().sf(abs(score) / float(np.sqrt(variance))))


def _few_inversions(n: int, most: int) -> float:
    """Twice the share of the orders of n values that have at most so many inversions."""
    counts = [1] + [0] * most
    for k in range(2, n + 1):
        sums = [0, *accumulate(counts)]
        counts = [sums[i + 1] - sums[max(0, i + 1 - k)] for i in range(most + 1)]
    return min(1.0, 2 * sum(counts) / factorial(n))


def _correlation(x: Any, y: Any, method: Any, nan_policy: Any = "propagate") -> Any:
    """The coefficient and its p-value by Student's t of n - 2."""
    r, n = vx.corr(x, y, method=method, nan_policy=nan_policy), len(np.asarray(x))
    if nan_policy == "omit":
        n -= int((np.isnan(np.asarray(x, dtype=float)) | np.isnan(np.asarray(y, dtype=float))).sum())
    if n < 3 or np.isnan(r):
        return TestResult(r, 1.0 if n == 2 else float("nan"))
    square = r * r
    t = abs(r) * np.sqrt((n - 2) / (1 - square)) if square < 1 else np.inf
    return TestResult(r, 2 * vx.StudentT(n - 2).sf(float(t)))


def shapiro(x: Any) -> Any:
    return vx.shapiro(x)


def _along(test: Callable[..., Any], axis: Any, *samples: Any) -> Any:
    """A test along an axis of arrays of several dimensions."""
    if axis is None or all(np.ndim(s) < 2 for s in samples):
        return test(*samples)
    lanes = [np.moveaxis(np.asarray(s), axis, -1) for s in samples]
    shape = np.broadcast_shapes(*(a.shape[:-1] for a in lanes))
    lanes = [np.broadcast_to(a, (*shape, a.shape[-1])) for a in lanes]
    found = np.empty((2, *shape))
    for at in np.ndindex(shape):
        found[(slice(None), *at)] = test(*(a[at] for a in lanes))
    return TestResult(*found)


def _one_sided(found: Any, alternative: str) -> Any:
    """The p-value of Student's test for the alternative, from the two-sided one."""
    if alternative == "two-sided":
        return found
    if alternative not in ("less", "greater"):
        raise ValueError(f'alternative must be "two-sided", "less" or "greater", got {alternative!r}')
    t, p = found.statistic, found.pvalue / 2
    return TestResult(t, np.where((np.asarray(t) > 0) == (alternative == "greater"), p, 1 - p)[()])


def ttest_1samp(a: Any, popmean: float, axis: Any = 0, nan_policy: Any = "propagate", alternative: str = "two-sided") -> Any:
    return _one_sided(_along(lambda a: vx.t_test(a, mean=popmean, nan_policy=nan_policy), axis, a), alternative)


def ttest_ind(a: Any, b: Any, axis: Any = 0, equal_var: bool = True, nan_policy: Any = "propagate",
              *, alternative: str = "two-sided") -> Any:
    return _one_sided(_along(lambda a, b: vx.t_test(a, b, equal_var=equal_var, nan_policy=nan_policy), axis, a, b), alternative)


def ttest_rel(a: Any, b: Any, axis: Any = 0, nan_policy: Any = "propagate", alternative: str = "two-sided") -> Any:
    return ttest_1samp(np.asarray(a, dtype=float) - np.asarray(b, dtype=float), 0, axis, nan_policy, alternative)


def chisquare(f_obs: Any, f_exp: Any = None, ddof: int = 0, axis: Any = 0) -> Any:
    samples = (f_obs,) if f_exp is None else (f_obs, f_exp)
    return _along(lambda o, e=None: vx.chi_square_test(o, e, ddof=ddof), axis, *samples)


def kstest(rvs: Any, cdf: Any, args: tuple[Any, ...] = ()) -> Any:
    if isinstance(cdf, str):
        cdf = globals()[cdf]
    if isinstance(cdf, Family):
        cdf = cdf(*args)
    if isinstance(cdf, Frozen):  # a law of its own loc and scale as itself, another by its values
        return vx.ks_test(rvs, cdf._law if (cdf._loc, cdf._scale) == (0, 1) and cdf._law is not None else cdf.cdf)
    return vx.ks_test(rvs, (lambda x: cdf(x, *args)) if args else cdf)


ks_1samp = kstest


def bootstrap(data: Any, statistic: Any, *, n_resamples: int = 9999, confidence_level: float = 0.95,
              method: Any = "BCa", random_state: Any = None, rng: Any = None) -> Any:
    if len(data) != 1:
        raise NotImplementedError(f"bootstrap: data must be of one sample, as (x,), got {len(data)}")
    (sample,) = data
    b = vx.bootstrap(sample, statistic, replicates=n_resamples, confidence=confidence_level,
                     method=method, rng=stream(random_state) if rng is None else rng)
    return SimpleNamespace(confidence_interval=b.interval, standard_error=b.standard_error,
                           bootstrap_distribution=b.replicates)


class gaussian_kde:  # noqa: N801
    """SciPy's class over `vexel.kde`; bw_method is a factor of the standard deviation, or a rule."""

    def __init__(self, dataset: Any, bw_method: Any = None, weights: Any = None) -> None:
        self.dataset = np.atleast_2d(np.asarray(dataset, dtype=np.float64))
        self.d, self.n = self.dataset.shape
        if self.d > 1:
            raise NotImplementedError(f"gaussian_kde: dataset must be of one dimension, got {self.d}")
        x = self.dataset[0]
        self.weights = np.full(self.n, 1 / self.n) if weights is None else np.asarray(weights) / np.sum(weights)
        # Shares that say how far to trust each point: not frequencies.
        squares = float(np.sum(self.weights**2))
        self.neff = 1 / squares
        if bw_method is None or bw_method == "scott":
            self.factor = self.neff ** -0.2
        elif bw_method == "silverman":
            self.factor = (self.neff * 0.75) ** -0.2
        else:
            self.factor = float(bw_method(self) if callable(bw_method) else bw_method)
        sd = vx.std(x, weights=self.weights, ddof=squares)
        self._density = vx.kde(x, bandwidth=self.factor * sd, weights=None if weights is None else self.weights)

    def __call__(self, points: Any) -> Any:
        return self._density(np.reshape(points, -1))

    evaluate = pdf = __call__

    def resample(self, size: Any = None, seed: Any = None) -> Any:
        return np.atleast_2d(self._density.sample(int(self.neff) if size is None else size, stream(seed)))

    def integrate_box_1d(self, low: float, high: float) -> float:
        return float(self._density.cdf(high) - self._density.cdf(low))


def _engine(kind: Any) -> Any:
    """A sequence that is scrambled by default, as SciPy's engines are."""

    class Engine(kind):  # type: ignore[misc]
        __doc__ = kind.__doc__

        def __init__(self, d: int, *, scramble: bool = True, seed: Any = None, rng: Any = None) -> None:
            super().__init__(d, scramble=scramble, rng=stream(seed) if rng is None else rng)

    Engine.__name__ = Engine.__qualname__ = kind.__name__
    return Engine


qmc = SimpleNamespace(Sobol=_engine(vx.Sobol), Halton=_engine(vx.Halton))

_OURS = frozenset(("annotations", "accumulate", "factorial", "np", "vx", "stream", "Any", "Callable", "Family", "Frozen", "NamedTuple", "SimpleNamespace",
                   "TestResult"))
__all__ = [name for name in globals() if not name.startswith("_") and name not in _OURS and name != "DescribeResult"]


def __dir__() -> list[str]:
    return sorted(__all__)
