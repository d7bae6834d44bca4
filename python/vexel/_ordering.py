"""Order and counts."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any, overload

import numpy as np

from . import _core
from ._arrays import column
from ._results import FrequencyTable, HistogramResult, TallyResult
from ._statistics import _ends

if TYPE_CHECKING:
    from typing import Literal

    from ._types import Array, ArrayLike, Axis, CumulativeKind, Cut, Doubles, NanPolicy, Progress, RankMethod


def _elements(x: Any) -> Any:
    """Data whose own type the result has: numbers of lists and columns that doubles cannot hold stay."""
    if type(x) not in (list, tuple):
        if type(x).__module__.partition(".")[0] == "pandas" and hasattr(x, "to_numpy"):
            types = [x.dtype] if hasattr(x, "dtype") else getattr(x, "dtypes", [])
            if any(t == object for t in types):
                return x.to_numpy(dtype=object)
        if isinstance(x, np.ma.MaskedArray) and x.dtype == object:
            own = np.array(np.ma.getdata(x))
            own[np.ma.getmaskarray(x)] = None
            return own
        return column(x, "x")
    array = np.asarray(x)
    # NumPy makes floats of whole numbers beside floats, and of those that no one type holds, as of 2^63 and -1.
    if array.dtype != np.float64 or not array.size or not np.any(np.abs(array) >= _WHOLE):
        return array
    own = np.array(x, dtype=object)
    wide = own.shape == array.shape and any(isinstance(v, (int, np.integer)) and abs(int(v)) > _WHOLE for v in own.flat)
    return own if wide else array


_WHOLE = 2**53  # up to here doubles have every whole number
_HALF = np.uint64(1 << 63)


def _signed(x: Any) -> Any:
    """uint64 data with numbers of 2^63 and more, moved to int64 in the same order; else None."""
    if getattr(x, "dtype", None) != np.uint64:
        return None
    array = np.asarray(x)
    return (array ^ _HALF).view(np.int64) if array.size and array.max() >= _HALF else None


def _unsigned(x: Array, out: Array | None = None) -> Array:
    """Back from where `_signed` moved it."""
    values = x.view(np.uint64) ^ _HALF
    return _placed(values, out)


_OWN = frozenset(np.dtype(t) for t in ("f8", "f4", "i8", "i4"))


def _other(x: Any) -> Any:
    """The element type of an array that the extension converts on the way in; None for its own."""
    if type(x) is not np.ndarray or x.dtype in _OWN or x.dtype.kind not in "biuf" or x.dtype.itemsize > 8:
        return None
    kind = x.dtype.newbyteorder("=")
    return None if kind in _OWN else kind


def _placed(values: Array, out: Array | None) -> Array:
    if out is None:
        return values
    if not isinstance(out, np.ndarray) or out.dtype != values.dtype or out.shape != values.shape:
        raise ValueError(f"out must be an array of {values.dtype} of shape {values.shape}, "
                         f"got {_core.short_text(out)}")
    out[...] = values
    return out


def _is_exact(x: Any) -> bool:
    """Objects that are more than doubles: fractions, decimals, big integers, SymPy's numbers."""
    return isinstance(x, np.ndarray) and x.dtype == object and x.ndim > 0


def sort(x: ArrayLike, *, axis: Axis = -1, nan_policy: NanPolicy = "propagate",
         out: Array | None = None, progress: Progress = None) -> Array:
    """Sorted data, ascending, NaN last.

    Parameters
    ----------
    x : array_like
        Data.  The element type stays; an array of `Fraction`, `Decimal`, big integers or SymPy
        numbers is compared exactly.
    axis : int, optional
        Along which; None: all values as one dimension.
    nan_policy : {"propagate", "omit", "raise"}
        propagate: missing values last; omit: one-dimensional data without them.
    out : ndarray, optional
        Where to put the result.
    progress : callable or bool, optional
        Told the share done, 0 to 1, during long work; True shows a bar where tqdm is installed.

    Examples
    --------
    >>> vx.sort([3, 1, 2])
    array([1, 2, 3])
    >>> vx.sort([2.5, float("nan"), 1])
    array([1. , 2.5, nan])
    >>> from fractions import Fraction
    >>> vx.sort([Fraction(1, 2), Fraction(1, 3)])
    array([Fraction(1, 3), Fraction(1, 2)], dtype=object)
    """
    x = _elements(x)
    if _is_exact(x):
        from ._exact import exact_sort

        return _placed(exact_sort(x, axis, nan_policy), out)
    moved = _signed(x)
    if moved is not None:
        return _unsigned(_core.sort(moved, axis, nan_policy, None, progress), out)
    other = _other(x)
    if other is not None:
        return _placed(_core.sort(x, axis, nan_policy, None, progress).astype(other), out)
    return _core.sort(x, axis, nan_policy, out, progress)


