"""Means, deviations, ranks and scores of samples, by SciPy's names."""

from __future__ import annotations

from typing import Any, NamedTuple

import numpy as np

import vexel as vx
from vexel.compat._lanes import axes_of, flat, numbers, one_of, over_lanes, plain, present


def gmean(a: Any, axis: Any = 0, dtype: Any = None, weights: Any = None, nan_policy: Any = "propagate", *, keepdims: bool = False) -> Any:
    return vx.mean(a if dtype is None else np.asarray(a, dtype), kind="geometric", axis=axis, weights=weights,
                   nan_policy=nan_policy, keepdims=keepdims)


def hmean(a: Any, axis: Any = 0, dtype: Any = None, *, weights: Any = None, nan_policy: Any = "propagate", keepdims: bool = False) -> Any:
    return vx.mean(a if dtype is None else np.asarray(a, dtype), kind="harmonic", axis=axis, weights=weights,
                   nan_policy=nan_policy, keepdims=keepdims)


def moment(a: Any, order: Any = 1, axis: Any = 0, nan_policy: Any = "propagate", *, center: Any = None, keepdims: bool = False) -> Any:
    return vx.moment(a, order, axis=axis, nan_policy=nan_policy, center=center, keepdims=keepdims)


def skew(a: Any, axis: Any = 0, bias: bool = True, nan_policy: Any = "propagate", *, keepdims: bool = False) -> Any:
    return vx.skewness(a, axis=axis, bias=bias, nan_policy=nan_policy, keepdims=keepdims)


def kurtosis(a: Any, axis: Any = 0, fisher: bool = True, bias: bool = True, nan_policy: Any = "propagate", *,
             keepdims: bool = False) -> Any:
    return vx.kurtosis(a, axis=axis, bias=bias, nan_policy=nan_policy, keepdims=keepdims) + (0 if fisher else 3)


def iqr(x: Any, axis: Any = None, rng: tuple[float, float] = (25, 75), scale: Any = 1.0, nan_policy: Any = "propagate",
        interpolation: str = "linear", keepdims: bool = False) -> Any:
    if interpolation != "linear":
        raise NotImplementedError(f'iqr: interpolation must be "linear", got {interpolation!r}')
    divisor = 2 * vx.Normal().quantile(0.75) if scale == "normal" else scale
    if tuple(rng) == (25, 75):
        return vx.iqr(x, axis=axis, nan_policy=nan_policy, keepdims=keepdims) / divisor
    low, high = vx.quantile(x, np.sort(rng) / 100, axis=axis, nan_policy=nan_policy, keepdims=keepdims)
    return (high - low) / divisor


def median_abs_deviation(x: Any, axis: Any = 0, *, scale: Any = 1.0, nan_policy: Any = "propagate", keepdims: bool = False) -> Any:
    factor = 1 / vx.Normal().quantile(0.75) if scale == "normal" else 1 / scale
    return vx.median_absolute_deviation(x, scale=factor, axis=axis, nan_policy=nan_policy, keepdims=keepdims)


def sem(a: Any, axis: Any = 0, ddof: int = 1, nan_policy: Any = "propagate", *, keepdims: bool = False) -> Any:
    a = np.asarray(numbers("sem", a), dtype=np.float64)
    n = np.sum(~np.isnan(a), axis=axis, keepdims=keepdims)
    return plain(vx.std(a, ddof=ddof, axis=axis, nan_policy=nan_policy, keepdims=keepdims) / np.sqrt(n))


def variation(a: Any, axis: Any = 0, nan_policy: Any = "propagate", ddof: int = 0, *, keepdims: bool = False) -> Any:
    """The standard deviation over the mean."""
    options = {"axis": axis, "nan_policy": nan_policy, "keepdims": keepdims}
    with np.errstate(invalid="ignore", divide="ignore"):
        return plain(np.divide(vx.std(a, ddof=ddof, **options), vx.mean(a, **options)))


def gstd(a: Any, axis: Any = 0, ddof: int = 1, *, keepdims: bool = False, nan_policy: Any = "propagate") -> Any:
    """The geometric standard deviation: exp of the standard deviation of the logarithms; NaN with a value below 0."""
    return plain(np.exp(vx.std(_logarithms("gstd", a), ddof=ddof, axis=axis, nan_policy=nan_policy, keepdims=keepdims)))


def _logarithms(name: str, a: Any) -> Any:
    a = np.asarray(numbers(name, a), dtype=np.float64)
    with np.errstate(invalid="ignore", divide="ignore"):
        return np.log(a)


# ---- scores

