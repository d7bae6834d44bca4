"""Distribution functions, frequencies and densities of samples, by SciPy's names."""

from __future__ import annotations

from math import log, pi
from typing import Any, NamedTuple

import numpy as np

import vexel as vx
from vexel.compat import _laws
from vexel.compat._families import Family, stream
from vexel.compat._lanes import NORMAL, ConfidenceInterval, numbers, one_of
from vexel.compat._relations import linregress


# ---- distribution functions

class EmpiricalDistributionFunction:
    """A step function: `probabilities` from each of `quantiles` on."""

    def __init__(self, quantiles: Any, probabilities: Any, n: int, kind: str) -> None:
        self.quantiles, self.probabilities = quantiles, probabilities
        self._n, self._kind = n, kind

    def __repr__(self) -> str:
        return f"EmpiricalDistributionFunction(quantiles={self.quantiles!r}, probabilities={self.probabilities!r})"

    def evaluate(self, x: Any) -> Any:
        steps = np.append(1.0 if self._kind == "sf" else 0.0, self.probabilities)
        x = np.asarray(x, dtype=np.float64)
        return np.where(np.isnan(x), np.nan, steps[np.searchsorted(self.quantiles, x, "right")])

    def confidence_interval(self, confidence_level: float = 0.95, *, method: str = "linear") -> Any:
        """By Greenwood's variance of the survival function, or by that of the logarithm of its logarithm."""
        one_of("confidence_interval", "method", method, ("linear", "log-log"))
        s = self.probabilities if self._kind == "sf" else 1 - self.probabilities
        z = NORMAL.isf((1 - confidence_level) / 2)
        with np.errstate(divide="ignore", invalid="ignore"):
            relative = np.sqrt((1 - s) / (self._n * s))  # standard deviation of log s
            if method == "linear":
                ends = s - z * s * relative, s + z * s * relative
            else:
                spread = z * relative / np.log(s)
                ends = s ** np.exp(-spread), s ** np.exp(spread)
        low, high = (np.clip(e, 0, 1) for e in (ends if self._kind == "sf" else (1 - ends[1], 1 - ends[0])))
        return ConfidenceInterval(*(EmpiricalDistributionFunction(self.quantiles, p, self._n, self._kind) for p in (low, high)))

    def plot(self, ax: Any = None, **style: Any) -> Any:
        if ax is None:
            import matplotlib.pyplot as plt

            ax = plt.gca()
        low, high = self.quantiles[0], self.quantiles[-1]
        x = np.concatenate(([low - 0.05 * (high - low)], self.quantiles, [high + 0.05 * (high - low)]))
        return ax.step(x, self.evaluate(x), **{"where": "post", **style})


class ECDFResult(NamedTuple):
    cdf: EmpiricalDistributionFunction
    sf: EmpiricalDistributionFunction


def ecdf(sample: Any) -> Any:
    """The shares of the sample that are at most x, and that are greater."""
    x = np.asarray(numbers("ecdf", sample), dtype=np.float64)
    if x.ndim != 1 or np.isnan(x).any():
        raise ValueError(f"ecdf: sample must have one dimension and no NaN, got {'NaN' if x.ndim == 1 else f'{x.ndim} dimensions'}")
    values, counts = np.unique(x, return_counts=True)
    below = np.cumsum(counts)
    n = len(x)
    return ECDFResult(EmpiricalDistributionFunction(values, below / n, n, "cdf"),
                      EmpiricalDistributionFunction(values, (n - below) / n, n, "sf"))


