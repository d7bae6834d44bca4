"""The functions of `vexel.dask`."""

from __future__ import annotations

from functools import partial
from typing import TYPE_CHECKING, Any

import dask.array as da
import numpy as np
from dask.base import tokenize
from dask.delayed import Delayed, delayed
from dask.highlevelgraph import HighLevelGraph

from .. import _passes
from .._core import short_text
from .._random import Random
from .._sampling import bootstrap as _bootstrap_of
from .._results import Description
from .._statistics import corr as _corr_of
from ._graph import Source, as_array, chunks_like, columns, levels, run, whole

if TYPE_CHECKING:
    from .._types import NanPolicy, QuantileMethod

_policies = ("propagate", "omit", "raise")


def _alone(results: dict[Any, Any]) -> Any:
    return results[None]


def _stacked(results: dict[Any, Any]) -> Any:
    found = [results[i] for i in range(len(results))]
    if isinstance(found[0], Description):
        return Description(*(np.array(part) for part in zip(*found)))
    if isinstance(found[0], (tuple, _passes.GridDensity)):
        return found
    return np.stack([np.asarray(f) for f in found], axis=-1)


def _named(names: list[Any], results: dict[Any, Any]) -> dict[Any, Any]:
    return {name: results[i] for i, name in enumerate(names)}


def _sorted(results: dict[Any, Any]) -> dict[Any, Any]:
    try:
        return dict(sorted(results.items()))
    except TypeError:  # levels of several types
        return dict(sorted(results.items(), key=lambda item: (type(item[0]).__name__, str(item[0]))))


def _columns_of(x: Any) -> Any:
    """A table as a Dask array with all columns in each chunk."""
    return x.rechunk({1: -1}) if x.numblocks[1] > 1 else x


def _source(x: Any, weights: Any, by: Any, axis: int | None, nan_policy: NanPolicy) -> tuple[Source, Any]:
    if nan_policy not in _policies:
        raise ValueError(f'nan_policy must be "propagate", "omit" or "raise", got {short_text(nan_policy)}')
    if axis not in (None, 0):
        raise ValueError(f"axis must be None or 0, got {axis}")
    names = None
    if hasattr(x, "to_dask_array"):
        names = list(x.columns) if x.ndim == 2 else None
        x = as_array(x)
    if not isinstance(x, da.Array):
        raise TypeError(f"x must be a Dask array, Series or DataFrame, got {type(x).__name__}")
    if x.ndim == 0:
        x = x.reshape(1)
    if by is not None:
        if x.ndim != 1:
            raise ValueError("by: goes with one variable")
        split, shape = levels, _sorted
    elif names is not None or (axis == 0 and x.ndim > 1):
        if x.ndim != 2:
            raise ValueError(f"x must be of two dimensions where axis is 0, got {x.ndim}")
        x, split = _columns_of(x), columns
        shape = _stacked if names is None else partial(_named, names)
    else:
        split, shape = whole, _alone
    w = chunks_like(weights, x, "weights")
    if w is not None and w.ndim != x.ndim and split is whole:
        raise ValueError("weights: one-dimensional ones go with axis=0")
    return Source(x, w, chunks_like(by, x, "by"), split), shape


def _do(job: Any, x: Any, weights: Any, by: Any, axis: int | None, nan_policy: NanPolicy) -> Delayed:
    source, shape = _source(x, weights, by, axis, nan_policy)
    return run(job, source, shape)


def mean(x: Any, *, kind: str = "arithmetic", weights: Any = None, nan_policy: NanPolicy = "propagate",
         axis: int | None = None, by: Any = None) -> Delayed:
    """Mean, in one pass.

    Parameters
    ----------
    x : dask Array, Series or DataFrame
        Data, in any chunks.
    kind
        As in `vexel.mean`.
    weights : array_like or dask collection, optional
        Frequencies, of the shape of `x` or, with `axis=0`, of its rows.
    nan_policy : {"propagate", "omit", "raise"}
        What a missing value does.
    axis : {None, 0}
        0: each column of a table.
    by : dask Series or array, optional
        Levels; the result is a dict from level to mean.
    """
    return _do(_passes.mean_job(kind, nan_policy), x, weights, by, axis, nan_policy)


