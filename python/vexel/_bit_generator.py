"""A stream for NumPy's generators."""

from __future__ import annotations

import threading
from typing import Any

import numpy as np


class BitGenerator(np.random.BitGenerator):
    """The stream of a `Random`, shared with it: draws of one move on the other."""

    def __init__(self, rng: Any) -> None:
        super().__init__(0)
        self._rng = rng
        self._functions = rng._bit_functions()
        self._lock = threading.RLock()

    @property
    def capsule(self) -> Any:
        return self._functions

    @property
    def lock(self) -> Any:  # type: ignore[override]  # nobody assigns NumPy's either
        return self._lock

    @property
    def state(self) -> Any:
        return self._rng.state

    @state.setter
    def state(self, value: Any) -> None:
        self._rng.state = value

    def random_raw(self, size: Any = None, output: bool = True) -> Any:
        raw = self._rng.bits(size)
        return raw if output else None

    def __repr__(self) -> str:
        return f"{self._rng!r}.bit_generator"

    def __reduce__(self) -> Any:
        return BitGenerator, (self._rng,)
