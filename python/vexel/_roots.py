"""Roots of functions."""

from __future__ import annotations

from math import nan
from typing import TYPE_CHECKING, Any

from . import _core
from ._results import RootResult

if TYPE_CHECKING:
    from collections.abc import Callable


class RootError(ValueError):
    """A search that cannot go on: a NaN, no change of sign, a spent budget.

    Attributes
    ----------
    best : float
        The point with the smallest |f - target| so far; NaN when there is none.
    value : float
        That difference.
    """

    def __init__(self, message: str, best: float = nan, value: float = nan) -> None:
        super().__init__(message)
        self.best = best
        self.value = value

    def __repr__(self) -> str:
        return f"RootError({self.args[0]!r}, best={self.best!r}, value={self.value!r})"

    def __reduce__(self) -> Any:
        return RootError, (self.args[0], self.best, self.value)


def find_root(f: Callable[[float], float], bracket: tuple[float | None, float | None], *,
              target: float = 0, derivative: Callable[[float], float] | None = None,
              tolerance: float = 2.0**-50, max_iterations: int = 100) -> RootResult:
    """Where f(x) = target.

    Parameters
    ----------
    f : callable
        Of a float.
    bracket : pair
        Where to look: f - target has different signs at its ends.  An end that is None or an
        infinity is not known; then f must be monotone.
    target : float
        What f is to be.
    derivative : callable, optional
        Of f; then Newton's method is used, inside the bracket.
    tolerance : float
        How far the root may be off, relative to its size.
    max_iterations : int
        70 are enough for any function.

    Returns
    -------
    RootResult
        root, value (f(root) - target), evaluations, converged.

    Raises
    ------
    RootError
        For a NaN, for ends with the same sign and for a spent budget; carries `best`, `value`.

    Notes
    -----
    R. P. Brent, Algorithms for Minimization without Derivatives (1973), chapter 4.

    Examples
    --------
    >>> vx.find_root(lambda x: x * x, (0, 10), target=2).root
    1.4142135623730951
    >>> round(vx.find_root(lambda x: x**3, (0, None), target=1000).root, 12)
    10.0
    """
    return RootResult(*_core.find_root(f, bracket, target, derivative, tolerance, max_iterations))


def find_integer(f: Callable[[int], float], low: int | None, high: int | None, *,
                 target: float) -> int:
    """The smallest whole k in [low, high] with f(k) >= target, for a nondecreasing f.

    Parameters
    ----------
    f : callable
        Of an int.
    low, high : int or None
        None or an infinity: not known.
    target : float
        What f is to reach.

    Raises
    ------
    RootError
        When f(high) < target, and for a NaN.

    Examples
    --------
    >>> vx.find_integer(vx.Poisson(4).cdf, 0, None, target=0.99)
    9
    """
    return _core.find_integer(f, low, high, target)
