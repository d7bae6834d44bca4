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
from types import SimpleNamespace
from typing import Any, NamedTuple

import numpy as np

import vexel as vx
from vexel._kinds import Discrete
from vexel._results import TestResult

# ---- distributions

_LINEAR = frozenset(("pdf", "logpdf", "pmf", "logpmf", "cdf", "sf", "logcdf", "logsf"))
_INVERSE = frozenset(("ppf", "isf", "quantile"))


def _stream(random_state: Any) -> Any:
    """What the samplers take of SciPy's forms: NumPy's older generators give a seed."""
    if isinstance(random_state, np.random.RandomState):
        return random_state.randint(0, 2**63 - 1, dtype=np.int64)
    return random_state


class _Frozen:
    """A law moved by loc and stretched by scale, where the law itself has no such parameters."""

    def __init__(self, family: _Family, shapes: tuple[Any, ...], loc: Any, scale: Any) -> None:
        self.dist, self.args = family, shapes
        self.kwds = {"loc": loc, "scale": scale}
        self._law, self._loc, self._scale = family.make(shapes, loc, scale)

    def __getattr__(self, name: str) -> Any:
        if name.startswith("_"):
            raise AttributeError(name)
        method = getattr(self._law, name)
        loc, scale = self._loc, self._scale
        if name in _LINEAR:
            if loc == 0 and scale == 1:
                return method
            if name in ("pdf", "logpdf") and scale != 1:
                if name == "pdf":
                    return lambda x: method(self._standard(x)) / scale
                return lambda x: method(self._standard(x)) - np.log(scale)
            return lambda x: method(self._standard(x))
        if name in _INVERSE:
            return method if loc == 0 and scale == 1 else lambda p: loc + scale * method(p)
        return method

    def _standard(self, x: Any) -> Any:
        return (np.asarray(x, dtype=np.float64) - self._loc) / self._scale

    def __reduce__(self) -> Any:
        return _Frozen, (self.dist, self.args, self.kwds["loc"], self.kwds["scale"])

    def rvs(self, size: Any = None, random_state: Any = None) -> Any:
        values = self._law.sample(size, _stream(random_state))
        return values if self._loc == 0 and self._scale == 1 else self._loc + self._scale * values

    def interval(self, confidence: float) -> tuple[float, float]:
        low, high = self._law.interval(confidence)
        return self._loc + self._scale * low, self._loc + self._scale * high

    def support(self) -> tuple[float, float]:
        low, high = self._law.support()
        return self._loc + self._scale * low, self._loc + self._scale * high

    def mean(self) -> Any:
        return self._loc + self._scale * self._law.mean()

    def median(self) -> Any:
        return self._loc + self._scale * self._law.median()

    def var(self) -> Any:
        return self._scale**2 * self._law.var()

    def std(self) -> Any:
        return self._scale * self._law.std()

    def stats(self, moments: str = "mv") -> Any:
        methods = {"m": self.mean, "v": self.var, "s": self._law.skewness, "k": self._law.kurtosis}
        found = tuple(methods[m]() for m in moments)
        return found if len(found) > 1 else found[0]

    def expect(self, func: Any = None) -> Any:
        raise NotImplementedError("expect: integrate with the quantile, or average over a sample")


class _Several:
    """Frozen arrays of parameters: a law for each element."""

    def __init__(self, family: _Family, parameters: tuple[Any, ...]) -> None:
        self.dist, self.args = family, parameters[:-2]
        self.kwds = dict(zip(("loc", "scale"), parameters[-2:]))

    def __getattr__(self, name: str) -> Any:
        if name.startswith("_"):
            raise AttributeError(name)
        method = getattr(self.dist, name)
        return lambda *x, **kwds: method(*x, *self.args, **self.kwds, **kwds)

    def rvs(self, size: Any = None, random_state: Any = None) -> Any:
        return self.dist.rvs(*self.args, **self.kwds, size=size, random_state=random_state)