def argsort(x: ArrayLike, *, axis: Axis = -1, nan_policy: NanPolicy = "propagate",
            out: Array | None = None, progress: Progress = None) -> Array:
    """The positions that sort the data: stable, NaN last.

    Parameters
    ----------
    x : array_like
        Data.
    axis, nan_policy, progress
        As in `sort`.
    out : ndarray of int64, optional
        Where to put the result.

    Examples
    --------
    >>> vx.argsort([30, 10, 20])
    array([1, 2, 0])
    """
    x = _elements(x)
    if _is_exact(x):
        from ._exact import exact_argsort

        return exact_argsort(x, axis, nan_policy, out)
    moved = _signed(x)
    return _core.argsort(x if moved is None else moved, axis, nan_policy, out, progress)


def rank(x: ArrayLike, *, method: RankMethod = "average", axis: Axis = -1,
         nan_policy: NanPolicy = "propagate", out: Array | None = None,
         progress: Progress = None) -> Doubles:
    """Ranks from 1.

    Parameters
    ----------
    x : array_like
        Data; exact numbers are compared exactly, as in `sort`.
    method : {"average", "min", "max", "dense", "ordinal"}
        What equal values share; ordinal counts them in their order.
    axis, progress
        As in `sort`.
    nan_policy : {"propagate", "omit", "raise"}
        Missing values keep their place and have no rank (NaN), or are refused.
    out : ndarray of float64, optional
        Where to put the result.

    Examples
    --------
    >>> vx.rank([10, 30, 10])
    array([1.5, 3. , 1.5])
    """
    x = _elements(x)
    if _is_exact(x):
        from ._exact import exact_rank

        return exact_rank(x, method, axis, nan_policy, out)
    moved = _signed(x)
    return _core.rank(x if moved is None else moved, method, axis, nan_policy, out, progress)


def tally(x: ArrayLike, *, weights: ArrayLike | None = None,
          nan_policy: NanPolicy = "propagate", progress: Progress = None) -> TallyResult:
    """Distinct values, ascending, and how often they occur.

    Parameters
    ----------
    x : array_like
        Data; the element type stays, exact numbers are compared exactly.
    weights : array_like, optional
        What each value counts.
    nan_policy : {"propagate", "omit", "raise"}
        Missing values are left out and counted in `missing`, or refused.
    progress
        As in `sort`.

    Returns
    -------
    TallyResult
        values, counts; prints as a table, `plot()` draws it.

    Examples
    --------
    >>> values, counts = vx.tally([3, 1, 3])
    >>> values, counts
    (array([1, 3]), array([1., 2.]))
    """
    x = _elements(x)
    if _is_exact(x):
        from ._exact import exact_tally

        return exact_tally(x, weights, nan_policy)
    moved = _signed(x)
    if moved is not None:
        values, counts, missing = _core.tally(moved, weights, nan_policy, progress)
        return TallyResult(_unsigned(values), counts, missing)
    values, counts, missing = _core.tally(x, weights, nan_policy, progress)
    other = _other(x)
    return TallyResult(values if other is None else values.astype(other), counts, missing)


@overload
def mode(x: ArrayLike, *, weights: ArrayLike | None = ..., nan_policy: NanPolicy = ..., axis: None = ...,
         keepdims: Literal[False] = ..., progress: Progress = ...) -> float: ...
@overload
def mode(x: ArrayLike, *, weights: ArrayLike | None = ..., nan_policy: NanPolicy = ..., axis: Axis = ...,
         keepdims: bool = ..., progress: Progress = ...) -> Doubles: ...
def mode(x: ArrayLike, *, weights: ArrayLike | None = None, nan_policy: NanPolicy = "propagate",
         axis: Axis = None, keepdims: bool = False, progress: Progress = None) -> float | Doubles:
    """The most frequent value, the smallest of several.

    Parameters
    ----------
    x : array_like
        Data.
    weights, nan_policy, axis, keepdims
        As in `mean`.
    progress
        As in `sort`.

    Examples
    --------
    >>> vx.mode([3, 1, 3, 1])
    1.0
    """
    return _core.mode(x, weights, nan_policy, axis, keepdims, progress)


def histogram(x: ArrayLike, bins: int | str | ArrayLike = "auto", *,
              range: tuple[float, float] | None = None, density: bool = False,
              weights: ArrayLike | None = None,
              nan_policy: NanPolicy = "propagate", progress: Progress = None) -> HistogramResult:
    """Counts in bins.

    Parameters
    ----------
    x : array_like
        Data, of any shape.
    bins : int, str or array_like
        A number of equal bins, their edges, or a rule: "auto", "fd", "scott", "sturges".  Bin i
        is [edges[i], edges[i+1]), the last one closed.
    range : pair of float, optional
        Of equal bins; the data's extremes where it is left out.
    density : bool
        Counts over (total in the bins × width).
    weights : array_like, optional
        What each value counts.
    nan_policy : {"propagate", "omit", "raise"}
        Missing values are left out and counted in `missing`, or refused.
    progress
        As in `sort`.

    Returns
    -------
    HistogramResult
        counts, edges; prints as a table, `plot()` draws it.

    Examples
    --------
    >>> counts, edges = vx.histogram([1, 2, 2, 4], 3)
    >>> counts, edges
    (array([1., 2., 1.]), array([1., 2., 3., 4.]))
    """
    return HistogramResult(*_core.histogram(x, bins, range, density, weights, nan_policy, progress))


