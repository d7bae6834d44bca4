"""Order of numbers that are more than doubles: fractions, decimals, big integers, SymPy's."""

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


def _keys(x: Any, nan_policy: str) -> tuple[list[Any], list[int], list[int]]:
    """Something to compare for each element, and where elements are present and missing."""
    if nan_policy not in ("propagate", "omit", "raise"):
        raise ValueError(f'nan_policy: allowed are "propagate", "omit", "raise"; {_core.short_text(nan_policy)} came')
    missing = [i for i, v in enumerate(x) if _is_missing(v)]
    if missing and nan_policy == "raise":
        raise ValueError(f"x: missing values are not allowed, one came at {missing[0]}")
    gone = set(missing)
    present = [i for i in range(len(x)) if i not in gone]
    keys: list[Any] = [None] * len(x)
    for i in present:
        keys[i] = _fraction(x[i])
    if any(keys[i] is None for i in present):
        for i in present:
            if getattr(x[i], "is_comparable", False):
                keys[i] = x[i]
            elif keys[i] is None:
                raise TypeError(f"x: numbers are expected, {_core.short_text(x[i])} came")
        compare = cmp_to_key(lambda a, b: -1 if _less(a, b) else int(_less(b, a)))
        keys = [None if k is None else compare(k) for k in keys]
    return keys, present, missing


def _less(a: Any, b: Any) -> bool:
    import sympy

    return bool(sympy.sympify(a) < sympy.sympify(b))


def _order(x: Any, nan_policy: str) -> tuple[list[Any], list[int], list[int]]:
    keys, present, missing = _keys(x, nan_policy)
    return keys, sorted(present, key=lambda i: keys[i]), missing


def exact_argsort(x: Any, nan_policy: str) -> np.ndarray:
    _, order, missing = _order(x, nan_policy)
    return np.array(order + (missing if nan_policy == "propagate" else []), dtype=np.int64)


def exact_sort(x: Any, nan_policy: str) -> np.ndarray:
    found: np.ndarray = x[exact_argsort(x, nan_policy)]
    return found


def _levels(x: Any, nan_policy: str) -> tuple[list[int], list[int], int]:
    """The order, and the number from 0 of each one's value among the distinct ones."""
    keys, order, missing = _order(x, nan_policy)
    levels: list[int] = []
    for a, b in zip([None, *order], order):
        levels.append(0 if a is None else levels[-1] + int(keys[a] < keys[b]))
    return order, levels, len(missing)


def exact_rank(x: Any, method: str, nan_policy: str) -> np.ndarray:
    order, levels, _ = _levels(x, nan_policy)
    numbers = np.full(len(x), np.nan)
    numbers[order] = levels
    return _core.rank(numbers, method, -1, nan_policy, None, None)


def exact_tally(x: Any, weights: Any, nan_policy: str) -> TallyResult:
    order, levels, missing = _levels(x, nan_policy)
    first: dict[int, int] = {}
    for i, level in zip(order, levels):
        first.setdefault(level, i)
    numbers = np.full(len(x), np.nan)
    numbers[order] = levels
    found, counts, missing = _core.tally(numbers, weights, nan_policy, None)
    values = np.empty(len(found), dtype=object)
    values[:] = [x[first[int(level)]] for level in found]
    return TallyResult(values, counts, missing)
