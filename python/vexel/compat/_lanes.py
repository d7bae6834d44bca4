"""What the functions share: axes and missing values, alternatives, and results with more than two parts."""

from __future__ import annotations

from collections.abc import Callable
from math import prod
from typing import Any, NamedTuple

import numpy as np

import vexel as vx
from vexel._arrays import convert
from vexel._results import TestResult

NORMAL = vx.Normal()


def one_of(name: str, parameter: str, value: Any, allowed: tuple[str, ...]) -> Any:
    """The value, refused unless it is one of these texts."""
    if value not in allowed:
        *first, last = (f'"{a}"' for a in allowed)
        raise ValueError(f"{name}: {parameter} must be {', '.join(first)} or {last}, got {value!r}")
    return value


# ---- lanes

def axes_of(axis: Any, ndim: int) -> tuple[int, ...]:
    if axis is None:
        return tuple(range(ndim))
    return axis if isinstance(axis, tuple) else (axis,)


def numbers(name: str, x: Any, what: str = "samples") -> Any:
    """An array of numbers; missing values become NaN."""
    return x if type(x) is np.ndarray and x.dtype.kind in "biuf" else convert(x, f"{name}: {what}")


def flat(name: str, sample: Any, axis: Any) -> Any:
    """The sample with the axes to reduce as its last one."""
    a = numbers(name, sample)
    axes = axes_of(axis, a.ndim)
    a = np.moveaxis(np.atleast_1d(a), axes, range(-len(axes), 0))
    kept = a.shape[:a.ndim - len(axes)]
    return a.reshape(*kept, prod(a.shape[len(kept):])) if axes else a


def of_as_many_axes(name: str, samples: tuple[Any, ...], axis: Any) -> list[Any]:
    """The samples; those of fewer axes lack the first ones, unless all are to be reduced."""
    arrays = [numbers(name, s) for s in samples]
    most = max(a.ndim for a in arrays)
    return arrays if axis is None else [a.reshape((1,) * (most - a.ndim) + a.shape) for a in arrays]


def differences(name: str, x: Any, y: Any, axis: Any) -> Any:
    """Of pairs, whose lanes are of one length."""
    x, y = (np.asarray(v, dtype=np.float64) for v in of_as_many_axes(name, (x, y), axis))
    if isinstance(axis, int) and x.ndim and x.shape[axis] != y.shape[axis]:
        raise ValueError(f"{name}: samples must be of one length, got {x.shape[axis]}, {y.shape[axis]}")
    return x - y


def present(name: str, lanes: list[Any], nan_policy: str, paired: bool) -> list[Any] | None:
    """The lanes without what is missing under omit; None where that makes the result NaN."""
    gaps = [a != a for a in lanes]
    if not any(g.any() for g in gaps):
        return lanes
    if nan_policy == "raise":
        at = int(np.argmax(next(g for g in gaps if g.any())))
        raise ValueError(f"{name}: element {at} is missing")
    if nan_policy == "propagate":
        return None
    if paired:
        gaps = [np.logical_or.reduce(gaps)] * len(lanes)
    return [a[~g] for a, g in zip(lanes, gaps)]


def over_lanes(name: str, function: Callable[..., tuple[Any, ...]], samples: tuple[Any, ...], axis: Any = 0,
               nan_policy: str = "propagate", keepdims: bool = False, *, parts: int = 2, paired: bool = False,
               least: int = 1) -> list[Any]:
    """The parts that the function finds in each lane: numbers, or arrays where there are several lanes.

    They are NaN where a lane has a missing value that is not left out, or fewer than `least` values.
    """
    one_of(name, "nan_policy", nan_policy, ("propagate", "omit", "raise"))
    aligned = of_as_many_axes(name, samples, axis)
    given = [flat(name, a, axis) for a in aligned]
    given = [a.astype(np.float64) if a.dtype.kind == "f" else a for a in given]
    shape = np.broadcast_shapes(*(a.shape[:-1] for a in given))
    arrays = [np.broadcast_to(a, (*shape, a.shape[-1])) for a in given]
    if paired and len({a.shape[-1] for a in arrays}) > 1:
        raise ValueError(f"{name}: samples must be of one length, got {', '.join(str(a.shape[-1]) for a in arrays)}")

    def found(at: tuple[int, ...]) -> tuple[Any, ...]:
        lanes = present(name, [a[at] for a in arrays], nan_policy, paired)
        if lanes is None or min(map(len, lanes)) < least:
            return (np.nan,) * parts
        return function(*lanes)

    if not shape:
        result = [float(part) for part in found(())]
    else:
        table = np.empty((parts, *shape))
        for at in np.ndindex(shape):
            table[(slice(None), *at)] = found(at)
        result = list(table)
    return [np.expand_dims(part, axes_of(axis, max(a.ndim for a in aligned))) for part in result] if keepdims else result


# ---- alternatives

ALTERNATIVES = ("two-sided", "less", "greater")


def alternative_of(name: str, alternative: Any) -> Any:
    return one_of(name, "alternative", alternative, ALTERNATIVES)


def symmetric_tail(law: Any, z: Any, alternative: str) -> Any:
    """The p-value of z under a law that is symmetrical about 0."""
    if alternative == "two-sided":
        return 2 * law.sf(abs(z))
    return law.sf(z if alternative == "greater" else -z)


def sides(alternative: str, confidence_level: float) -> tuple[float, float]:
    """The probabilities that an interval leaves out below and above, for the alternative."""
    if not 0 <= confidence_level <= 1:
        raise ValueError(f"confidence_interval: confidence_level must be in [0, 1], got {confidence_level!r}")
    outside = 1 - confidence_level
    return {"two-sided": (outside / 2, outside / 2), "less": (0.0, outside), "greater": (outside, 0.0)}[alternative]


# ---- results

class ConfidenceInterval(NamedTuple):
    low: Any
    high: Any


def plain(x: Any) -> Any:
    """A float of one number, an array of several."""
    return x if np.ndim(x) else float(x)


class Found(TestResult):
    """A statistic and its p-value, which unpack, and what else there is by name."""

    def __new__(cls, statistic: Any, pvalue: Any, **others: Any) -> Any:
        self = super().__new__(cls, statistic, pvalue)
        vars(self).update(others)
        return self

    def _public(self) -> dict[str, Any]:
        return {**self._asdict(), **{k: v for k, v in vars(self).items() if not k.startswith("_")}}

    def __repr__(self) -> str:
        return f"{type(self).__name__}({', '.join(f'{k}={v!r}' for k, v in self._public().items())})"

    def __eq__(self, other: object) -> Any:
        if not isinstance(other, tuple):
            return NotImplemented
        return len(self) == len(other) and all(np.array_equal(a, b, equal_nan=True) for a, b in zip(self, other))

    def __ne__(self, other: object) -> Any:
        return not self == other

    __hash__ = None  # type: ignore[assignment]