def zmap(scores: Any, compare: Any, axis: Any = 0, ddof: int = 0, nan_policy: Any = "propagate") -> Any:
    """How many standard deviations of `compare` the scores lie above its mean."""
    scores, compare = (np.asarray(numbers("zmap", a), dtype=np.float64) for a in (scores, compare))
    options = {"axis": axis, "nan_policy": nan_policy, "keepdims": True}
    with np.errstate(invalid="ignore", divide="ignore"):
        return (scores - vx.mean(compare, **options)) / vx.std(compare, ddof=ddof, **options)


def zscore(a: Any, axis: Any = 0, ddof: int = 0, nan_policy: Any = "propagate") -> Any:
    return zmap(a, a, axis, ddof, nan_policy)


def gzscore(a: Any, *, axis: Any = 0, ddof: int = 0, nan_policy: Any = "propagate") -> Any:
    return zscore(_logarithms("gzscore", a), axis, ddof, nan_policy)


def percentileofscore(a: Any, score: Any, kind: str = "rank", nan_policy: Any = "propagate") -> Any:
    one_of("percentileofscore", "kind", kind, ("rank", "strict", "weak", "mean"))
    sample = numbers("percentileofscore", a)
    if sample.ndim != 1:
        raise ValueError(f"percentileofscore: a must have one dimension, got {sample.ndim}")
    score = np.asarray(score, dtype=np.float64)
    lanes = present("percentileofscore", [sample], nan_policy, False)
    if lanes is None or not len(lanes[0]):
        return plain(np.full(score.shape, np.nan))
    ascending = np.sort(lanes[0])
    below, most = (np.searchsorted(ascending, score, side) for side in ("left", "right"))
    percent = {"rank": below + most + (below < most), "strict": 2 * below, "weak": 2 * most, "mean": below + most}[kind]
    return plain(np.where(np.isnan(score), np.nan, percent * (50.0 / len(ascending))))


def scoreatpercentile(a: Any, per: Any, limit: Any = (), interpolation_method: str = "fraction", axis: Any = None) -> Any:
    method = one_of("scoreatpercentile", "interpolation_method", interpolation_method, ("fraction", "lower", "higher"))
    a = numbers("scoreatpercentile", a)
    q = np.asarray(per, dtype=np.float64) / 100
    if not ((q >= 0) & (q <= 1)).all():
        raise ValueError(f"scoreatpercentile: per must be in [0, 100], got {per!r}")
    if len(limit):
        a, axis = a[(limit[0] <= a) & (a <= limit[1])], None
    if a.size == 0:
        return plain(np.full(q.shape, np.nan))
    if method == "fraction":
        return vx.quantile(a, q if q.ndim else float(q), axis=axis)
    rows = np.sort(flat("scoreatpercentile", a, axis), axis=-1)
    place = q * (rows.shape[-1] - 1)
    at = (np.floor if method == "lower" else np.ceil)(place).astype(int)
    return np.moveaxis(rows[..., at], -1, 0) if q.ndim else rows[..., at]


def rankdata(a: Any, method: Any = "average", *, axis: Any = None, nan_policy: Any = "propagate") -> Any:
    ranks = vx.rank(np.reshape(a, -1) if axis is None else a, method=method, axis=-1 if axis is None else axis, nan_policy=nan_policy)
    if nan_policy == "propagate" and np.isnan(ranks).any():  # one missing value, and none of its lane has a rank
        ranks[np.broadcast_to(np.isnan(ranks).any(axis=axis, keepdims=True), ranks.shape)] = np.nan
    return ranks if method == "average" or np.isnan(ranks).any() else ranks.astype(np.int64)  # which index arrays


class ModeResult(NamedTuple):
    mode: Any
    count: Any


def mode(a: Any, axis: Any = 0, nan_policy: Any = "propagate", keepdims: bool = False) -> Any:
    """The most frequent value, the smallest of several, and how often it occurs; NaN is a value too under propagate."""
    name = "mode"
    rows = flat(name, a, axis)
    one_of(name, "nan_policy", nan_policy, ("propagate", "omit", "raise"))
    missing = nan_policy != "propagate" and bool((rows != rows).any())
    values = np.empty(rows.shape[:-1], dtype=np.float64 if missing or not rows.shape[-1] else rows.dtype)
    counts = np.zeros(rows.shape[:-1], dtype=np.int64)
    for at in np.ndindex(values.shape):
        lane = present(name, [rows[at]], nan_policy, False)[0] if missing else rows[at]  # type: ignore[index]
        found, times = np.unique(lane, return_counts=True)
        if len(found):
            values[at], counts[at] = found[times.argmax()], times.max()
        else:
            values[at] = np.nan
    if keepdims:
        axes = axes_of(axis, np.ndim(a))
        return ModeResult(np.expand_dims(values, axes), np.expand_dims(counts, axes))
    return ModeResult(values[()], counts[()])


# ---- trimmed

