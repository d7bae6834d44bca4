"""Every entry point of the statistical library as a function, by its name.

`help(vexel.entry.STATS_VexelMean_HW)` shows its page of the reference.  They take data as arrays;
`[]` stands for no weights.  The functions of `vexel` itself do the same things by common
definitions; entry points are for what hosts rely on.
"""

from __future__ import annotations

import re
from functools import lru_cache
from importlib import resources
from typing import Any

from ._core import short_text
from ._kernel import Kernel


@lru_cache
def _reference() -> dict[str, str]:
    """The text of the reference for each entry point."""
    texts: dict[str, str] = {}
    folder = resources.files("vexel") / "reference"
    for page in sorted(folder.iterdir(), key=lambda p: p.name):
        sections = re.split(r"^(?=## )", page.read_text(encoding="utf-8"), flags=re.MULTILINE)
        waiting: list[str] = []
        for section in sections[1:]:
            waiting += re.findall(r"^## (\w+)\(?", section, flags=re.MULTILINE)
            body = re.sub(r"^## ", "", section, flags=re.MULTILINE)
            if body.count("\n") > 1:  # not a heading that shares the next one's text
                for name in waiting:
                    texts[name] = body.rstrip()
                waiting = []
    return texts


class _EntryPoint:
    def __init__(self, kernel: Kernel, name: str) -> None:
        self._kernel = kernel
        self.__name__ = self.__qualname__ = name
        self.__module__ = __name__
        self.__doc__ = _reference().get(name, name)

    def __call__(self, *arguments: Any, **options: Any) -> Any:
        return self._kernel.call(self.__name__, *arguments, **options)

    def __repr__(self) -> str:
        return f"<entry point {self.__name__}>"

    def __reduce__(self) -> Any:
        return getattr, (__import__("vexel.entry", fromlist=["entry"]), self.__name__)


def __getattr__(name: str) -> Any:
    if name.startswith("__"):
        raise AttributeError(name)
    kernel = Kernel()
    if name not in kernel.entry_points:
        raise AttributeError(f"no entry point {short_text(name)}")
    found = globals()[name] = _EntryPoint(kernel, name)
    return found


def __dir__() -> list[str]:
    return sorted(Kernel().entry_points)
