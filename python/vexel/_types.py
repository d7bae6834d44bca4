"""Names of types for annotations; nothing imports this at run time."""

from __future__ import annotations

from collections.abc import Callable
from typing import Any, Literal, Union

import numpy as np
from numpy.typing import NDArray

Array = NDArray[Any]
Doubles = NDArray[np.float64]
# Whatever NumPy makes an array of, pandas and Arrow columns, DLPack, buffers.
ArrayLike = Any
Axis = Union[int, tuple[int, ...], None]
NanPolicy = Literal["propagate", "omit", "raise"]
Cut = Union[float, tuple[float, float], list[float]]
QuantileMethod = Literal[
    "inverted_cdf", "averaged_inverted_cdf", "closest_observation", "interpolated_inverted_cdf",
    "hazen", "weibull", "linear", "median_unbiased", "normal_unbiased"]
Progress = Union[Callable[[float], object], bool, None]
# A vexel.Random, a seed or None; a NumPy Generator gives a seed.
Rng = Any
Size = Union[int, tuple[int, ...], None]
