"""Series and hypothesis tests."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any

import numpy as np

from . import _core
from ._continuous_laws import Normal
from ._distributions import Distribution
from ._results import NormalPlot, TestResult

if TYPE_CHECKING:
    from collections.abc import Callable
    from typing import Literal

    from ._types import (
        Array, ArrayLike, Axis, Doubles, NanPolicy, Progress, Statistic, WindowAlign, WindowEdges)


class MovingResult(np.ndarray):
    """The array that `moving` returns, which can draw itself; what is computed from it is plain."""

    def __array_wrap__(self, array: Any, context: Any = None, return_scalar: bool = False) -> Any:
        array = np.asarray(array)
        return array[()] if return_scalar or array.ndim == 0 else array

    def squeeze(self, axis: Any = None) -> Any:
        return np.asarray(self).squeeze(axis)  # NumPy 1 wants a MovingResult of __array_wrap__ there

    def __reduce__(self) -> Any:
        return np.array, (np.array(self),)

    def __repr__(self) -> str:
        return repr(np.asarray(self))

    def plot(self, ax: Any = None, **style: Any) -> Any:
        """Draws the values over their positions with matplotlib.

        Parameters
        ----------
        ax : matplotlib.axes.Axes, optional
            Where to draw; new ones where they are left out.
        **style
            What `Axes.plot` takes: color, label, ...

        Returns
        -------
        matplotlib.axes.Axes
        """
        from ._plot import axes

        ax = axes(ax)
        ax.plot(np.asarray(self), **style)
        return ax


def moving(x: ArrayLike, window: int,
           statistic: Statistic | Literal["quantile"] | Callable[[Doubles], float] = "mean", *, q: float = 0.5,
           min_count: int | None = None, edges: WindowEdges = "shrink", align: WindowAlign = "center",
           weights: ArrayLike | None = None, nan_policy: NanPolicy = "propagate", axis: Axis = -1,
           out: Array | None = None, progress: Progress = None) -> Doubles:
    """A statistic of each window of a series.

    Parameters
    ----------
    x : array_like
        The series.
    window : int
        Elements of a window.
    statistic : str or callable
        "mean", "median", "std", "var", "min", "max", "sum", "skewness", "kurtosis", "iqr",
        "quantile" (of `q`), or a callable of the present values of a window.  std and var have
        ddof 1.
    q : float
        The probability of "quantile".
    min_count : int, optional
        A window with fewer present values gives NaN; 1 where it is left out.  Under "propagate" a
        window with a missing value does, too.
    edges : {"shrink", "nan", "reflect", "nearest"}
        What windows see beyond the ends: nothing, nothing (their result is NaN), the series
        mirrored (d c b a | a b c d), or the end element all the way.
    align : {"center", "right", "left"}
        Where the window of an element lies: around it (an even one has its extra element on the
        left), up to it, or from it on.
    weights : array_like, optional
        Of the elements.
    nan_policy : {"propagate", "omit", "raise"}
        propagate: windows that hold a missing value give NaN.
    axis : int, optional
        The time axis; None: all values as one dimension.
    out : ndarray of float64, optional
        Where to put the result.
    progress : callable or bool, optional
        Told the share done, 0 to 1, during long work; True shows a bar where tqdm is installed.

    Returns
    -------
    ndarray
        With the time axis of `x`.  Of a vector it has `plot()`, which draws it; of a matrix it is a
        plain array.

    Examples
    --------
    >>> vx.moving([1, 2, 6, 4], 3).tolist()
    [1.5, 3.0, 4.0, 5.0]
    >>> vx.moving([1, 2, 6, 4], 2, "max", align="right").tolist()
    [1.0, 2.0, 6.0, 6.0]
    """
    result = _core.moving(x, window, statistic, q, 1 if min_count is None else min_count, align,
                          edges, weights, nan_policy, axis, out, progress)
    return result.view(MovingResult) if out is None and result.ndim == 1 else result


def filter(x: ArrayLike, taps: ArrayLike, *, recursive: bool = False,
           initial: ArrayLike | None = None, axis: Axis = -1, out: Array | None = None,
           progress: Progress = None) -> Doubles:
    """Linear filter: y[i] = Σ taps[k] x[i-k]; recursive: y[i] = x[i] + Σ taps[k] y[i-1-k].

    Parameters
    ----------
    x : array_like
        The series.
    taps : array_like
        Coefficients.
    recursive : bool
        Feed the output back.
    initial : array_like, optional
        What lies before the start, latest first: earlier x, or (recursive) earlier y.  0 where it
        is left out.
    axis, out
        As in `moving`.
    progress
        As in `moving`.

    Examples
    --------
    >>> vx.filter([1, 2, 3], [0.5, 0.5])
    array([0.5, 1.5, 2.5])
    >>> vx.filter([1, 0, 0], [0.5], recursive=True)
    array([1.  , 0.5 , 0.25])
    """
    return _core.filter(x, taps, recursive, initial, axis, out, progress)


def autocorrelation(x: ArrayLike, lags: int | ArrayLike, *, nan_policy: NanPolicy = "propagate",
                    axis: Axis = None, out: Array | None = None,
                    progress: Progress = None) -> Doubles:
    """Autocorrelations r[k] = c[k]/c[0], c[k] = Σ (x[i] - mean)(x[i+k] - mean) / n.

    Parameters
    ----------
    x : array_like
        The series.
    lags : int or list of int
        The last of the lags from 0 on, or the lags.
    nan_policy : {"propagate", "omit", "raise"}
        omit: products with a missing factor count nothing.
    axis : int, optional
        The time axis; lags stand in the leading one.
    out : ndarray of float64, optional
        Where to put the result.
    progress
        As in `moving`.

    Examples
    --------
    >>> vx.autocorrelation([1, 2, 3, 4], 1)
    array([1.  , 0.25])
    """
    return _core.autocorrelation(x, lags, nan_policy, axis, out, progress)


def shapiro(x: ArrayLike, *, nan_policy: NanPolicy = "propagate", progress: Progress = None) -> TestResult:
    """Shapiro and Wilk's test of normality.

    Parameters
    ----------
    x : array_like
        3 to 5000 values; of others the result is NaN.
    nan_policy : {"propagate", "omit", "raise"}
        What a missing value does.
    progress
        As in `moving`.

    Returns
    -------
    TestResult
        statistic (W), pvalue.

    Notes
    -----
    P. Royston, A remark on algorithm AS 181: the W-test for normality (1995), algorithm R94: the
    p-value is an approximation, to about two digits.

    Examples
    --------
    >>> statistic, pvalue = vx.shapiro([1, 2, 3, 4, 5, 20])
    >>> pvalue < 0.01
    True
    """
    return TestResult(*_core.shapiro(x, nan_policy, progress))


def ks_test(x: ArrayLike, distribution: Distribution | Callable[[float], float], *,
            nan_policy: NanPolicy = "propagate", progress: Progress = None) -> TestResult:
    """Kolmogorov and Smirnov's test, two-sided.

    Parameters
    ----------
    x : array_like
        Data.
    distribution : distribution or callable
        Any object with a method `cdf`, or a distribution function of one float.
    nan_policy : {"propagate", "omit", "raise"}
        What a missing value does.
    progress
        As in `moving`.

    Returns
    -------
    TestResult
        statistic (the largest distance), pvalue; two-sided.

    Notes
    -----
    D is the largest distance between the distribution function and that of the data; the p-value
    holds for a continuous one.  Pomeranz' recursion (1974), Smirnov's one-sided law in the tails,
    Chang Li-Chien's correction (1956) of the limit between: relative error below 1e-11 up to n = 1000.

    Examples
    --------
    >>> vx.ks_test([0.25, 0.5, 0.75], vx.Uniform()).statistic
    0.25
    """
    if isinstance(distribution, Distribution):
        return TestResult(*_core.ks_test_law(x, distribution._law, nan_policy, progress))
    cdf = getattr(distribution, "cdf", distribution)
    if not callable(cdf) or isinstance(distribution, type):
        raise TypeError(f"distribution must be an object with cdf or a callable, got {_core.short_text(distribution)}")
    return TestResult(*_core.ks_test(x, cdf, nan_policy, progress))


def chi_square_test(observed: ArrayLike, expected: ArrayLike | None = None, *, ddof: float = 0,
                    nan_policy: NanPolicy = "propagate", progress: Progress = None) -> TestResult:
    """Pearson's chi-square test of counts.

    Parameters
    ----------
    observed : array_like
        Counts, in an array of any shape: a list of cells, not a table whose rows and columns are
        to be independent.
    expected : array_like, optional
        All cells equally likely where it is left out.
    ddof : float
        Parameters estimated from the data.
    nan_policy : {"propagate", "omit", "raise"}
        What a missing value does.
    progress
        As in `moving`.

    Returns
    -------
    TestResult
        statistic (Σ (observed - expected)²/expected), pvalue (the upper tail with cells - 1 - ddof
        degrees of freedom).

    Examples
    --------
    >>> vx.chi_square_test([10, 30]).statistic
    10.0
    >>> vx.chi_square_test([12, 8, 10], expected=[15, 5, 10])
    TestResult(statistic=2.4, pvalue=0.301194211912202...)
    """
    return TestResult(*_core.chi_square_test(observed, expected, ddof, nan_policy, progress))


def t_test(x: ArrayLike, y: ArrayLike | None = None, *, mean: float = 0, equal_var: bool = False,
           nan_policy: NanPolicy = "propagate", progress: Progress = None) -> TestResult:
    """Student's t-test, two-sided: of one sample against a mean, of two against each other.

    Parameters
    ----------
    x : array_like
        A sample.
    y : array_like, optional
        Another one; a single number is a `mean`.
    mean : float
        What the mean of one sample is tested against, without `y`.
    equal_var : bool
        Two samples: True pools their variances, False is Welch's test (1947), with fractional degrees
        of freedom.
    nan_policy : {"propagate", "omit", "raise"}
        What a missing value does.
    progress
        As in `moving`.

    Returns
    -------
    TestResult
        statistic, pvalue.

    Examples
    --------
    >>> vx.t_test([1, 2, 3], mean=2)
    TestResult(statistic=0.0, pvalue=1.0)
    >>> round(vx.t_test([1, 2, 3, 4], [3, 4, 5, 9]).pvalue, 6)
    0.12768
    """
    if y is None:
        return TestResult(*_core.t_test(x, mean, nan_policy, progress))
    if not isinstance(mean, (int, float)) or mean != 0:
        raise ValueError(f"mean must be left out where y is given, got {_core.short_text(mean)}")
    if isinstance(y, (int, float)) or (hasattr(y, "__float__") and np.ndim(y) == 0):
        return TestResult(*_core.t_test(x, y, nan_policy, progress))
    return TestResult(*_core.t_test_two(x, y, equal_var, nan_policy, progress))


def normal_plot(x: ArrayLike, *, nan_policy: NanPolicy = "omit", progress: Progress = None) -> NormalPlot:
    """Data in order against normal quantiles, to be looked at for normality.

    Parameters
    ----------
    x : array_like
        Data.
    nan_policy : {"omit", "raise"}
        What a missing value does.
    progress
        As in `moving`.

    Returns
    -------
    NormalPlot
        quantiles, at (i - 3/8) / (n + 1/4) (Blom 1958), and values; `plot()` draws them with the
        line through the quartiles.

    Examples
    --------
    >>> quantiles, values = vx.normal_plot([3, 1, 2])
    >>> values
    array([1., 2., 3.])
    """
    values = _core.sort(x, None, nan_policy, None, progress).astype(np.float64)
    n = len(values)
    return NormalPlot(Normal().quantile((np.arange(1, n + 1) - 0.375) / (n + 0.25)), values)