def var(x: Any, *, ddof: float = 1, weights: Any = None, nan_policy: NanPolicy = "propagate",
        axis: int | None = None, by: Any = None) -> Delayed:
    """Variance, in one pass; as `vexel.var`, the rest as `mean`."""
    return _do(_passes.spread_job(ddof, False, nan_policy), x, weights, by, axis, nan_policy)


def std(x: Any, *, ddof: float = 1, weights: Any = None, nan_policy: NanPolicy = "propagate",
        axis: int | None = None, by: Any = None) -> Delayed:
    """Standard deviation, in one pass; as `vexel.std`, the rest as `mean`."""
    return _do(_passes.spread_job(ddof, True, nan_policy), x, weights, by, axis, nan_policy)


def skewness(x: Any, *, bias: bool = True, weights: Any = None, nan_policy: NanPolicy = "propagate",
             axis: int | None = None, by: Any = None) -> Delayed:
    """Skewness, in one pass; as `vexel.skewness`, the rest as `mean`."""
    return _do(_passes.shape_job("skewness", bias, nan_policy), x, weights, by, axis, nan_policy)


def kurtosis(x: Any, *, bias: bool = True, weights: Any = None, nan_policy: NanPolicy = "propagate",
             axis: int | None = None, by: Any = None) -> Delayed:
    """Excess kurtosis, in one pass; as `vexel.kurtosis`, the rest as `mean`."""
    return _do(_passes.shape_job("kurtosis", bias, nan_policy), x, weights, by, axis, nan_policy)


def moment(x: Any, order: Any, *, center: float | None = None, weights: Any = None,
           nan_policy: NanPolicy = "propagate", axis: int | None = None, by: Any = None) -> Delayed:
    """Moments, in one pass up to order 8 or about a given center, else in two; as `vexel.moment`."""
    return _do(_passes.MomentJob(order, center, nan_policy), x, weights, by, axis, nan_policy)


def quantile(x: Any, q: Any, *, method: QuantileMethod = "linear", weights: Any = None,
             nan_policy: NanPolicy = "propagate", axis: int | None = None, by: Any = None) -> Delayed:
    """Exact quantiles in four passes, up to 250 of them; as `vexel.quantile`, the rest as `mean`."""
    return _do(_passes.QuantileJob(q, method, nan_policy), x, weights, by, axis, nan_policy)


def median(x: Any, *, weights: Any = None, nan_policy: NanPolicy = "propagate", axis: int | None = None,
           by: Any = None) -> Delayed:
    """The exact median in four passes; as `vexel.median`, the rest as `mean`."""
    return _do(_passes.QuantileJob(0.5, "linear", nan_policy), x, weights, by, axis, nan_policy)


def trimmed_mean(x: Any, cut: Any, *, weights: Any = None, nan_policy: NanPolicy = "propagate",
                 axis: int | None = None, by: Any = None) -> Delayed:
    """Mean without the ends, in six passes; as `vexel.trimmed_mean`, the rest as `mean`."""
    return _do(_passes.TrimmedJob(cut, False, nan_policy), x, weights, by, axis, nan_policy)


def winsorized_mean(x: Any, cut: Any, *, weights: Any = None, nan_policy: NanPolicy = "propagate",
                    axis: int | None = None, by: Any = None) -> Delayed:
    """Mean with the ends pulled in, in six passes; as `vexel.winsorized_mean`, the rest as `mean`."""
    return _do(_passes.TrimmedJob(cut, True, nan_policy), x, weights, by, axis, nan_policy)


def describe(x: Any, *, weights: Any = None, nan_policy: NanPolicy = "omit", axis: int | None = None,
             by: Any = None) -> Delayed:
    """The usual statistics in four passes; as `vexel.describe`, the rest as `mean`."""
    return _do(_passes.DescribeJob(nan_policy), x, weights, by, axis, nan_policy)


def tally(x: Any, *, weights: Any = None, nan_policy: NanPolicy = "propagate", axis: int | None = None,
          by: Any = None) -> Delayed:
    """Distinct values and their counts, in one pass, memory by distinct values; as `vexel.tally`."""
    source, shape = _source(x, weights, by, axis, nan_policy)
    return run(_passes.tally_job(nan_policy, source.x.dtype), source, shape)


