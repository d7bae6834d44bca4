"""Random numbers."""

from __future__ import annotations

from collections.abc import MutableSequence
from typing import TYPE_CHECKING, Any

import numpy as np

from . import _core
from ._results import BootstrapResult, Interval

if TYPE_CHECKING:
    from collections.abc import Callable

    from ._types import Array, ArrayLike, Doubles, NanPolicy, Progress, Rng, Size


class Random(_core.Random):
    """A generator of random numbers.

    Eight interleaved lanes of xoshiro256++ (Blackman and Vigna 2021, Scrambled linear pseudorandom
    number generators).  One value or many, into an array or not: the same draws.  What a seed gives
    stays the same within a major version, here, in C++ and in the language.  One thread at a time
    uses a Random.

    Parameters
    ----------
    seed : int, optional
        0 to 2^64 - 1; None: one from the operating system, which `seed` tells.
    block : int
        Blocks of one seed never meet: one for each process or thread.

    Attributes
    ----------
    seed, block : int
    state : dict
        Everything that decides the draws to come; may be assigned.
    bit_generator : numpy.random.BitGenerator
        This stream for `numpy.random.Generator`.

    Examples
    --------
    >>> rng = vx.Random(42)
    >>> rng.uniform(2)
    array([0.81430515, 0.75279169])
    >>> rng.integers(10), rng.integers(10, 20, 3).dtype
    (7, dtype('int64'))
    """

    def __init__(self, seed: int | None = None, block: int = 0) -> None:
        super().__init__(seed, block)

    def uniform(self, n: Size = None, *, out: Array | None = None, progress: Progress = None) -> Any:
        """Uniform on (0, 1): one float, n of them, or an array of a shape."""
        return super().uniform(n, out, progress)

    def normal(self, n: Size = None, *, out: Array | None = None, progress: Progress = None) -> Any:
        """Standard normal variates."""
        return super().normal(n, out, progress)

    def exponential(self, n: Size = None, *, out: Array | None = None, progress: Progress = None) -> Any:
        """Standard exponential variates."""
        return super().exponential(n, out, progress)

    def integers(self, low: int, high: int | None = None, n: Size = None, *,
                 out: Array | None = None, progress: Progress = None) -> Any:
        """Integers low <= k < high, each equally likely; of one bound: 0 <= k < low."""
        return super().integers(low, high, n, out, progress)

    def choice(self, x: ArrayLike, n: Size = None, *, weights: ArrayLike | None = None,
               replace: bool = True, progress: Progress = None) -> Any:
        """As the function `choice`."""
        return choice(x, n, weights=weights, replace=replace, rng=self, progress=progress)

    def permutation(self, n: int | ArrayLike, *, progress: Progress = None) -> Array:
        """As the function `permutation`."""
        return permutation(n, rng=self, progress=progress)

    def shuffle(self, x: Any) -> None:
        """As the function `shuffle`."""
        shuffle(x, rng=self)

    @property
    def bit_generator(self) -> Any:
        from ._bit_generator import BitGenerator

        return BitGenerator(self)

    def copy(self) -> Random:
        """A generator of the same draws to come."""
        return Random._of(self)

    __copy__ = copy

    def __deepcopy__(self, memo: Any) -> Random:
        return self.copy()

    @classmethod
    def _of(cls, other: Any) -> Random:
        self = cls(0)
        self._assign(other)
        return self

    @classmethod
    def from_bytes(cls, data: bytes) -> Random:
        """The generator that `to_bytes` wrote."""
        return cls._of(_core.Random.from_bytes(data))

    def __reduce__(self) -> Any:
        return _restored, (self.to_bytes(),)

    def __repr__(self) -> str:
        at = f", block={self.block}" if self.block else ""
        made = f"Random({self.seed}{at})"
        return made if self == Random(self.seed, self.block) else f"<{made} after draws>"

    __hash__ = None  # type: ignore[assignment]


def _restored(data: bytes) -> Random:
    return Random.from_bytes(data)


class Urn(_core.Urn):
    """Indices with probabilities proportional to weights, one draw each (alias method).

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

    def sample(self, n: Size = None, rng: Rng = None, *, out: Array | None = None,
               progress: Progress = None) -> Any:
        """One index from 0, n of them, or an array of a shape."""
        return super().sample(n, rng, out, progress)

    def __len__(self) -> int:
        return len(self._weights)

    def __reduce__(self) -> Any:
        return Urn, (self._weights,)

    def __repr__(self) -> str:
        return f"Urn({self._weights.tolist()})" if len(self) <= 8 else f"<Urn of {len(self)} cells>"


def choice(x: ArrayLike, n: Size = None, *, weights: ArrayLike | None = None, replace: bool = True,
           rng: Rng = None, progress: Progress = None) -> Any:
    """Elements of x, drawn at random.

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

    Examples
    --------
    >>> vx.choice(["a", "b", "c"], 3, replace=False, rng=1).shape
    (3,)
    """
    items = None if isinstance(x, (int, np.integer)) else np.asarray(x)
    if items is not None and items.ndim == 0:
        raise TypeError(f"x: a list, an array or a whole number is expected, a {type(x).__name__} came")
    of = _core.checked_size(x, "x")[0] if items is None else len(items)
    shape = tuple(_core.checked_size(n, "n") or ())
    if of == 0 and 0 not in shape:
        raise ValueError("x: at least one element is allowed, none came")
    count = int(np.prod(shape, dtype=np.int64))
    if weights is not None and np.shape(weights) != (of,):
        raise ValueError(f"weights: one for each of the {of} elements of x is allowed, "
                         f"{_core.short_text(weights)} came")
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
        raise TypeError(f"x: a list or an array is expected, a {type(x).__name__} came")
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


def bootstrap(x: ArrayLike, statistic: str | Callable[[Doubles], float] = "mean", *,
              replicates: int = 9999, confidence: float = 0.95, method: str = "BCa",
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