def frequency_table(x: ArrayLike, bins: int | str | ArrayLike = "auto", *,
                    range: tuple[float, float] | None = None, weights: ArrayLike | None = None,
                    nan_policy: NanPolicy = "propagate",
                    progress: Progress = None) -> FrequencyTable:
    """Counts in bins with their shares of the total and the cumulative shares.

    Parameters
    ----------
    x, bins, range, weights, nan_policy
        As in `histogram`.
    progress
        As in `sort`.

    Returns
    -------
    FrequencyTable
        lower, upper, count, relative, cumulative; prints as a table.

    Examples
    --------
    >>> print(vx.frequency_table([1, 2, 2, 4], [1, 2, 4]))
    lower  upper  count  relative  cumulative
        1      2      1      0.25        0.25
        2      4      3      0.75           1
    """
    return FrequencyTable(*_core.frequency_table(x, bins, range, weights, nan_policy, progress))


def cumulative(x: ArrayLike, *, kind: CumulativeKind = "sum", weights: ArrayLike | None = None,
               nan_policy: NanPolicy = "propagate", axis: Axis = -1,
               out: Array | None = None, progress: Progress = None) -> Doubles:
    """Running sums, products, minima or maxima.

    Parameters
    ----------
    x : array_like
        Data.
    kind : {"sum", "product", "min", "max"}
        Sums carry twice the working precision.
    weights : array_like, optional
        Then Σwx, Πx^w.
    nan_policy : {"propagate", "omit", "raise"}
        propagate: NaN from a missing value on; omit: as if it was not there.
    axis : int, optional
        Along which; None: all values as one dimension.
    out : ndarray of float64, optional
        Where to put the result.
    progress
        As in `sort`.

    Examples
    --------
    >>> vx.cumulative([1, 2, 3])
    array([1., 3., 6.])
    >>> vx.cumulative([2, 1, 3], kind="max")
    array([2., 2., 3.])
    """
    return _core.cumulative(x, kind, weights, nan_policy, axis, out, progress)


def trim(x: ArrayLike, cut: Cut, *, weights: ArrayLike | None = None,
         nan_policy: NanPolicy = "propagate", progress: Progress = None) -> Array:
    """The data without the smallest and largest values, in their order.

    Parameters
    ----------
    x : array_like
        Data; the element type stays.
    cut : float or pair of float
        The fraction to leave out at each end, or below and above: floor(cut n) values.
    weights : array_like, optional
        Frequencies.
    nan_policy : {"propagate", "omit", "raise"}
        propagate: missing values stay; omit: they go.
    progress
        As in `sort`.

    Examples
    --------
    >>> vx.trim([5, 1, 3, 2, 9], 0.2)
    array([5, 3, 2])
    """
    low, high = _ends(cut)
    x = _elements(x)
    moved = _signed(x)
    if moved is not None:
        return _unsigned(_core.trim(moved, low, high, weights, nan_policy, progress))
    values = _core.trim(x, low, high, weights, nan_policy, progress)
    other = _other(x)
    return values if other is None else values.astype(other)


def winsorize(x: ArrayLike, cut: Cut, *, weights: ArrayLike | None = None,
              nan_policy: NanPolicy = "propagate", axis: Axis = -1,
              out: Array | None = None, progress: Progress = None) -> Array:
    """The data with the smallest and largest values set to the nearest ones that stay.

    Parameters
    ----------
    x : array_like
        Data; positions and element type stay.
    cut, weights
        As in `trim`.
    nan_policy : {"propagate", "omit", "raise"}
        Missing values keep their place, or are refused.
    axis : int, optional
        Along which; None: all values as one dimension.
    out : ndarray, optional
        Where to put the result.
    progress
        As in `sort`.

    Examples
    --------
    >>> vx.winsorize([5, 1, 3, 2, 9], 0.2)
    array([5, 2, 3, 2, 5])
    """
    low, high = _ends(cut)
    x = _elements(x)
    moved = _signed(x)
    if moved is not None:
        return _unsigned(_core.winsorize(moved, low, high, weights, nan_policy, axis, None, progress), out)
    other = _other(x)
    if other is not None:
        return _placed(_core.winsorize(x, low, high, weights, nan_policy, axis, None, progress).astype(other), out)
    return _core.winsorize(x, low, high, weights, nan_policy, axis, out, progress)