def probplot(x: Any, sparams: Any = (), dist: Any = "norm", fit: bool = True, plot: Any = None, rvalue: bool = False) -> Any:
    """The ascending values against the law's quantiles at Filliben's medians of the order statistics (1975)."""
    ordered = np.sort(np.asarray(numbers("probplot", x), dtype=np.float64), axis=None)
    n = len(ordered)
    law = _laws.named("probplot: dist", dist) if isinstance(dist, str) else dist
    shapes = tuple(sparams) if np.ndim(sparams) else (sparams,)
    medians = (np.arange(1, n + 1) - 0.3175) / (n + 0.365)
    if n:
        medians[-1] = 0.5 ** (1 / n)
        medians[0] = 1 - medians[-1]
    quantiles = law.ppf(medians, *shapes) if isinstance(law, Family) or shapes else law.ppf(medians)
    if not fit and plot is None:
        return quantiles, ordered
    line = linregress(quantiles, ordered)
    if plot is not None:
        _draw_probplot(plot, quantiles, ordered, line, fit, rvalue)
    return ((quantiles, ordered), (line.slope, line.intercept, line.rvalue)) if fit else (quantiles, ordered)


def _draw_probplot(plot: Any, quantiles: Any, ordered: Any, line: Any, fit: bool, rvalue: bool) -> None:
    """On axes, or by matplotlib.pyplot, which has the same methods by other names."""
    plot.plot(quantiles, ordered, "bo")
    if fit:
        plot.plot(quantiles, line.slope * quantiles + line.intercept, "r-")
    for what, text in (("title", "Probability Plot"), ("xlabel", "Theoretical quantiles"), ("ylabel", "Ordered Values")):
        getattr(plot, f"set_{what}" if hasattr(plot, f"set_{what}") else what)(text)
    if fit and rvalue:
        x = quantiles[0] + 0.7 * (quantiles[-1] - quantiles[0])
        plot.text(x, ordered[0] + 0.01 * (ordered[-1] - ordered[0]), f"$R^2={line.rvalue**2:1.4f}$")


# ---- frequencies

class CumfreqResult(NamedTuple):
    cumcount: Any
    lowerlimit: float
    binsize: float
    extrapoints: int


class RelfreqResult(NamedTuple):
    frequency: Any
    lowerlimit: float
    binsize: float
    extrapoints: int


def _frequencies(a: Any, bins: int, limits: Any, weights: Any) -> tuple[Any, ...]:
    """Counts of bins of one width, the lowest edge, the width and how many values are outside."""
    x = np.asarray(a, dtype=np.float64).reshape(-1)
    if limits is None:
        low, high = (float(x.min()), float(x.max())) if len(x) else (0.0, 1.0)
        margin = (high - low) / (2 * (bins - 1)) if high > low and bins > 1 else 0.5 * (bins == 1 and high == low)
        limits = low - margin, high + margin
    counts, edges = np.histogram(x, bins, limits, weights=weights)
    inside = np.count_nonzero((x >= limits[0]) & (x <= limits[1]))
    return counts.astype(np.float64), float(limits[0]), float(edges[1] - edges[0]), int(len(x) - inside)


def cumfreq(a: Any, numbins: int = 10, defaultreallimits: Any = None, weights: Any = None) -> Any:
    counts, *others = _frequencies(a, numbins, defaultreallimits, weights)
    return CumfreqResult(np.cumsum(counts), *others)


def relfreq(a: Any, numbins: int = 10, defaultreallimits: Any = None, weights: Any = None) -> Any:
    counts, *others = _frequencies(a, numbins, defaultreallimits, weights)
    return RelfreqResult(counts / np.size(a), *others)


class BinnedStatisticResult(NamedTuple):
    statistic: Any
    bin_edges: Any
    binnumber: Any


_OF_BINS: dict[str, Any] = {"mean": vx.mean, "median": vx.median, "std": lambda v: vx.std(v, ddof=0), "min": np.min, "max": np.max}


def binned_statistic(x: Any, values: Any, statistic: Any = "mean", bins: Any = 10, range: Any = None) -> Any:
    """A statistic of the values whose x fall into each bin; the last bin has its upper end."""
    if not callable(statistic):
        one_of("binned_statistic", "statistic", statistic, ("mean", "std", "median", "count", "sum", "min", "max"))
    x = np.asarray(x, dtype=np.float64)
    sets = np.atleast_2d(np.asarray(values, dtype=np.float64))
    range = range[0] if np.ndim(range) == 2 else range  # [(low, high)], as of several dimensions
    if sets.shape[1] != len(x):
        raise ValueError(f"binned_statistic: values must be of {len(x)} elements, got {sets.shape[1]}")
    edges = np.histogram_bin_edges(x, bins, range) if np.ndim(bins) == 0 else np.asarray(bins, dtype=np.float64)
    number = np.searchsorted(edges, x, "right")
    number[x == edges[-1]] = len(edges) - 1
    found = np.array([[_of_bin(statistic, v[number == k]) for k in np.arange(1, len(edges))] for v in sets])
    return BinnedStatisticResult(found[0] if np.ndim(values) == 1 else found, edges, number)


