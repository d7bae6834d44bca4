"""Names of types for annotations; nothing imports this at run time."""

from __future__ import annotations

from collections.abc import Callable
from decimal import Decimal
from fractions import Fraction
from typing import Any, Literal, SupportsIndex, TypedDict, Union

import numpy as np
from numpy.typing import NDArray

from . import _core

Array = NDArray[Any]
Doubles = NDArray[np.float64]
# Whatever NumPy makes an array of, pandas and Arrow columns, DLPack, buffers.
ArrayLike = Any
# One number, for which a function gives one number.
Number = Union[float, np.integer[Any], np.floating[Any], Decimal, Fraction]
Axis = Union[int, tuple[int, ...], None]
NanPolicy = Literal["propagate", "omit", "raise"]
Cut = Union[float, tuple[float, float], list[float]]
QuantileMethod = Literal[
    "inverted_cdf", "averaged_inverted_cdf", "closest_observation", "interpolated_inverted_cdf",
    "hazen", "weibull", "linear", "median_unbiased", "normal_unbiased"]
MeanKind = Literal["arithmetic", "geometric", "harmonic", "quadratic"]
Center = Literal["mean", "median"]
Correlation = Literal["pearson", "spearman", "kendall"]
RankMethod = Literal["average", "min", "max", "dense", "ordinal"]
CumulativeKind = Literal["sum", "product", "min", "max"]
BootstrapMethod = Literal["BCa", "percentile", "basic"]
DensityKernel = Literal["gaussian", "epanechnikov", "rectangular", "triangular", "biweight"]
Statistic = Literal["mean", "median", "std", "var", "min", "max", "sum", "skewness", "kurtosis", "iqr"]
WindowEdges = Literal["shrink", "nan", "reflect", "nearest"]
WindowAlign = Literal["center", "right", "left"]
Scramble = Union[bool, Literal["owen", "shift"]]
Progress = Union[Callable[[float], object], bool, None]
# A vexel.Random, a seed or None; a NumPy Generator gives a seed.
Rng = Union[_core.Random, np.random.Generator, SupportsIndex, None]
Shape = Union[int, tuple[int, ...]]
Size = Union[Shape, None]


class OfAll(TypedDict, total=False):
    """What reductions share where everything is reduced: the result is a float."""

    weights: ArrayLike | None
    nan_policy: NanPolicy
    axis: None
    keepdims: Literal[False]
    out: None
    progress: Progress


class OfLanes(TypedDict, total=False):
    """The same with an axis, keepdims or out: the result is an array (of one dimension by axis=0 a float)."""

    weights: ArrayLike | None
    nan_policy: NanPolicy
    axis: Axis
    keepdims: bool
    out: Array | None
    progress: Progress
