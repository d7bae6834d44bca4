"""The host: its language, its library's entry points, and values across the border."""

from __future__ import annotations

import re
from collections.abc import Callable
from datetime import date
from decimal import Decimal
from fractions import Fraction
from functools import lru_cache
from pathlib import Path
from typing import Any

import numpy as np

from . import _host
from ._core import short_text
from ._host_values import Equation, Expression, KernelError, Procedure, Table
from ._statements import name_of, placed, statement, string

# ---- to the host

def _evaluated(evaluate: Callable[[str], Any], text: str) -> Any:
    try:
        return evaluate(statement(text))
    except KernelError as e:
        message = placed(str(e), text)
        if message is None:
            raise
    raise KernelError(message)


@lru_cache
def _procedure(text: str) -> Any:
    return _host.eval_held(text + ";")


def _made(text: str, *arguments: Any) -> Any:
    """The value of a procedure of the language."""
    return _procedure(text).held(*arguments)


def array_to_host(array: np.ndarray) -> Any:
    """An array of a type that the host has not: of objects, or converted."""
    if array.dtype == object:
        shape = [slice(1, n) for n in array.shape]
        return _host.call_held("Array", *shape, array.tolist())
    from ._arrays import convert

    return _host.held(np.array(convert(array, "an argument")))


def to_host(x: Any) -> Any:
    """What the extension does not convert itself: a value of the host, or a callable."""
    if isinstance(x, (Procedure, Expression)):
        return x._value
    if isinstance(x, (np.integer, np.floating, np.bool_)):
        return _host.held(x.item())
    if isinstance(x, Fraction):
        return _host.eval_held(f"({x.numerator})/({x.denominator});")
    if isinstance(x, Decimal):
        # A literal keeps all its digits.
        return _host.eval_held(f"({x:e});") if x.is_finite() else _host.held(float(x))
    if isinstance(x, (complex, np.complexfloating)):
        return _host.call_held("Complex", x.real, x.imag)
    if isinstance(x, slice):
        return _made("(a, b) -> a .. b", x.start, x.stop)
    if isinstance(x, Equation):
        return _made("(a, b) -> (a = b)", *x)
    if isinstance(x, tuple):
        return _host.held(list(x))
    if isinstance(x, dict):
        return _host.call_held("table", [Equation(k, v) for k, v in x.items()])
    if type(x) is date:
        return _host.call_held("date", x.isoformat())
    if type(x).__module__.partition(".")[0] == "sympy":
        return _host.eval_held(sympy_text(x) + ";")
    if callable(x):
        return x
    if hasattr(x, "__array__") or hasattr(x, "__arrow_c_stream__") or hasattr(x, "__arrow_c_array__"):
        from ._arrays import convert

        return _host.held(np.array(convert(x, "an argument")))
    raise TypeError(f"a value of type {type(x).__name__} has no form in the host")


_FUNCTIONS = {"log": "ln", "Abs": "abs", "asin": "arcsin", "acos": "arccos", "atan": "arctan",
              "atan2": "arctan", "asinh": "arcsinh", "acosh": "arccosh", "atanh": "arctanh",
              "loggamma": "lgamma", "ceiling": "ceil", "Max": "max", "Min": "min"}


def sympy_text(expression: Any) -> str:
    """A SymPy expression in the language."""
    import sympy
    from sympy.printing.str import StrPrinter

    class Printer(StrPrinter):  # type: ignore[misc]  # SymPy has no types
        def _print_Function(self, e: Any) -> str:
            name = type(e).__name__
            return f"{_FUNCTIONS.get(name, name)}({', '.join(map(self._print, e.args))})"

        _print_Abs = _print_Max = _print_Min = _print_Function

        def _print_ExpBase(self, e: Any) -> str:
            return f"exp({self._print(e.exp)})"

        _print_exp = _print_ExpBase

        def _print_Exp1(self, e: Any) -> str:
            return "exp(1)"

        def _print_Pi(self, e: Any) -> str:
            return "Pi"

        def _print_Infinity(self, e: Any) -> str:
            return "infinity"

        def _print_NegativeInfinity(self, e: Any) -> str:
            return "(-infinity)"

        def _print_NaN(self, e: Any) -> str:
            return "undefined"

        def _print_Float(self, e: Any) -> str:
            return f"({e!s})"

        def _print_Relational(self, e: Any) -> str:
            op = {"==": "=", "!=": "<>"}.get(e.rel_op, e.rel_op)
            return f"{self.parenthesize(e.lhs, 35)} {op} {self.parenthesize(e.rhs, 35)}"

    if isinstance(expression, sympy.Lambda):
        names = ", ".join(map(str, expression.variables))
        return f"(({names}) -> {sympy_text(expression.expr)})"
    return str(Printer().doprint(expression)).replace("**", "^")