class _Family:
    """A distribution by SciPy's name.

    `law(shapes, scale)` gives the law, where it has a scale (a law of its own loc and scale is
    `law(shapes, loc, scale)`, marked by `located`).
    """

    def __init__(self, name: str, shapes: str, law: Callable[..., Any], *, scaled: bool = False,
                 located: bool = False, shift: float = 0, fit: Callable[..., Any] | None = None) -> None:
        self.name = name
        self.shapes = shapes
        self._names = shapes.split()
        # Laws of whole numbers have no scale.
        self._discrete = isinstance(law, type) and issubclass(law, Discrete) or name == "randint"
        self._law, self._scaled, self._located = law, scaled, located
        self._shift, self._fit = shift, fit

    def make(self, shapes: tuple[Any, ...], loc: Any, scale: Any) -> tuple[Any, Any, Any]:
        if self._located:
            return self._law(*shapes, loc, scale), 0, 1
        if self._scaled:
            return self._law(*shapes, scale), loc + self._shift, 1
        if not 0 < scale < np.inf:
            raise ValueError(f"{self.name}: scale must be positive and finite, got {scale}")
        return self._law(*shapes), loc + self._shift, scale

    def _arguments(self, args: tuple[Any, ...], kwds: dict[str, Any]) -> tuple[Any, ...]:
        names = [*self._names, "loc"] if self._discrete else [*self._names, "loc", "scale"]
        if len(args) > len(names):
            raise TypeError(f"{self.name}: at most {len(names)} parameters are allowed, {len(args)} came")
        given = dict(zip(names, args))
        for key in [k for k in kwds if k in names]:
            given[key] = kwds.pop(key)
        missing = [n for n in self._names if n not in given]
        if missing:
            raise TypeError(f"{self.name}: {', '.join(missing)} must be given")
        return (*(given[n] for n in self._names), given.get("loc", 0), given.get("scale", 1))

    def __call__(self, *args: Any, **kwds: Any) -> Any:
        *shapes, loc, scale = parameters = self._arguments(args, kwds)
        if kwds:
            raise TypeError(f"{self.name}: unknown parameters {', '.join(kwds)}")
        if any(np.ndim(p) for p in parameters):
            return _Several(self, parameters)
        return _Frozen(self, tuple(shapes), loc, scale)

    freeze = __call__

    def __reduce__(self) -> str:
        return self.name  # which this module knows it by

    def _apply(self, method: str, x: tuple[Any, ...], args: tuple[Any, ...], kwds: dict[str, Any]) -> Any:
        parameters = self._arguments(args, kwds)
        if all(np.ndim(p) == 0 for p in parameters):
            return getattr(_Frozen(self, parameters[:-2], *parameters[-2:]), method)(*x, **kwds)
        # Arrays of parameters: a law for each element.
        all_of = np.broadcast_arrays(*x, *parameters)
        n = len(x)
        found = []
        for at in np.ndindex(all_of[0].shape):
            values = [a[at].item() for a in all_of]
            found.append(getattr(_Frozen(self, tuple(values[n:-2]), *values[-2:]), method)(*values[:n], **kwds))
        if found and isinstance(found[0], tuple):  # the ends of an interval, several moments
            return tuple(np.array(part).reshape(all_of[0].shape) for part in zip(*found))
        return np.array(found, dtype=np.float64).reshape(all_of[0].shape)

    def __getattr__(self, name: str) -> Any:
        if name in _LINEAR or name in _INVERSE:
            return lambda x, *args, **kwds: self._apply(name, (x,), args, kwds)
        if name in ("mean", "median", "var", "std", "stats", "support"):
            return lambda *args, **kwds: self._apply(name, (), args, kwds)
        if name == "interval":
            return lambda confidence, *args, **kwds: self._apply(name, (confidence,), args, kwds)
        raise AttributeError(f"{self.name} has no {name}")

    def rvs(self, *args: Any, size: Any = None, random_state: Any = None, **kwds: Any) -> Any:
        last = len(self._names) + (1 if self._discrete else 2)
        if len(args) > last and size is None:  # after the parameters by position, as in SciPy
            size, *others = args[last:]
            random_state = others[0] if others else random_state
            args = args[:last]
        parameters = self._arguments(args, kwds)
        if kwds:
            raise TypeError(f"{self.name}: unknown parameters {', '.join(kwds)}")
        if not any(np.ndim(p) for p in parameters):
            return _Frozen(self, parameters[:-2], *parameters[-2:]).rvs(size, random_state)
        # Arrays of parameters: one variate of each law, all from one stream.
        given = _stream(random_state)
        if isinstance(given, np.random.Generator):
            given = int(given.integers(2**63 - 1))
        rng = given if isinstance(given, vx.Random) else vx.Random(given)
        shape = np.broadcast_shapes(*map(np.shape, parameters))
        all_of = [np.broadcast_to(p, shape if size is None else size) for p in parameters]
        found = []
        for at in np.ndindex(all_of[0].shape):
            values = [a[at].item() for a in all_of]
            found.append(_Frozen(self, tuple(values[:-2]), *values[-2:]).rvs(None, rng))
        return np.array(found).reshape(all_of[0].shape)

    def fit(self, data: Any, *, floc: float | None = None, **fixed: Any) -> Any:
        """Maximum likelihood; for laws without a location of their own that is given by floc."""
        if self._fit is None or fixed:
            raise NotImplementedError(f"{self.name}.fit: the fit method of vexel's class is what there is")
        if self._located and floc is None:
            return self._fit(np.asarray(data))
        if floc is None:
            raise NotImplementedError(f"{self.name}.fit: give floc, as floc=0; the location is not fitted")
        if self._located:
            raise NotImplementedError(f"{self.name}.fit: floc cannot be given")
        *shapes, _, scale = self._fit(np.asarray(data) - floc)
        return (*shapes, floc, scale)