def trim_mean(a: Any, proportiontocut: float, axis: Any = 0) -> Any:
    return vx.trimmed_mean(a, proportiontocut, axis=axis)


def _within(name: str, a: Any, limits: Any, inclusive: Any, axis: Any, nan_policy: str, keepdims: bool, function: Any) -> Any:
    """The function of the values of each lane within the limits; one that is None is none."""
    low, high = (None, None) if limits is None else limits
    a = numbers(name, a)

    def inside(x: Any) -> Any:
        there = np.ones(np.shape(x), dtype=bool)
        if low is not None:
            there &= np.greater_equal(x, low) if inclusive[0] else np.greater(x, low)
        if high is not None:
            there &= np.less_equal(x, high) if inclusive[1] else np.less(x, high)
        return there

    if limits is not None and np.size(a) and not (inside(a) | np.isnan(a)).any():
        raise ValueError(f"{name}: limits must leave values, got {limits!r}")

    def of_lane(x: Any) -> tuple[Any, ...]:
        x = x[inside(x)]
        return (function(x) if len(x) else np.nan,)

    return over_lanes(name, of_lane, (a,), axis, nan_policy, keepdims, parts=1)[0]


def tmean(a: Any, limits: Any = None, inclusive: Any = (True, True), axis: Any = None, *, nan_policy: Any = "propagate",
          keepdims: bool = False) -> Any:
    return _within("tmean", a, limits, inclusive, axis, nan_policy, keepdims, vx.mean)


def tvar(a: Any, limits: Any = None, inclusive: Any = (True, True), axis: Any = 0, ddof: int = 1, *,
         nan_policy: Any = "propagate", keepdims: bool = False) -> Any:
    return _within("tvar", a, limits, inclusive, axis, nan_policy, keepdims, lambda x: vx.var(x, ddof=ddof))


def tstd(a: Any, limits: Any = None, inclusive: Any = (True, True), axis: Any = 0, ddof: int = 1, *,
         nan_policy: Any = "propagate", keepdims: bool = False) -> Any:
    return _within("tstd", a, limits, inclusive, axis, nan_policy, keepdims, lambda x: vx.std(x, ddof=ddof))


def tsem(a: Any, limits: Any = None, inclusive: Any = (True, True), axis: Any = 0, ddof: int = 1, *,
         nan_policy: Any = "propagate", keepdims: bool = False) -> Any:
    return _within("tsem", a, limits, inclusive, axis, nan_policy, keepdims, lambda x: vx.std(x, ddof=ddof) / np.sqrt(len(x)))


def tmin(a: Any, lowerlimit: Any = None, axis: Any = 0, inclusive: bool = True, nan_policy: Any = "propagate", *,
         keepdims: bool = False) -> Any:
    return _within("tmin", a, (lowerlimit, None), (inclusive, True), axis, nan_policy, keepdims, np.min)


def tmax(a: Any, upperlimit: Any = None, axis: Any = 0, inclusive: bool = True, nan_policy: Any = "propagate", *,
         keepdims: bool = False) -> Any:
    return _within("tmax", a, (None, upperlimit), (True, inclusive), axis, nan_policy, keepdims, np.max)


class SigmaclipResult(NamedTuple):
    clipped: Any
    lower: float
    upper: float


def sigmaclip(a: Any, low: float = 4.0, high: float = 4.0) -> Any:
    """Leaves out what lies so many standard deviations from the mean, until nothing does."""
    clipped = numbers("sigmaclip", a).reshape(-1)
    while True:
        mean, sd = vx.mean(clipped), vx.std(clipped, ddof=0)
        lower, upper = mean - sd * low, mean + sd * high
        kept = clipped[(clipped >= lower) & (clipped <= upper)]
        if len(kept) == len(clipped):
            return SigmaclipResult(clipped, lower, upper)
        clipped = kept


class DescribeResult(NamedTuple):
    nobs: Any
    minmax: tuple[Any, Any]
    mean: Any
    variance: Any
    skewness: Any
    kurtosis: Any


def describe(a: Any, axis: Any = 0, ddof: int = 1, bias: bool = True, nan_policy: Any = "propagate") -> Any:
    if not np.size(a):
        raise ValueError("describe: a must not be empty")
    d = vx.describe(a, axis=axis, nan_policy=nan_policy)
    options = {"axis": axis, "nan_policy": nan_policy}
    nobs = np.asarray(d.count if nan_policy == "omit" else np.add(d.count, d.missing)).astype(int)
    return DescribeResult(nobs[()] if nan_policy == "omit" and np.any(d.missing) else int(nobs.flat[0]), (d.min, d.max), d.mean,
                          vx.var(a, ddof=ddof, **options), vx.skewness(a, bias=bias, **options), vx.kurtosis(a, bias=bias, **options))