# ---- from the host

def wide_float(text: str) -> Any:
    """A float of more digits than a double has."""
    try:
        value = Decimal(text)
    except ArithmeticError:
        return float("nan")
    return value if len(value.as_tuple().digits) > 17 else float(value)


def array_from_elements(elements: list[Any], dtype: Any, shape: tuple[int, ...], order: Any) -> Any:
    """A sparse array, or one of objects."""
    result = np.empty(len(elements), dtype=dtype)
    for i, element in enumerate(elements):
        result[i] = element
    return result.reshape(shape, order=order)


def from_host(value: Any, kind: str) -> Any:
    """A value that is no integer, float, text, boolean, list or array."""
    if kind == "rational":
        return Fraction(value.source())
    if kind == "complex":
        real, imaginary = (p.python() for p in _complex_parts(value))
        return complex(real, imaginary)
    if kind == "procedure":
        return Procedure(value)
    if kind == "sequence":
        return tuple(p.python() for p in value.parts())
    if kind == "range":
        return slice(*(p.python() for p in value.parts()))
    if kind == "equation":
        return Equation(*(p.python() for p in value.parts()))
    if kind == "table":
        found = dict(_host.call("tolist", value))
        return found if all(isinstance(k, (str, int, float)) for k in found) else Table(found)
    if kind == "pointer":
        return value
    if kind == "date":
        return date.fromisoformat(value.text())
    if kind not in _SYMBOLIC:
        return Expression(value)
    try:
        return _to_sympy(value, kind)
    except (ImportError, ValueError):  # or a call of what SymPy has no form for, such as a text
        return Expression(value)


_SYMBOLIC = frozenset(("name", "integer", "float", "sum", "product", "power", "call", "relation"))


def _complex_parts(value: Any) -> Any:
    parts = value.parts()
    if len(parts) == 2:
        return parts
    raise TypeError(f"the complex number {value.text()} has no parts")


def _to_sympy(value: Any, kind: str) -> Any:
    import sympy

    if kind == "name":
        text = value.text()
        constants = {"Pi": sympy.pi, "I": sympy.I, "infinity": sympy.oo, "undefined": sympy.nan}
        return constants.get(text) or sympy.Symbol(text)
    if kind in ("integer", "rational"):
        return sympy.Rational(value.source())
    if kind == "float":
        return sympy.Float(value.source())
    if kind == "complex":
        parts = [_to_sympy(p, p.kind()) for p in _complex_parts(value)]
        return parts[0] + parts[1] * sympy.I
    if kind not in ("sum", "product", "power", "call", "relation"):
        return value.python()
    parts = value.parts()
    if kind == "call":
        text = value.source()
        name = text[: text.index("(")]
        back = {v: k for k, v in _FUNCTIONS.items() if k not in ("atan2",)}
        function = getattr(sympy, back.get(name, name), None) or sympy.Function(name)
        arguments = [_to_sympy(p, p.kind()) for p in parts]
        if name == "arctan" and len(arguments) == 2:
            function = sympy.atan2
        return function(*arguments)
    terms = [_to_sympy(p, p.kind()) for p in parts]
    if kind == "relation":
        operator = re.search(r"<=|<>|<|=", value.source())
        return sympy.Rel(terms[0], terms[1], {"<>": "!=", "=": "=="}.get(operator[0], operator[0]))  # type: ignore[index]
    return {"sum": sympy.Add, "product": sympy.Mul, "power": sympy.Pow}[kind](*terms)


# ---- the host itself

