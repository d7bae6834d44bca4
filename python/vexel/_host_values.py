"""What the host raises, and what its values are where Python has no form of its own for them."""

from __future__ import annotations

import pickle
from typing import Any

from . import _host


class KernelError(ValueError):
    """What the host raises.

    Attributes
    ----------
    message : str
        The text with %1, %2 unfilled.
    arguments : tuple
        What fills them.
    """

    def __init__(self, text: str, message: str = "", arguments: Any = ()) -> None:
        super().__init__(text)
        self.message = message or text
        self.arguments = tuple(a.python() if isinstance(a, _host.Value) else a for a in arguments)

    def __reduce__(self) -> Any:
        return KernelError, (self.args[0], self.message, tuple(map(_portable, self.arguments)))


def _portable(x: Any) -> Any:
    """x, or its text where it cannot be pickled: a procedure, a symbolic value."""
    try:
        pickle.dumps(x)
    except Exception:
        return str(x)
    return x


class Procedure:
    """A procedure of the language, or an entry point: call it."""

    __slots__ = ("_value",)

    def __init__(self, value: Any) -> None:
        self._value = value

    def __call__(self, *arguments: Any) -> Any:
        return self._value(*arguments)

    def __repr__(self) -> str:
        return f"<Procedure {self._value.text()}>"


class Expression:
    """A value that Python has no form of its own for: a law, a generator or a state of the language,
    a symbolic value where SymPy is not installed.  `str` is its text; calls take it as it is."""

    __slots__ = ("_value",)

    def __init__(self, value: Any) -> None:
        self._value = value

    def __str__(self) -> str:
        return str(self._value.source())

    def __repr__(self) -> str:
        return f"Expression({str(self)!r})"


class Equation(tuple[Any, Any]):
    """lhs = rhs: an option of a call."""

    __slots__ = ()

    def __new__(cls, lhs: Any, rhs: Any) -> Equation:
        return super().__new__(cls, (lhs, rhs))

    @property
    def lhs(self) -> Any:
        return self[0]

    @property
    def rhs(self) -> Any:
        return self[1]

    def __repr__(self) -> str:
        return f"Equation({self[0]!r}, {self[1]!r})"


class Table(dict[Any, Any]):
    """A table with names for keys, which their texts find as well: `t["mean"]`."""

    __slots__ = ()

    def __missing__(self, key: Any) -> Any:
        for name in self if isinstance(key, str) else ():
            if not isinstance(name, str) and str(name) == key:
                return self[name]
        raise KeyError(key)