def _of_bin(statistic: Any, v: Any) -> float:
    if statistic == "count":
        return float(len(v))
    if statistic == "sum":
        return float(vx.mean(v)) * len(v) if len(v) else 0.0
    if callable(statistic):
        try:
            return float(statistic(v))
        except Exception:
            if len(v):
                raise
            return np.nan  # the function has no value of nothing
    return float(_OF_BINS[statistic](v)) if len(v) else np.nan


# ---- densities

class gaussian_kde:  # noqa: N801
    """SciPy's class over `vexel.kde`; bw_method is a factor of the standard deviation, or a rule."""

    def __init__(self, dataset: Any, bw_method: Any = None, weights: Any = None) -> None:
        self.dataset = np.atleast_2d(np.asarray(dataset, dtype=np.float64))
        self.d, self.n = self.dataset.shape
        if self.d > 1:
            raise NotImplementedError(f"gaussian_kde: dataset must be of one dimension, got {self.d}")
        if self.n < 2:
            raise ValueError(f"gaussian_kde: dataset must be of at least 2 elements, got {self.n}")
        # Shares that say how far to trust each point: not frequencies.
        self.weights = np.full(self.n, 1 / self.n) if weights is None else np.asarray(weights) / np.sum(weights)
        self.neff = float(self.n) if weights is None else 1 / float(np.sum(self.weights**2))
        self._weighted = weights is not None
        self.set_bandwidth("scott" if bw_method is None else bw_method)

    def scotts_factor(self) -> float:
        return float(self.neff**-0.2)

    def silverman_factor(self) -> float:
        return float((self.neff * 0.75) ** -0.2)

    def covariance_factor(self) -> float:
        return self.factor

    def set_bandwidth(self, bw_method: Any = None) -> None:
        """None leaves the factor as it is."""
        if isinstance(bw_method, str):
            rule = one_of("gaussian_kde", "bw_method", bw_method, ("scott", "silverman"))
            self.factor = self.scotts_factor() if rule == "scott" else self.silverman_factor()
        elif bw_method is not None:
            self.factor = float(bw_method(self) if callable(bw_method) else bw_method)
        x = self.dataset[0]
        bandwidth = self.factor * vx.std(x, weights=self.weights, ddof=1 / self.neff)
        self.covariance = np.array([[bandwidth**2]])
        self._density = vx.kde(x, bandwidth=bandwidth, weights=self.weights if self._weighted else None)

    @property
    def inv_cov(self) -> Any:
        return 1 / self.covariance

    def logpdf(self, x: Any) -> Any:
        """The logarithm of the density, also where that is 0 as a number."""
        variance = float(self.covariance[0, 0])

        def at(point: float) -> float:
            exponents = -0.5 * (point - self.dataset[0]) ** 2 / variance
            most = float(exponents.max())
            return most + log(float(np.dot(self.weights, np.exp(exponents - most))))

        return np.array([at(p) for p in np.reshape(x, -1).tolist()]) - 0.5 * log(2 * pi * variance)

    def __call__(self, points: Any) -> Any:
        return self._density(np.reshape(points, -1))

    evaluate = pdf = __call__

    def resample(self, size: Any = None, seed: Any = None) -> Any:
        return np.atleast_2d(self._density.sample(int(self.neff) if size is None else size, stream(seed)))

    def integrate_box_1d(self, low: float, high: float) -> float:
        return float(self._density.cdf(high) - self._density.cdf(low))