def mode(x: Any, *, weights: Any = None, nan_policy: NanPolicy = "propagate", axis: int | None = None,
         by: Any = None) -> Delayed:
    """The most frequent value, in one pass, memory by distinct values; as `vexel.mode`."""
    return _do(_passes.mode_job(nan_policy), x, weights, by, axis, nan_policy)


def histogram(x: Any, bins: Any = "auto", *, range: Any = None, density: bool = False, weights: Any = None,
              nan_policy: NanPolicy = "propagate", axis: int | None = None, by: Any = None) -> Delayed:
    """Counts in bins; as `vexel.histogram`.

    One pass for edges or a number of bins with `range`, two for a number of bins alone, "scott" and
    "sturges", five for "fd" and "auto".
    """
    source, shape = _source(x, weights, by, axis, nan_policy)
    whole_numbers = np.issubdtype(source.x.dtype, np.integer)
    return run(_passes.HistogramJob(bins, range, density, nan_policy, whole_numbers), source, shape)


def kde(x: Any, *, bandwidth: Any = "silverman", kernel: str = "gaussian", points: int = 512,
        bounds: Any = None, weights: Any = None, nan_policy: NanPolicy = "propagate", axis: int | None = None,
        by: Any = None) -> Delayed:
    """Kernel density on a grid: an object with `x`, `y`, `bandwidth`; otherwise as `vexel.kde`.

    The data are shared out on a grid of at least 64 steps to the bandwidth.  One pass where
    bandwidth and bounds are given, two with the bandwidth alone, five with a rule for it.
    """
    return _do(_passes.KdeJob(bandwidth, kernel, points, bounds, nan_policy), x, weights, by, axis, nan_policy)


def _pair(x: Any, y: Any) -> Any:
    x = as_array(x)
    if not isinstance(x, da.Array) or x.ndim != 1:
        raise TypeError("x must be a Dask array or Series of one dimension where there is a y")
    return da.stack([x, chunks_like(y, x, "y")], axis=1, allow_unknown_chunksizes=True)


def _matrix(pair: bool, results: dict[Any, Any]) -> Any:
    matrix = results[None]
    return float(matrix[0, 1]) if pair else matrix


def _covariance(x: Any, y: Any, ddof: float, correlation: bool, weights: Any, nan_policy: NanPolicy) -> Delayed:
    table = as_array(x) if y is None else _pair(x, y)
    if not isinstance(table, da.Array) or table.ndim != 2:
        raise ValueError("x must be a table with a variable in each column where there is no y")
    source, _ = _source(table, weights, None, 0, nan_policy)
    job = _passes.covariance_job(table.shape[1], ddof, correlation, nan_policy)
    return run(job, Source(source.x, source.weights, None, whole), partial(_matrix, y is not None))


def _kendall(table: Any, weights: Any, nan_policy: Any, pair: bool) -> Any:
    matrix = _corr_of(table, method="kendall", weights=weights, nan_policy=nan_policy)
    return float(matrix[0, 1]) if pair else matrix


def cov(x: Any, y: Any = None, *, ddof: float = 1, weights: Any = None,
        nan_policy: NanPolicy = "propagate") -> Delayed:
    """Covariance of two variables or of a table's columns, in one pass; as `vexel.cov`."""
    return _covariance(x, y, ddof, False, weights, nan_policy)


