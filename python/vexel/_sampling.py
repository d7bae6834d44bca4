"""Draws from data: weighted choices, permutations, the bootstrap."""

from __future__ import annotations

from collections.abc import MutableSequence
from typing import TYPE_CHECKING, Any, overload

import numpy as np

from . import _core
from ._results import MOST_IN_REPR, BootstrapResult, Interval

if TYPE_CHECKING:
    from collections.abc import Callable

    from ._types import (
        Array, ArrayLike, BootstrapMethod, Doubles, NanPolicy, Progress, Rng, Shape, Size, Statistic)


class Urn(_core.Urn):
    """Indices with probabilities proportional to weights.

    One draw each, however many weights there are: the alias method (Walker 1977, An efficient method
    for generating discrete random variables with general distributions).

    Parameters
    ----------
    weights : array_like
        Finite, not negative, not all zero.

    Examples
    --------
    >>> urn = vx.Urn([1, 0, 3])
    >>> sorted(set(urn.sample(1000, rng=1).tolist()))
    [0, 2]
    """

    def __init__(self, weights: ArrayLike) -> None:
        super().__init__(weights)
        self._weights = np.array(weights, dtype=np.float64)

    @overload
    def sample(self, n: None = None, rng: Rng = None, *, progress: Progress = None) -> int: ...
    @overload
    def sample(self, n: Size = None, rng: Rng = None, *, out: Array, progress: Progress = None) -> Array: ...
    @overload
    def sample(self, n: Shape, rng: Rng = None, *, progress: Progress = None) -> Array: ...
    def sample(self, n: Size = None, rng: Rng = None, *, out: Array | None = None,
               progress: Progress = None) -> int | Array:
        """Indices from 0, each with its probability.

        Parameters
        ----------
        n : int or tuple of int, optional
            How many, or the shape; None: one index.
        rng : Random, int, numpy.random.Generator or None
            The stream, a seed, a generator that gives a seed, or None for a seed from the
            operating system.
        out : ndarray of int64, optional
            Where to put them; C-contiguous.
        progress : callable or bool, optional
            Told the share done, 0 to 1, during long work; True shows a bar where tqdm is installed.

        Returns
        -------
        int or ndarray of int64

        Examples
        --------
        >>> vx.Urn([0, 1]).sample((2, 2), rng=1)
        array([[1, 1],
               [1, 1]])
        """
        return super().sample(n, rng, out, progress)  # type: ignore[no-any-return]

    def size(self) -> int:
        """How many indices there are; `len` is the same.

        Returns
        -------
        int

        Examples
        --------
        >>> vx.Urn([1, 0, 3]).size()
        3
        """
        return len(self._weights)

    __len__ = size

    def __eq__(self, other: object) -> bool:
        return isinstance(other, Urn) and np.array_equal(self._weights, other._weights)

    __hash__ = None  # type: ignore[assignment]

    def __reduce__(self) -> Any:
        return Urn, (self._weights,)

    def __repr__(self) -> str:
        return f"Urn({self._weights.tolist()})" if len(self) <= MOST_IN_REPR else f"<Urn of {len(self)} cells>"


def choice(x: ArrayLike, n: Size = None, *, weights: ArrayLike | None = None, replace: bool = True,
           rng: Rng = None, progress: Progress = None) -> Any:
    """Elements of x, drawn at random.

    For many draws from the same weights, one at a time, an `Urn` is faster.

    Parameters
    ----------
    x : array_like or int
        What to draw from; of a matrix, rows; a whole number means 0 to x - 1.
    n : int or tuple, optional
        How many; None: one element itself.
    weights : array_like, optional
        Probabilities are proportional to them.
    replace : bool
        False: no element twice; those left keep the proportions of their weights.
    rng : Random, int or None
        The stream, a seed, or None for a seed from the operating system.
    progress : callable or bool, optional
        Told the share done, 0 to 1, during long work; True shows a bar where tqdm is installed.

    Returns
    -------
    element or ndarray
        An element of `x` for n = None, else an array; of a whole number `x`, int or int64.

    Examples
    --------
    >>> vx.choice(["a", "b", "c"], 3, replace=False, rng=1).shape
    (3,)
    >>> str(vx.choice(["head", "tail"], weights=[1, 0]))
    'head'
    """
    items = None if isinstance(x, (int, np.integer)) else np.asarray(x)
    if items is not None and items.ndim == 0:
        raise TypeError(f"x must be a list, an array or a whole number, got a {type(x).__name__}")
    of = _core.checked_size(x, "x")[0] if items is None else len(items)
    shape = tuple(_core.checked_size(n, "n") or ())
    if of == 0 and 0 not in shape:
        raise ValueError("x must have at least one element, got none")
    count = int(np.prod(shape, dtype=np.int64))
    if weights is not None and np.shape(weights) != (of,):
        raise ValueError(f"weights must be one for each of the {of} elements of x, "
                         f"got {_core.short_text(weights)}")
    drawn = _core.choice(of, count, rng, weights, replace, progress)
    if items is None:
        return int(drawn[0]) if n is None else drawn.reshape(shape)
    drawn = items[drawn]
    return drawn[0] if n is None else drawn.reshape(shape + drawn.shape[1:])


