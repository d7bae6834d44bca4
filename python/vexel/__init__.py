"""Statistics on NumPy arrays: descriptive, distributions, random numbers, tests and more."""

from __future__ import annotations

__all__ = ["Kernel"]


def __getattr__(name: str) -> object:
    # What stands on the host is loaded when it is asked for.
    if name == "Kernel":
        from ._kernel import Kernel

        return Kernel
    raise AttributeError(f"module {__name__!r} has no attribute {name!r}")