def _fitted(law: Any, back: Callable[[dict[str, Any]], tuple[float, ...]]) -> Callable[..., Any]:
    return lambda data: back(law.fit(data).parameters)


def _both(p: dict[str, Any]) -> tuple[float, ...]:
    return tuple(p.values())


norm = _Family("norm", "", vx.Normal, located=True, fit=_fitted(vx.Normal, _both))
lognorm = _Family("lognorm", "s", lambda s, scale: vx.LogNormal(np.log(scale), s), scaled=True,
                  fit=_fitted(vx.LogNormal, lambda p: (p["sigma"], 0.0, float(np.exp(p["mu"])))))
uniform = _Family("uniform", "", lambda loc, scale: vx.Uniform(loc, loc + scale), located=True,
                  fit=_fitted(vx.Uniform, lambda p: (p["a"], p["b"] - p["a"])))
expon = _Family("expon", "", vx.Exponential, scaled=True,
                fit=_fitted(vx.Exponential, lambda p: (0.0, p["scale"])))
gamma = _Family("gamma", "a", vx.Gamma, scaled=True,
                fit=_fitted(vx.Gamma, lambda p: (p["shape"], 0.0, p["scale"])))
beta = _Family("beta", "a b", vx.Beta)
chi2 = _Family("chi2", "df", vx.ChiSquare)
t = _Family("t", "df", vx.StudentT)
f = _Family("f", "dfn dfd", vx.FRatio)
cauchy = _Family("cauchy", "", vx.Cauchy, located=True, fit=_fitted(vx.Cauchy, _both))
laplace = _Family("laplace", "", vx.Laplace, located=True, fit=_fitted(vx.Laplace, _both))
logistic = _Family("logistic", "", vx.Logistic, located=True, fit=_fitted(vx.Logistic, _both))
gumbel_r = _Family("gumbel_r", "", vx.Gumbel, located=True, fit=_fitted(vx.Gumbel, _both))
weibull_min = _Family("weibull_min", "c", vx.Weibull, scaled=True,
                      fit=_fitted(vx.Weibull, lambda p: (p["shape"], 0.0, p["scale"])))
pareto = _Family("pareto", "b", vx.Pareto, scaled=True,
                 fit=_fitted(vx.Pareto, lambda p: (p["shape"], 0.0, p["minimum"])))
powerlaw = _Family("powerlaw", "a", vx.Power, scaled=True,
                   fit=_fitted(vx.Power, lambda p: (p["shape"], 0.0, p["maximum"])))
rayleigh = _Family("rayleigh", "", vx.Rayleigh, scaled=True,
                   fit=_fitted(vx.Rayleigh, lambda p: (0.0, p["scale"])))
maxwell = _Family("maxwell", "", vx.Maxwell, scaled=True,
                  fit=_fitted(vx.Maxwell, lambda p: (0.0, p["scale"])))
triang = _Family("triang", "c", lambda c, loc, scale: vx.Triangular(loc, loc + scale, loc + c * scale),
                 located=True)
invgauss = _Family("invgauss", "mu", lambda mu, scale: vx.InverseGaussian(mu * scale, scale), scaled=True,
                   fit=_fitted(vx.InverseGaussian, lambda p: (p["mean"] / p["shape"], 0.0, p["shape"])))
moyal = _Family("moyal", "", vx.Moyal, located=True, fit=_fitted(vx.Moyal, _both))
gennorm = _Family("gennorm", "beta", lambda b, loc, scale:
                  vx.ExponentialPower(loc, scale * 2 ** (-1 / b), 2 / b), located=True,
                  fit=_fitted(vx.ExponentialPower, lambda p: (2 / p["shape"], p["location"], p["scale"] * 2 ** (p["shape"] / 2))))
ncx2 = _Family("ncx2", "df nc", vx.NonCentralChiSquare)
ncf = _Family("ncf", "dfn dfd nc", vx.NonCentralFRatio)
nct = _Family("nct", "df nc", vx.NonCentralStudentT)
bernoulli = _Family("bernoulli", "p", vx.Bernoulli)
binom = _Family("binom", "n p", vx.Binomial)
poisson = _Family("poisson", "mu", vx.Poisson)
geom = _Family("geom", "p", vx.Geometric, shift=1)
nbinom = _Family("nbinom", "n p", vx.NegativeBinomial)
hypergeom = _Family("hypergeom", "M n N", vx.Hypergeometric)
randint = _Family("randint", "low high", lambda low, high: vx.DiscreteUniform(low, high - 1))


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


