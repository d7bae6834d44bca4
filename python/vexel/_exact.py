"""Order of numbers that are more than doubles: fractions, decimals, big integers, SymPy's.

Each value gets the number, from 0, of its place among the distinct ones; the extension orders those,
along whichever axis.
"""

from __future__ import annotations

from decimal import Decimal
from fractions import Fraction
from functools import cmp_to_key
from math import isinf
from numbers import Rational
from typing import Any

import numpy as np

from . import _core
from ._results import TallyResult


def _is_missing(v: Any) -> bool:
    return v is None or type(v).__name__ in ("NAType", "NaN") or bool(v != v)


def _fraction(v: Any) -> Fraction | float | None:
    """The number as a fraction (an infinity as itself); None for what is none."""
    if isinstance(v, np.generic):
        v = v.item()
    if isinstance(v, (int, Rational)):
        return Fraction(v)
    if isinstance(v, (float, Decimal)):
        return float(v) if isinf(v) else Fraction(v)
    if getattr(v, "is_Rational", False):
        return Fraction(int(v.p), int(v.q))
    return None


def _keys(x: Any, present: list[int]) -> list[Any]:
    """Something to compare for each element that is there."""
    keys: list[Any] = [None] * len(x)
    for i in present:
        keys[i] = _fraction(x[i])
    if any(keys[i] is None for i in present):
        for i in present:
            if getattr(x[i], "is_comparable", False):
                keys[i] = x[i]
            elif keys[i] is None:
                raise TypeError(f"x must be numbers, got {_core.short_text(x[i])}")
        compare = cmp_to_key(lambda a, b: -1 if _less(a, b) else int(_less(b, a)))
        keys = [None if k is None else compare(k) for k in keys]
    return keys


def _less(a: Any, b: Any) -> bool:
    import sympy

    a, b = sympy.sympify(a), sympy.sympify(b)
    found = a < b
    if found in (True, False):
        return bool(found)
    if (a - b).equals(0):  # two forms of one number
        return False
    raise TypeError(f"x must be numbers whose order can be told, got {_core.short_text(a)} and {_core.short_text(b)}")


def _levels(x: np.ndarray) -> tuple[np.ndarray, list[Any]]:
    """The number of each one's value among the distinct ones, NaN where none is, and these values."""
    flat = x.reshape(-1)
    present = [i for i, v in enumerate(flat) if not _is_missing(v)]
    keys = _keys(flat, present)
    numbers, values = np.full(len(flat), np.nan), []
    last: Any = None
    for i in sorted(present, key=lambda i: keys[i]):
        if last is None or last < keys[i]:
            values.append(flat[i])
            last = keys[i]
        numbers[i] = len(values) - 1
    return numbers.reshape(x.shape), values


def exact_argsort(x: np.ndarray, axis: Any, nan_policy: Any, out: Any = None) -> np.ndarray:
    return _core.argsort(_levels(x)[0], axis, nan_policy, out, None)


def exact_sort(x: np.ndarray, axis: Any, nan_policy: Any) -> np.ndarray:
    numbers = _levels(x)[0]
    if nan_policy == "raise":
        _core.sort(numbers, axis, nan_policy, None, None)  # whose refusal has its name
    order = _core.argsort(numbers, axis, nan_policy, None, None)
    found: np.ndarray = x.reshape(-1)[order] if axis is None else np.take_along_axis(x, order, axis)
    return found


def exact_rank(x: np.ndarray, method: Any, axis: Any, nan_policy: Any, out: Any) -> np.ndarray:
    return _core.rank(_levels(x)[0], method, axis, nan_policy, out, None)


def exact_tally(x: np.ndarray, weights: Any, nan_policy: Any) -> TallyResult:
    numbers, distinct = _levels(x)
    found, counts, missing = _core.tally(numbers, weights, nan_policy, None)
    values = np.empty(len(found), dtype=object)
    values[:] = [distinct[int(level)] for level in found]
    return TallyResult(values, counts, missing)
