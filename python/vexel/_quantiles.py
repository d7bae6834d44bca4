"""Quantiles and what is made of them."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any, overload

from . import _core
from ._results import FiveNumber
from ._statistics import pieces

if TYPE_CHECKING:
    from typing import Unpack

    from ._types import (
        Array, ArrayLike, Axis, Doubles, NanPolicy, Number, OfAll, OfLanes, Progress, QuantileMethod)


@overload
def quantile(x: ArrayLike, q: Number, *, method: QuantileMethod = ..., **options: Unpack[OfAll]) -> float: ...
@overload
def quantile(x: ArrayLike, q: ArrayLike, *, method: QuantileMethod = ..., **options: Unpack[OfLanes]) -> Doubles: ...
def quantile(x: ArrayLike, q: ArrayLike, *, method: QuantileMethod = "linear",
             weights: ArrayLike | None = None, nan_policy: NanPolicy = "propagate",
             axis: Axis = None, keepdims: bool = False, out: Array | None = None,
             progress: Progress = None) -> float | Doubles:
    """Quantiles by nine definitions, with weights.

    Parameters
    ----------
    x : array_like
        Data.
    q : float or array_like
        Probabilities, 0 to 1.  The shape of an array leads the shape of the result.
    method : str
        The definition, by NumPy's names: "inverted_cdf", "averaged_inverted_cdf",
        "closest_observation", "interpolated_inverted_cdf", "hazen", "weibull", "linear",
        "median_unbiased", "normal_unbiased" (1 to 9 of Hyndman and Fan).
    weights : array_like, optional
        Frequencies, with every method: the number of values becomes the total weight and the k-th
        value the smallest whose cumulative weight reaches k.  Whole weights give what repeated
        values give.  Weights that add up to 1 count as one value: take "inverted_cdf", which does
        not depend on their scale, or multiply them by the number of values.
    nan_policy, axis, keepdims, out, progress
        As in `mean`.

    Returns
    -------
    float or ndarray
        Of the shape of `q`, followed by that of the axes that are left.

    Raises
    ------
    ValueError
        For a probability outside [0, 1], and for missing values under nan_policy="raise".

    Notes
    -----
    Of the values x[1] <= ... <= x[n], the first three take an element: the first with k/n >= q; the
    same, or the mean of x[k] and x[k+1] where k/n = q; the one with k nearest to n q (of two the
    even k).  The others take x[j] + g (x[j+1] - x[j]) with j + g = n q + m, 0 <= g < 1, where m is 0,
    1/2 (hazen), q (weibull), 1 - q (linear), (q + 1)/3 (median_unbiased), q/4 + 3/8 (normal_unbiased).

    R. J. Hyndman and Y. Fan, Sample quantiles in statistical packages (1996).

    Examples
    --------
    >>> vx.quantile([1, 2, 3, 4], 0.9)
    3.7
    >>> vx.quantile([1, 2, 3, 4], [0.25, 0.75], method="hazen")
    array([1.5, 3.5])
    >>> vx.quantile([1, 2], 0.5, weights=[1, 3])
    2.0
    """
    return _core.quantile(x, q, method, weights, nan_policy, axis, keepdims, out,
                          progress)


@overload
def median(x: ArrayLike, **options: Unpack[OfAll]) -> float: ...
@overload
def median(x: ArrayLike, **options: Unpack[OfLanes]) -> Doubles: ...
def median(x: ArrayLike, *, weights: ArrayLike | None = None, nan_policy: NanPolicy = "propagate",
           axis: Axis = None, keepdims: bool = False, out: Array | None = None,
           progress: Progress = None) -> float | Doubles:
    """Median: the middle value, or the mean of the two in the middle.

    Parameters
    ----------
    x : array_like
        Data.
    weights : array_like, optional
        Frequencies, as those of `quantile`: weights that add up to 1 count as one value.
    nan_policy, axis, keepdims, out, progress
        As in `mean`.

    Returns
    -------
    float or ndarray
        Of the shape of the axes that are left, as that of `mean`.

    Examples
    --------
    >>> vx.median([3, 1, 2, 10])
    2.5
    >>> vx.median([[3, 1, 2], [6, 5, 4]], axis=1, keepdims=True)
    array([[2.],
           [5.]])
    """
    return _core.median(x, weights, nan_policy, axis, keepdims, out, progress)


@overload
def iqr(x: ArrayLike, *, method: QuantileMethod = ..., **options: Unpack[OfAll]) -> float: ...
@overload
def iqr(x: ArrayLike, *, method: QuantileMethod = ..., **options: Unpack[OfLanes]) -> Doubles: ...
def iqr(x: ArrayLike, *, method: QuantileMethod = "linear", weights: ArrayLike | None = None,
        nan_policy: NanPolicy = "propagate", axis: Axis = None, keepdims: bool = False,
        out: Array | None = None, progress: Progress = None) -> float | Doubles:
    """Interquartile range: quantile(x, 0.75) - quantile(x, 0.25).

    Parameters
    ----------
    x : array_like
        Data.
    method
        As in `quantile`.
    weights, nan_policy, axis, keepdims, out, progress
        As in `mean`.

    Returns
    -------
    float or ndarray
        Of the shape of the axes that are left, as that of `mean`.

    Examples
    --------
    >>> vx.iqr([1, 2, 3, 4, 5])
    2.0
    """
    return _core.iqr(x, method, weights, nan_policy, axis, keepdims, out, progress)


@overload
def order_statistic(x: ArrayLike, k: int, **options: Unpack[OfAll]) -> float: ...
@overload
def order_statistic(x: ArrayLike, k: int | ArrayLike, **options: Unpack[OfLanes]) -> Doubles: ...
def order_statistic(x: ArrayLike, k: int | ArrayLike, *, weights: ArrayLike | None = None,
                    nan_policy: NanPolicy = "propagate", axis: Axis = None, keepdims: bool = False,
                    out: Array | None = None, progress: Progress = None) -> float | Doubles:
    """The k-th smallest value, from 1, by selection.

    Parameters
    ----------
    x : array_like
        Data.
    k : int or list of int
        1 to the number of values (the total weight).  A list gives a leading axis.
    weights : array_like, optional
        Then it is the smallest value whose cumulative weight reaches k.
    nan_policy, axis, keepdims, out, progress
        As in `mean`.

    Returns
    -------
    float or ndarray
        Of the shape of `k`, followed by that of the axes that are left.

    Examples
    --------
    >>> vx.order_statistic([30, 10, 20], 1)
    10.0
    >>> vx.order_statistic([30, 10, 20], [1, 3])
    array([10., 30.])
    """
    return _core.order_statistic(x, k, weights, nan_policy, axis, keepdims, out, progress)


@overload
def five_number(x: ArrayLike, *, weights: ArrayLike | None = ..., nan_policy: NanPolicy = ..., axis: None = ...,
                progress: Progress = ...) -> FiveNumber[float]: ...
@overload
def five_number(x: ArrayLike, *, weights: ArrayLike | None = ..., nan_policy: NanPolicy = ..., axis: Axis,
                progress: Progress = ...) -> FiveNumber[Doubles]: ...
def five_number(x: ArrayLike, *, weights: ArrayLike | None = None,
                nan_policy: NanPolicy = "propagate", axis: Axis = None,
                progress: Progress = None) -> FiveNumber[Any]:
    """Tukey's five numbers: minimum, hinges, median, maximum.

    The hinges are the medians of the halves, the median belonging to both where the number of
    values is odd (Tukey 1977, Exploratory Data Analysis).

    Parameters
    ----------
    x : array_like
        Data.
    weights, nan_policy, axis, progress
        As in `mean`.

    Returns
    -------
    FiveNumber
        min, lower_hinge, median, upper_hinge, max.

    Examples
    --------
    >>> tuple(vx.five_number([1, 2, 3, 4, 5]))
    (1.0, 2.0, 3.0, 4.0, 5.0)
    """
    return FiveNumber(*pieces(_core.five_number(x, weights, nan_policy, axis, progress)))