def iqr(x: Any, axis: Any = None, *, nan_policy: Any = "propagate", keepdims: bool = False) -> Any:
    return vx.iqr(x, axis=axis, nan_policy=nan_policy, keepdims=keepdims)


def median_abs_deviation(x: Any, axis: Any = 0, *, scale: Any = 1.0, nan_policy: Any = "propagate") -> Any:
    factor = 1 / vx.Normal().quantile(0.75) if scale == "normal" else 1 / scale
    return vx.median_absolute_deviation(x, scale=factor, axis=axis, nan_policy=nan_policy)


def sem(a: Any, axis: Any = 0, ddof: int = 1, nan_policy: Any = "propagate") -> Any:
    a = np.asarray(a, dtype=np.float64)
    n = np.sum(~np.isnan(a), axis=axis)
    return vx.std(a, ddof=ddof, axis=axis, nan_policy=nan_policy) / np.sqrt(n)


def rankdata(a: Any, method: Any = "average", *, axis: Any = None, nan_policy: Any = "propagate") -> Any:
    return vx.rank(a, method=method, axis=axis, nan_policy=nan_policy)


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


def spearmanr(x: Any, y: Any) -> Any:
    return _correlation(x, y, "spearman")


def _correlation(x: Any, y: Any, method: Any) -> Any:
    """The coefficient and its p-value by Student's t of n - 2."""
    r, n = vx.corr(x, y, method=method), len(np.asarray(x))
    if n < 3:
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


def ttest_1samp(a: Any, popmean: float, axis: Any = 0, nan_policy: Any = "propagate") -> Any:
    return _along(lambda a: vx.t_test(a, mean=popmean, nan_policy=nan_policy), axis, a)


def ttest_ind(a: Any, b: Any, axis: Any = 0, equal_var: bool = True, nan_policy: Any = "propagate") -> Any:
    return _along(lambda a, b: vx.t_test(a, b, equal_var=equal_var, nan_policy=nan_policy), axis, a, b)


def ttest_rel(a: Any, b: Any, axis: Any = 0, nan_policy: Any = "propagate") -> Any:
    return ttest_1samp(np.asarray(a, dtype=float) - np.asarray(b, dtype=float), 0, axis, nan_policy)


def chisquare(f_obs: Any, f_exp: Any = None, ddof: int = 0, axis: Any = 0) -> Any:
    samples = (f_obs,) if f_exp is None else (f_obs, f_exp)
    return _along(lambda o, e=None: vx.chi_square_test(o, e, ddof=ddof), axis, *samples)


def kstest(rvs: Any, cdf: Any, args: tuple[Any, ...] = ()) -> Any:
    if isinstance(cdf, str):
        cdf = globals()[cdf](*args)
    return vx.ks_test(rvs, getattr(cdf, "_law", cdf))


ks_1samp = kstest


def bootstrap(data: Any, statistic: Any, *, n_resamples: int = 9999, confidence_level: float = 0.95,
              method: Any = "BCa", random_state: Any = None, rng: Any = None) -> Any:
    if len(data) != 1:
        raise NotImplementedError(f"bootstrap: data of one sample, as (x,), is what there is; {len(data)} came")
    (sample,) = data
    b = vx.bootstrap(sample, statistic, replicates=n_resamples, confidence=confidence_level,
                     method=method, rng=_stream(random_state) if rng is None else rng)
    return SimpleNamespace(confidence_interval=b.interval, standard_error=b.standard_error,
                           bootstrap_distribution=b.replicates)


class gaussian_kde:  # noqa: N801
    """SciPy's class over `vexel.kde`; bw_method is a factor of the standard deviation, or a rule."""

    def __init__(self, dataset: Any, bw_method: Any = None, weights: Any = None) -> None:
        self.dataset = np.atleast_2d(np.asarray(dataset, dtype=np.float64))
        self.d, self.n = self.dataset.shape
        if self.d > 1:
            raise NotImplementedError(f"gaussian_kde: one dimension is what there is, {self.d} came")
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
        return np.atleast_2d(self._density.sample(int(self.neff) if size is None else size, _stream(seed)))

    def integrate_box_1d(self, low: float, high: float) -> float:
        return float(self._density.cdf(high) - self._density.cdf(low))


def _engine(kind: Any) -> Any:
    """A sequence that is scrambled by default, as SciPy's engines are."""

    class Engine(kind):  # type: ignore[misc]
        __doc__ = kind.__doc__

        def __init__(self, d: int, *, scramble: bool = True, seed: Any = None, rng: Any = None) -> None:
            super().__init__(d, scramble=scramble, rng=_stream(seed) if rng is None else rng)

    Engine.__name__ = Engine.__qualname__ = kind.__name__
    return Engine


qmc = SimpleNamespace(Sobol=_engine(vx.Sobol), Halton=_engine(vx.Halton))