class Kernel:
    """The host: the language, and every entry point of the statistical library.

    A process has one host; every `Kernel` is a door to it, so names keep their values from one to
    the next.  One thread at a time uses it, others wait.  Ctrl-C stops a computation.

    Numbers, exact rationals (`Fraction`), big integers, complex numbers, texts, lists, dicts
    (tables), slices (ranges), SymPy expressions and callables go in and come out as such.  Arrays
    of float64, float32, int8 to int64 and complex128 are used in place when they are writable and
    in one piece of memory, so that entry points that work in place change them.

    Examples
    --------
    >>> k = vx.Kernel()
    >>> k.eval("1/3 + 1/6")
    Fraction(1, 2)
    >>> k.call("STATS_VexelMean_HW", np.array([1.0, 2.0, 6.0]), [], False, 0)
    3.0
    >>> square = k.eval("x -> x^2")
    >>> square(12)
    144
    """

    def __init__(self) -> None:
        _library()

    def eval(self, text: str) -> Any:
        """Runs statements of the language.

        Parameters
        ----------
        text : str
            The statements; the last one may do without its semicolon.

        Returns
        -------
        object
            The value of the last one, in the form that docs/python.md lists.

        Raises
        ------
        KernelError
            What the host raises, syntax errors too.

        Examples
        --------
        >>> vx.Kernel().eval("a := 3: a^2;")
        9
        """
        return _evaluated(_host.eval, string(text, "text"))

    def call(self, name: str, *arguments: Any, **options: Any) -> Any:
        """Calls an entry point, a built-in function or a procedure by name.

        Parameters
        ----------
        name : str
            Whose.
        *arguments
            Entry points take data as arrays; `[]` is an empty one, for no weights.
        **options
            Given as equations: `datatype="float[8]"` is `datatype = float[8]`.

        Returns
        -------
        object

        Examples
        --------
        >>> vx.Kernel().call("gcd", 12, 18)
        6
        """
        if string(name, "name").startswith("STATS_"):
            arguments = tuple(map(_argument, arguments))
        return _host.call(name, *arguments, *(_option(k, v) for k, v in options.items()))

    def function(self, name: str, f: Callable[..., Any]) -> Procedure:
        """Makes a Python callable known to the language under a name.

        Parameters
        ----------
        name : str
            By which the language calls it.
        f : callable
            What it raises comes out of `eval` as itself.

        Returns
        -------
        Procedure

        Examples
        --------
        >>> k = vx.Kernel()
        >>> half = k.function("half", lambda x: x / 2)
        >>> k.eval("half(7.0)"), half(5.0)
        (3.5, 2.5)
        """
        return Procedure(_host.function(string(name, "name"), f))

    def __getitem__(self, name: str) -> Any:
        """The value of a name."""
        return self.eval(name_of(name))

    def __setitem__(self, name: str, value: Any) -> None:
        """Gives a name a value."""
        once = [value._value if isinstance(value, (Procedure, Expression)) else _host.held(value)]  # so that the callable does not keep the value
        _host.function("_value_for_python", once.pop)
        _host.eval(f"{name_of(name)} := _value_for_python():")

    def seed(self, seed: int) -> None:
        """Starts the host's stream of random numbers.

        Parameters
        ----------
        seed : int
            The same one gives the same numbers.

        Examples
        --------
        >>> vx.Kernel().seed(7)
        """
        _host.seed(seed)

    def collect(self) -> int:
        """Collects what nothing reaches.

        Returns
        -------
        int
            How many objects are left.
        """
        return _host.collect()

    @property
    def entry_points(self) -> list[str]:
        """The names of the library's entry points."""
        return _host.entry_points()

    def __repr__(self) -> str:
        return "Kernel()"


def _argument(x: Any) -> Any:
    return np.empty(0) if isinstance(x, list) and not x else x


def _option(name: str, value: Any) -> Any:
    if isinstance(value, str):
        return _host.eval_held(f"{name_of(name)} = {value};")
    return _made("(a, b) -> (a = b)", _host.eval_held(name_of(name) + ";"), value)


_loaded = False


def _library() -> None:
    """Loads the statistical library into the host, once."""
    global _loaded
    if _loaded:
        return
    here = Path(__file__).parent
    for name in ("libstats_hw.so", "../../lib/libstats_hw.so"):
        path = here / name
        if path.exists():
            _host.load(str(path))
            _loaded = True
            return
    raise ImportError(f"libstats_hw.so is not beside {here}")


def compiled(f: Any) -> Any:
    """A text or a SymPy expression in one symbol as a compiled function of a double."""
    if not isinstance(f, str):
        import sympy

        if not isinstance(f, sympy.Lambda):
            symbols = sorted(f.free_symbols, key=str)
            if len(symbols) > 1:
                raise ValueError(f"must be of one symbol, got {', '.join(map(str, symbols))}")
            f = sympy.Lambda(symbols[0] if symbols else sympy.Symbol("x"), f)
        f = sympy_text(f)
    procedure = _evaluated(_host.eval_held, f)
    if procedure.kind() != "procedure":
        raise ValueError(f"must be a procedure as \"x -> exp(-x^2)\", got {short_text(f)}")
    return _host.compile(procedure)
