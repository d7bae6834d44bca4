"""Means, moments, deviations, covariances and the usual statistics at once."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any, overload

from . import _core
from ._results import Description

if TYPE_CHECKING:
    from typing import Unpack

    from ._types import (
        Array, ArrayLike, Axis, Center, Correlation, Cut, Doubles, MeanKind, NanPolicy, OfAll, OfLanes, Progress)


def _ends(cut: Cut) -> tuple[float, float]:
    """What to cut off below and above: one fraction for both, or a pair."""
    pair: Any = cut
    if isinstance(cut, (tuple, list)) or getattr(cut, "ndim", 0) == 1:
        if len(pair) != 2:
            raise ValueError(f"cut must be a fraction or a pair of them, got {len(pair)} values")
        low, high = pair
        return low, high
    return pair, pair


@overload
def mean(x: ArrayLike, *, kind: MeanKind = ..., **options: Unpack[OfAll]) -> float: ...
@overload
def mean(x: ArrayLike, *, kind: MeanKind = ..., **options: Unpack[OfLanes]) -> Doubles: ...
def mean(x: ArrayLike, *, kind: MeanKind = "arithmetic", weights: ArrayLike | None = None,
         nan_policy: NanPolicy = "propagate", axis: Axis = None, keepdims: bool = False,
         out: Array | None = None, progress: Progress = None) -> float | Doubles:
    """Mean: arithmetic, geometric, harmonic or quadratic.

    Parameters
    ----------
    x : array_like
        Data.
    kind : {"arithmetic", "geometric", "harmonic", "quadratic"}
        Σwx/Σw, exp(Σw log x/Σw), Σw/Σ(w/x), sqrt(Σwx²/Σw).  Geometric and harmonic means of
        data with a negative value are NaN.
    weights : array_like, optional
        Frequencies: finite, not negative, of the shape of `x`, or one-dimensional along `axis`.
    nan_policy : {"propagate", "omit", "raise"}
        What a missing value (NaN, null, masked) does: make the result NaN, be left out with its
        weight, or be refused by a ValueError.
    axis : int or tuple of int, optional
        The axes to reduce; None: all values.
    keepdims : bool
        Leave the reduced axes in the result with size one.
    out : ndarray of float64, optional
        Where to put the result.
    progress : callable or bool, optional
        Told the share done, 0 to 1, during long work; True shows a bar where tqdm is installed.

    Returns
    -------
    float or ndarray
        One number where everything is reduced, else an array of the shape that NumPy's
        reductions have.

    Examples
    --------
    >>> vx.mean([1, 2, 6])
    3.0
    >>> vx.mean([1, 2, 4], kind="geometric")
    2.0
    >>> vx.mean([1, None, 2], weights=[1, 1, 3], nan_policy="omit")
    1.75
    >>> vx.mean([[1, 2], [3, 5]], axis=0)
    array([2. , 3.5])
    """
    return _core.mean(x, kind, weights, nan_policy, axis, keepdims, out, progress)


@overload
def trimmed_mean(x: ArrayLike, cut: Cut, **options: Unpack[OfAll]) -> float: ...
@overload
def trimmed_mean(x: ArrayLike, cut: Cut, **options: Unpack[OfLanes]) -> Doubles: ...
def trimmed_mean(x: ArrayLike, cut: Cut, *, weights: ArrayLike | None = None,
                 nan_policy: NanPolicy = "propagate", axis: Axis = None, keepdims: bool = False,
                 out: Array | None = None, progress: Progress = None) -> float | Doubles:
    """Mean without the smallest and largest values.

    Parameters
    ----------
    x : array_like
        Data.
    cut : float or pair of float
        The fraction to leave out at each end, or below and above: floor(cut n) values, by weight
        where there are weights.
    weights, nan_policy, axis, keepdims, out, progress
        As in `mean`.

    Returns
    -------
    float or ndarray
        Of the shape of the axes that are left, as that of `mean`.

    Examples
    --------
    >>> vx.trimmed_mean([1, 2, 3, 4, 100], 0.2)
    3.0
    """
    low, high = _ends(cut)
    return _core.trimmed_mean(x, low, high, False, weights, nan_policy, axis, keepdims, out, progress)


@overload
def winsorized_mean(x: ArrayLike, cut: Cut, **options: Unpack[OfAll]) -> float: ...
@overload
def winsorized_mean(x: ArrayLike, cut: Cut, **options: Unpack[OfLanes]) -> Doubles: ...
def winsorized_mean(x: ArrayLike, cut: Cut, *, weights: ArrayLike | None = None,
                    nan_policy: NanPolicy = "propagate", axis: Axis = None, keepdims: bool = False,
                    out: Array | None = None, progress: Progress = None) -> float | Doubles:
    """Mean with the smallest and largest values replaced by the nearest ones that stay.

    Parameters
    ----------
    x : array_like
        Data.
    cut : float or pair of float
        The fraction to replace at each end, or below and above: floor(cut n) values.
    weights, nan_policy, axis, keepdims, out, progress
        As in `mean`.

    Returns
    -------
    float or ndarray
        Of the shape of the axes that are left, as that of `mean`.

    Examples
    --------
    >>> vx.winsorized_mean([1, 2, 3, 4, 100], 0.2)
    3.0
    >>> vx.winsorized_mean([1, 2, 3, 4, 100], (0, 0.2))
    2.8
    """
    low, high = _ends(cut)
    return _core.trimmed_mean(x, low, high, True, weights, nan_policy, axis, keepdims, out, progress)


@overload
def moment(x: ArrayLike, order: int, *, center: float | None = ..., **options: Unpack[OfAll]) -> float: ...
@overload
def moment(x: ArrayLike, order: int | ArrayLike, *, center: float | None = ..., **options: Unpack[OfLanes]) -> Doubles: ...
def moment(x: ArrayLike, order: int | ArrayLike, *, center: float | None = None,
           weights: ArrayLike | None = None, nan_policy: NanPolicy = "propagate",
           axis: Axis = None, keepdims: bool = False, out: Array | None = None,
           progress: Progress = None) -> float | Doubles:
    """The mean of (x - center)^order.

    Parameters
    ----------
    x : array_like
        Data.
    order : int or list of int
        0 to 64.  The moments of a list are found in one pass and stand in a leading axis.
    center : float, optional
        The mean where it is left out.
    weights, nan_policy, axis, keepdims, out, progress
        As in `mean`.

    Returns
    -------
    float or ndarray
        Of the shape of the axes that are left, as that of `mean`.

    Examples
    --------
    >>> vx.moment([1, 2, 6], 2)
    4.666666666666667
    >>> vx.moment([1, 2, 6], [1, 2, 3], center=0)
    array([ 3.        , 13.66666667, 75.        ])
    """
    return _core.moment(x, order, center, weights, nan_policy, axis, keepdims, out, progress)


@overload
def var(x: ArrayLike, *, ddof: float = ..., **options: Unpack[OfAll]) -> float: ...
@overload
def var(x: ArrayLike, *, ddof: float = ..., **options: Unpack[OfLanes]) -> Doubles: ...
def var(x: ArrayLike, *, ddof: float = 1, weights: ArrayLike | None = None,
        nan_policy: NanPolicy = "propagate", axis: Axis = None, keepdims: bool = False,
        out: Array | None = None, progress: Progress = None) -> float | Doubles:
    """Variance: Σw(x - mean)² / (Σw - ddof).

    Parameters
    ----------
    x : array_like
        Data.
    ddof : float
        Taken from the divisor: 1 estimates the variance of what the data were drawn from (NumPy's
        default is 0).  NaN where the divisor is not positive.
    weights, nan_policy, axis, keepdims, out, progress
        As in `mean`.

    Returns
    -------
    float or ndarray
        Of the shape of the axes that are left, as that of `mean`.

    Examples
    --------
    >>> vx.var([1, 2, 6])
    7.0
    >>> vx.var([1, 2, 6], ddof=0)
    4.666666666666667
    >>> vx.var([3])
    nan
    """
    return _core.var(x, ddof, weights, nan_policy, axis, keepdims, out, progress)


@overload
def std(x: ArrayLike, *, ddof: float = ..., **options: Unpack[OfAll]) -> float: ...
@overload
def std(x: ArrayLike, *, ddof: float = ..., **options: Unpack[OfLanes]) -> Doubles: ...
def std(x: ArrayLike, *, ddof: float = 1, weights: ArrayLike | None = None,
        nan_policy: NanPolicy = "propagate", axis: Axis = None, keepdims: bool = False,
        out: Array | None = None, progress: Progress = None) -> float | Doubles:
    """Standard deviation: the square root of `var`.

    Parameters
    ----------
    x : array_like
        Data.
    ddof : float
        Taken from the divisor; NumPy's default is 0.
    weights, nan_policy, axis, keepdims, out, progress
        As in `mean`.

    Returns
    -------
    float or ndarray
        Of the shape of the axes that are left, as that of `mean`.

    Examples
    --------
    >>> vx.std([1, 2, 2, 3, 7])
    2.345207879911715
    """
    return _core.std(x, ddof, weights, nan_policy, axis, keepdims, out, progress)


@overload
def skewness(x: ArrayLike, *, bias: bool = ..., **options: Unpack[OfAll]) -> float: ...
@overload
def skewness(x: ArrayLike, *, bias: bool = ..., **options: Unpack[OfLanes]) -> Doubles: ...
def skewness(x: ArrayLike, *, bias: bool = True, weights: ArrayLike | None = None,
             nan_policy: NanPolicy = "propagate", axis: Axis = None, keepdims: bool = False,
             out: Array | None = None, progress: Progress = None) -> float | Doubles:
    """Skewness: the third central moment over the 3/2 power of the second.

    Parameters
    ----------
    x : array_like
        Data.
    bias : bool
        False: the estimate G1 (Joanes and Gill 1998, Comparing measures of sample skewness and
        kurtosis), of more than two values.
    weights, nan_policy, axis, keepdims, out, progress
        As in `mean`.

    Returns
    -------
    float or ndarray
        Of the shape of the axes that are left, as that of `mean`.

    Examples
    --------
    >>> vx.skewness([1, 2, 3])
    0.0
    """
    return _core.skewness(x, bias, weights, nan_policy, axis, keepdims, out, progress)


@overload
def kurtosis(x: ArrayLike, *, bias: bool = ..., **options: Unpack[OfAll]) -> float: ...
@overload
def kurtosis(x: ArrayLike, *, bias: bool = ..., **options: Unpack[OfLanes]) -> Doubles: ...
def kurtosis(x: ArrayLike, *, bias: bool = True, weights: ArrayLike | None = None,
             nan_policy: NanPolicy = "propagate", axis: Axis = None, keepdims: bool = False,
             out: Array | None = None, progress: Progress = None) -> float | Doubles:
    """Excess kurtosis: the fourth central moment over the square of the second, less 3.

    Parameters
    ----------
    x : array_like
        Data.
    bias : bool
        False: the estimate G2 (Joanes and Gill 1998), of more than three values.
    weights, nan_policy, axis, keepdims, out, progress
        As in `mean`.

    Returns
    -------
    float or ndarray
        Of the shape of the axes that are left, as that of `mean`.

    Examples
    --------
    >>> vx.kurtosis([-1, 1])
    -2.0
    """
    return _core.kurtosis(x, bias, weights, nan_policy, axis, keepdims, out, progress)


@overload
def mean_absolute_deviation(x: ArrayLike, *, center: Center = ..., **options: Unpack[OfAll]) -> float: ...
@overload
def mean_absolute_deviation(x: ArrayLike, *, center: Center = ..., **options: Unpack[OfLanes]) -> Doubles: ...
def mean_absolute_deviation(x: ArrayLike, *, center: Center = "mean", weights: ArrayLike | None = None,
                            nan_policy: NanPolicy = "propagate", axis: Axis = None,
                            keepdims: bool = False, out: Array | None = None,
                            progress: Progress = None) -> float | Doubles:
    """The mean of |x - center|.

    Parameters
    ----------
    x : array_like
        Data.
    center : {"mean", "median"}
        What deviations are taken from.
    weights, nan_policy, axis, keepdims, out, progress
        As in `mean`.

    Returns
    -------
    float or ndarray
        Of the shape of the axes that are left, as that of `mean`.

    Examples
    --------
    >>> vx.mean_absolute_deviation([1, 2, 6])
    2.0
    """
    return _core.mean_absolute_deviation(x, center, weights, nan_policy, axis, keepdims, out, progress)


@overload
def median_absolute_deviation(x: ArrayLike, *, scale: float = ..., **options: Unpack[OfAll]) -> float: ...
@overload
def median_absolute_deviation(x: ArrayLike, *, scale: float = ..., **options: Unpack[OfLanes]) -> Doubles: ...
def median_absolute_deviation(x: ArrayLike, *, scale: float = 1.0, weights: ArrayLike | None = None,
                              nan_policy: NanPolicy = "propagate", axis: Axis = None,
                              keepdims: bool = False, out: Array | None = None,
                              progress: Progress = None) -> float | Doubles:
    """The median of |x - median(x)|, times `scale`.

    Parameters
    ----------
    x : array_like
        Data.
    scale : float
        1.482602218505602 makes it the standard deviation of normal data.
    weights, nan_policy, axis, keepdims, out, progress
        As in `mean`.

    Returns
    -------
    float or ndarray
        Of the shape of the axes that are left, as that of `mean`.

    Examples
    --------
    >>> vx.median_absolute_deviation([1, 2, 6, 7])
    2.5
    """
    return _core.median_absolute_deviation(x, scale, weights, nan_policy, axis, keepdims, out, progress)


@overload
def describe(x: ArrayLike, *, weights: ArrayLike | None = ..., nan_policy: NanPolicy = ..., axis: None = ...,
             progress: Progress = ...) -> Description[float]: ...
@overload
def describe(x: ArrayLike, *, weights: ArrayLike | None = ..., nan_policy: NanPolicy = ..., axis: Axis,
             progress: Progress = ...) -> Description[Doubles]: ...
def describe(x: ArrayLike, *, weights: ArrayLike | None = None, nan_policy: NanPolicy = "omit",
             axis: Axis = None, progress: Progress = None) -> Description[Any]:
    """The usual statistics at once; prints as a table.

    Parameters
    ----------
    x : array_like
        Data.
    weights, axis, progress
        As in `mean`.
    nan_policy : {"omit", "propagate", "raise"}
        Missing values are left out and counted, unless told otherwise.

    Returns
    -------
    Description
        count (the total weight), missing, mean, std, min, q1, median, q3, max, skewness,
        kurtosis.

    Examples
    --------
    >>> print(vx.describe([1, 2, None, 6]))
    count           3
    missing         1
    mean            3
    std       2.64575
    min             1
    q1            1.5
    median          2
    q3              4
    max             6
    skewness  0.59517
    kurtosis     -1.5
    """
    parts = pieces(_core.describe(x, weights, nan_policy, axis, progress))
    missing = int(parts[1]) if isinstance(parts[1], float) else parts[1].astype(int)
    return Description(parts[0], missing, *parts[2:])


def pieces(array: Array) -> list[Any]:
    """What stands along the leading axis; floats where it is the only one."""
    return array.tolist() if array.ndim == 1 else list(array)


@overload
def cov(x: ArrayLike, y: None = None, *, ddof: float = ..., weights: ArrayLike | None = ...,
        nan_policy: NanPolicy = ..., progress: Progress = ...) -> Doubles: ...
@overload
def cov(x: ArrayLike, y: ArrayLike, *, ddof: float = ..., weights: ArrayLike | None = ...,
        nan_policy: NanPolicy = ..., progress: Progress = ...) -> float: ...
def cov(x: ArrayLike, y: ArrayLike | None = None, *, ddof: float = 1,
        weights: ArrayLike | None = None, nan_policy: NanPolicy = "propagate",
        progress: Progress = None) -> float | Doubles:
    """Covariance of two variables, or the matrix of a matrix' columns.

    Parameters
    ----------
    x : array_like
        A variable; without `y`, a matrix with a variable in each column.
    y : array_like, optional
        The other variable.
    ddof : float
        Taken from the divisor.
    weights : array_like, optional
        Frequencies of the rows.
    nan_policy : {"propagate", "omit", "raise"}
        omit leaves out each row with a missing value.
    progress
        As in `mean`.

    Returns
    -------
    float or ndarray
        A float for two variables; else k by k for k columns.

    Examples
    --------
    >>> vx.cov([1, 2, 3], [1, 2, 6])
    2.5
    >>> vx.cov([[1, 1], [2, 2], [3, 6]])
    array([[1. , 2.5],
           [2.5, 7. ]])
    """
    return _core.cov(x, y, ddof, weights, nan_policy, progress)


@overload
def corr(x: ArrayLike, y: None = None, *, method: Correlation = ..., weights: ArrayLike | None = ...,
         nan_policy: NanPolicy = ..., progress: Progress = ...) -> Doubles: ...
@overload
def corr(x: ArrayLike, y: ArrayLike, *, method: Correlation = ..., weights: ArrayLike | None = ...,
         nan_policy: NanPolicy = ..., progress: Progress = ...) -> float: ...
def corr(x: ArrayLike, y: ArrayLike | None = None, *, method: Correlation = "pearson",
         weights: ArrayLike | None = None, nan_policy: NanPolicy = "propagate",
         progress: Progress = None) -> float | Doubles:
    """Correlation of two variables, or the matrix of a matrix' columns.

    Parameters
    ----------
    x : array_like
        A variable; without `y`, a matrix with a variable in each column.
    y : array_like, optional
        The other variable.
    method : {"pearson", "spearman", "kendall"}
        Of the values, of their ranks (equal ones share the average), or Kendall's tau-b, in n log n
        steps (Knight 1966, A computer method for calculating Kendall's tau with ungrouped data).
    weights, nan_policy, progress
        As in `cov`.

    Returns
    -------
    float or ndarray

    Examples
    --------
    >>> vx.corr([1, 2, 3], [1, 2, 6], method="spearman")
    1.0
    """
    return _core.corr(x, y, method, weights, nan_policy, progress)