def permutation(n: int | ArrayLike, rng: Rng = None, *, progress: Progress = None) -> Array:
    """The numbers 0 to n - 1 in random order.

    Parameters
    ----------
    n : int or array_like
        How many; of a list, an array or a column, its elements in random order (of a matrix, its
        rows).
    rng, progress
        As in `choice`.

    Returns
    -------
    ndarray
        int64 for a number, else of the type of `n`.

    Examples
    --------
    >>> sorted(vx.permutation(4, rng=1).tolist())
    [0, 1, 2, 3]
    """
    if isinstance(n, (int, np.integer)) or np.ndim(n) == 0:
        return _core.permutation(n, rng, progress)
    items = np.asarray(n)
    return items[_core.permutation(len(items), rng, progress)]


def shuffle(x: Any, rng: Rng = None) -> None:
    """Puts a list or array in random order, in place; of a matrix, its rows.

    Parameters
    ----------
    x : list or ndarray
        What to shuffle.
    rng : Random, int or None
        As in `choice`.

    Examples
    --------
    >>> x = [1, 2, 3]
    >>> vx.shuffle(x, rng=1)
    >>> sorted(x)
    [1, 2, 3]
    """
    if not isinstance(x, (np.ndarray, MutableSequence)) or (isinstance(x, np.ndarray) and not x.ndim):
        raise TypeError(f"x must be a list or an array, got a {type(x).__name__}")
    plain = isinstance(x, list) or (isinstance(x, np.ndarray) and x.dtype.str[1:] in ("f8", "f4", "i8", "i4"))
    if plain and _core.shuffle(x, rng):
        return
    order = _core.permutation(len(x), rng, None)
    if isinstance(x, np.ndarray):
        x[:] = x[order]
        return
    before = list(x)
    for i, k in enumerate(order):
        x[i] = before[k]


def bootstrap(x: ArrayLike, statistic: Statistic | Callable[[Doubles], float] = "mean", *,
              replicates: int = 9999, confidence: float = 0.95, method: BootstrapMethod = "BCa",
              rng: Rng = None, nan_policy: NanPolicy = "propagate",
              progress: Progress = None) -> BootstrapResult:
    """How a statistic would scatter in other samples of the same size.

    Parameters
    ----------
    x : array_like
        The sample.
    statistic : str or callable
        "mean", "median", "std", "var", "min", "max", "sum", "skewness", "kurtosis", "iqr", or a
        callable of an array.
    replicates : int
        Samples of the size of `x` drawn from it with replacement.
    confidence : float
        Of the interval.
    method : {"BCa", "percentile", "basic"}
        Bias-corrected and accelerated (Efron 1987, Better bootstrap confidence intervals), the
        replicates' quantiles, or these reflected about the estimate.
    rng : Random, int or None
        As in `choice`.
    nan_policy : {"propagate", "omit", "raise"}
        What a missing value does.
    progress : callable or bool, optional
        As in `quantile`.

    Returns
    -------
    BootstrapResult
        estimate, standard_error, interval (low, high), replicates.

    Examples
    --------
    >>> b = vx.bootstrap([1, 2, 3, 4, 10], "mean", rng=1)
    >>> b.estimate, b.interval.low < 4 < b.interval.high, len(b.replicates)
    (4.0, True, 9999)
    """
    estimate, error, ends, values = _core.bootstrap(x, statistic, replicates, confidence, method,
                                                    rng, nan_policy, progress)
    return BootstrapResult(estimate, error, Interval(*ends), values)
