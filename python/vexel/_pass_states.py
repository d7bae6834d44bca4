"""States made of others, which take in the pieces of data beside one another, and what these weigh."""

from __future__ import annotations

import math
from collections.abc import Callable
from fractions import Fraction
from typing import Any

import numpy as np

from ._states import Sums


class Several:
    """States that see the same data."""

    def __init__(self, *states: Any) -> None:
        self.states = states

    def update(self, x: Any, weights: Any = None) -> Several:
        for state in self.states:
            state.update(x, weights)
        return self

    def merge(self, other: Several) -> Several:
        for mine, theirs in zip(self.states, other.states):
            mine.merge(theirs)
        return self


class Changed:
    """A state of a function of the data."""

    def __init__(self, change: Callable[[Any], Any], state: Any) -> None:
        self.change = change
        self.state = state

    def update(self, x: Any, weights: Any = None) -> Changed:
        with np.errstate(all="ignore"):
            self.state.update(self.change(np.asarray(x, dtype=np.float64)), weights)
        return self

    def merge(self, other: Changed) -> Changed:
        self.state.merge(other.state)
        return self


def _exactly(s: Sums) -> Fraction:
    """The sum to two doubles, as `DoubleDouble` holds it; there is data and it is finite."""
    high = s.sum
    return Fraction(high) + Fraction(s.__copy__().update([-high]).sum)


class Middle:
    """What lies strictly between two values, and the weights up to the one and below the other.

    Values near the ends of the range of doubles are scaled.
    """

    def __init__(self, low: float, high: float) -> None:
        self.low = low
        self.high = high
        size = max(abs(low), abs(high))
        exponent = math.frexp(size)[1] if math.isfinite(size) else 0
        self.exponent = exponent if abs(exponent) > 900 else 0
        self.inner, self.to_low, self.below_high = Sums(), Sums(), Sums()

    def update(self, x: Any, weights: Any = None) -> Middle:
        x = np.asarray(x, dtype=np.float64).ravel()
        w = np.ones(x.size) if weights is None else np.asarray(weights, dtype=np.float64).ravel()
        there = ~np.isnan(x) & (w > 0)
        inside = there & (x > self.low) & (x < self.high)
        self.inner.update(np.ldexp(x[inside], -self.exponent), w[inside])
        self.to_low.update(w[there & (x <= self.low)])
        self.below_high.update(w[there & (x < self.high)])
        return self

    def merge(self, other: Middle) -> Middle:
        for name in ("inner", "to_low", "below_high"):
            getattr(self, name).merge(getattr(other, name))
        return self

    def mean(self, n: float, below: float, above: float) -> float:
        """Of the middle and so much of its ends that these weights of n are left out."""
        total = self.inner.__copy__()
        for x, w in ((self.low, _exactly(self.to_low) - Fraction(below)),
                     (self.high, Fraction(n) - Fraction(above) - _exactly(self.below_high))):
            if math.isinf(x):
                total.update([x])
                continue
            product = Fraction(math.ldexp(x, -self.exponent)) * w
            total.update([float(product), float(product - Fraction(float(product)))])
        if not math.isfinite(total.sum):
            return total.sum
        return math.ldexp(float(_exactly(total) / (Fraction(n) - Fraction(below) - Fraction(above))), self.exponent)


def total_weight(state: Any) -> float | None:
    """What the data weigh, by the first state that knows; None where none does."""
    if isinstance(state, (Several, tuple)):
        parts = state.states if isinstance(state, Several) else state
        return next((w for w in map(total_weight, parts) if w is not None), None)
    return total_weight(state.state) if isinstance(state, Changed) else getattr(state, "weight", None)


def require_weight(kept: Any, state: Any) -> None:
    """Complains of data that are there and weigh nothing, as the functions do."""
    if total_weight((kept, state)) == 0:
        raise ValueError("weights: their total must be positive, it is 0")


def weightless(x: Any, weights: Any) -> bool:
    """Whether some value that is there has the weight 0."""
    if weights is None:
        return False
    x, w = np.asarray(x, dtype=np.float64), np.asarray(weights)
    missing = np.isnan(x) if x.ndim == w.ndim else np.isnan(x).any(axis=1)
    return bool(np.any((w == 0) & ~missing))