def corr(x: Any, y: Any = None, *, method: str = "pearson", weights: Any = None,
         nan_policy: NanPolicy = "propagate") -> Delayed:
    """Correlation of two variables or of a table's columns, in one pass; as `vexel.corr`.

    method "spearman" ranks the columns first, one more pass (without weights and missing values).
    "kendall" is one task, on the worker that gathers the chunks: they must fit there.
    """
    if method == "pearson":
        return _covariance(x, y, 1, True, weights, nan_policy)
    if method == "kendall":
        both = as_array(x) if y is None else _pair(x, y)
        return delayed(_kendall)(both, None if weights is None else chunks_like(weights, both, "weights"), nan_policy,
                                 y is not None)
    if method != "spearman":
        raise ValueError(f'method must be "pearson", "spearman" or "kendall", got {short_text(method)}')
    if weights is not None or nan_policy == "omit":
        raise ValueError('method: "spearman" goes without weights and with nan_policy "propagate" or "raise"')
    table = as_array(x) if y is None else _pair(x, y)
    ranks = [rank(table[:, i], nan_policy=nan_policy) for i in range_of(table.shape[1])]
    joined = da.stack(ranks, axis=1, allow_unknown_chunksizes=True)
    return _covariance(joined, None, 1, True, None, nan_policy) if y is None else \
        _covariance(ranks[0], ranks[1], 1, True, None, nan_policy)


range_of = range  # `range` is a parameter's name above


def _before(found: Any, before: Any, x: Any) -> Any:
    """How often each value of the tally came in the chunks before and in this one."""
    at = np.searchsorted(found.values, x[~np.isnan(x)])
    return np.bincount(at, minlength=len(found.values)) + (0 if before is None else before)


def _ordinal(found: Any, before: Any, at: Any) -> Any:
    """Ranks of a chunk's values, at these places of the tally, when equal ones are counted in their order."""
    order = np.argsort(at, kind="stable")
    ordered = at[order]
    out = np.empty(len(at))
    out[order] = np.arange(len(at)) - np.searchsorted(ordered, ordered)  # within the chunk
    starts = np.cumsum(found.counts) - found.counts + 1
    return out + starts[at] + (0 if before is None else before[at])


def _ranked(method: str, found: Any, before: Any, x: Any) -> Any:
    there = ~np.isnan(x)
    at = np.searchsorted(found.values, x[there])
    out = np.full(np.shape(x), np.nan)
    if method == "ordinal":
        out[there] = _ordinal(found, before, at)
        return out
    counts = found.counts
    ends = np.cumsum(counts)  # whole numbers
    of = {"min": ends - counts + 1, "max": ends, "average": ends - (counts - 1) / 2,
          "dense": np.arange(1.0, len(counts) + 1)}[method]
    out[there] = of[at]
    return out


def rank(x: Any, *, method: str = "average", nan_policy: NanPolicy = "propagate") -> Any:
    """Ranks from 1 of one variable, as a Dask array in the chunks of `x`; two passes.

    Each task looks the ranks up in the tally of all values, so memory goes by distinct values;
    method "ordinal" counts the values of the chunks before one after the other.
    """
    if method not in ("average", "min", "max", "dense", "ordinal"):
        raise ValueError('method must be "average", "min", "max", "dense" or "ordinal", got '
                         f"{short_text(method)}")
    source, shape = _source(x, None, None, None, nan_policy)
    if source.x.ndim != 1:
        raise ValueError(f"x must be of one dimension, got {source.x.ndim}")
    found = run(_passes.tally_job(nan_policy), source, shape)
    again = source.after(found).x
    name = "vexel-rank-" + tokenize(again.name, found.key, method)
    graph: dict[Any, Any] = {}
    before = None
    for i in range_of(again.numblocks[0]):
        graph[name, i] = (_ranked, method, found.key, before, (again.name, i))
        if method == "ordinal":
            graph["before-" + name, i] = (_before, found.key, before, (again.name, i))
            before = ("before-" + name, i)
    needed: list[Any] = [again, found]
    return da.Array(HighLevelGraph.from_collections(name, graph, dependencies=needed), name,
                    chunks=again.chunks, dtype=np.float64)


def bootstrap(x: Any, statistic: Any = "mean", *, replicates: int = 9999, confidence: float = 0.95,
              method: str = "BCa", seed: int | None = None, nan_policy: NanPolicy = "propagate") -> Delayed:
    """`vexel.bootstrap` as one task, on the worker that gathers the chunks: they must fit there.

    seed : the `rng` of `vexel.bootstrap`, a number; None: one from the operating system.
    """
    source, _ = _source(x, None, None, None, nan_policy)
    return delayed(_bootstrap_of)(source.x.ravel(), statistic, replicates=replicates, confidence=confidence,
                                  method=method, rng=Random(seed).seed, nan_policy=nan_policy)
