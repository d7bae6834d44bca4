"""Laws of one's own."""

from __future__ import annotations

from math import inf
from typing import TYPE_CHECKING, Any

from . import _core
from ._distributions import _set
from ._kinds import Continuous

if TYPE_CHECKING:
    from collections.abc import Callable

    from ._types import Progress


def _function(f: Any, name: str) -> Any:
    """What the extension calls: a callable, a compiled function's address or capsule."""
    if isinstance(f, str) or type(f).__module__.startswith("sympy"):
        from ._kernel import compiled

        try:
            return compiled(f)
        except ValueError as e:  # of the host too
            raise ValueError(f"{name}: {e}") from None
    address = getattr(f, "address", None)  # of a numba.cfunc
    if isinstance(address, int):
        kind = getattr(f, "ctypes", None)
        if kind is not None and [t.__name__ for t in (kind.restype, *kind.argtypes)] != ["c_double", "c_double"]:
            raise TypeError(f"{name} must be a compiled float64(float64), got {getattr(f, '_sig', f)}")
        return address
    if not callable(f):
        raise TypeError(f"{name} must be a callable, a SymPy expression or text, got {_core.short_text(f)}")
    return f


def _is_code(f: Any) -> bool:
    """Functions, which have no text to be read back from; SymPy's expressions are callable as well, and have."""
    return callable(f) and not type(f).__module__.startswith("sympy")


class OwnLaw(Continuous):
    """What laws of one's own have beside the methods of all laws."""

    __slots__ = ("_arguments", "_options")
    _law: _core.OwnLaw
    _arguments: tuple[Any, ...]
    _options: dict[str, Any]

    @property
    def log_concave(self) -> bool:
        """Whether variates are exact, by rejection; else they are by inversion.

        Examples
        --------
        >>> vx.Density(lambda x: 1 - abs(x), support=(-1, 1)).log_concave
        True
        """
        return self._law.log_concave()

    @property
    def log_integral(self) -> float:
        """Logarithm of the integral of f over the support; 0 for a distribution function.

        Examples
        --------
        >>> round(vx.Density("x -> exp(-x^2/2)", support=(None, None)).log_integral, 9)
        0.918938533
        """
        return self._law.log_integral()

    @property
    def error(self) -> float:
        """The measured error of the probability, at most what was asked for.

        Examples
        --------
        >>> vx.Density(lambda x: 1 - abs(x), support=(-1, 1)).error <= 1e-10
        True
        """
        return self._law.error()

    @property
    def evaluations(self) -> int:
        """How many values of the function the build took.

        Examples
        --------
        >>> vx.Density(lambda x: 1 - abs(x), support=(-1, 1)).evaluations <= 2000
        True
        """
        return self._law.evaluations()

    def _key(self) -> tuple[Any, ...]:
        return (*self._arguments, *self._options.values())

    def __repr__(self) -> str:
        def shown(v: Any) -> str:
            return f"<{getattr(v, '__name__', type(v).__name__).strip('<>')}>" if _is_code(v) else repr(v)

        options = "".join(f", {k}={shown(v)}" for k, v in self._options.items())
        made = f"{type(self).__name__}({shown(self._arguments[0])}{options})"
        return f"<{made}>" if any(map(_is_code, (*self._arguments, *self._options.values()))) else made

    def __reduce__(self) -> Any:
        return _made, (type(self), self._arguments[0], self._options)


def _given(options: dict[str, Any], default: dict[str, Any]) -> dict[str, Any]:
    """The options that differ from the defaults; of the support, its ends as numbers."""
    low, high = options["support"]
    support = (-inf if low is None else low, inf if high is None else high)
    return {"support": support, **{k: v for k, v in options.items() if k in default and v != default[k]}}


def _made(kind: Any, f: Any, options: dict[str, Any]) -> Any:
    return kind(f, **options)


class Density(OwnLaw):
    """A law from a density, which need not integrate to 1.

    Built once, from at most 2000 values of f.  `quantile` and `cdf` are as good as `error`.
    Variates of a log-concave density are exact, by rejection; others are by inversion.  Of text or
    a SymPy expression the repr reads back.

    Parameters
    ----------
    f : callable, str or SymPy expression
        The density: a callable of one float; a `numba.cfunc` of float64(float64), which is called
        without Python; text in the language, as "x -> exp(-x^4)", or a SymPy expression in one
        symbol, both of which are compiled.
    support : pair of float
        Where f is; either end may be infinite, or None, which means the same.
    log : bool
        f is the logarithm of the density.
    derivative : callable, str or SymPy expression, optional
        Of f; spares evaluations of a log-concave f.
    mode : float, optional
        Where f is largest, roughly.
    error : float
        Of the probability, at least 1e-12.
    vectorized : bool
        f takes and gives arrays.
    progress : callable or bool, optional
        Told the share done, 0 to 1, during a long build; True shows a bar where tqdm is installed.

    Examples
    --------
    >>> d = vx.Density(lambda x: 1 - abs(x), support=(-1, 1))
    >>> round(d.cdf(0.5), 9), round(d.quantile(0.875), 9)
    (0.875, 0.5)
    >>> d.sample(3, rng=1).shape
    (3,)
    >>> vx.Density("x -> exp(-x^4)", support=(-5, 5), error=1e-9)
    Density('x -> exp(-x^4)', support=(-5, 5), error=1e-09)
    """

    __slots__ = ()

    def __init__(self, f: Any, *, support: tuple[float, float], log: bool = False,
                 derivative: Any = None, mode: float | None = None, error: float = 1e-10,
                 vectorized: bool = False, progress: Progress = None) -> None:
        options = {"support": support, "log": log, "derivative": derivative, "mode": mode,
                   "error": error, "vectorized": vectorized}
        default = {"log": False, "derivative": None, "mode": None, "error": 1e-10, "vectorized": False}
        _set(self, "_law", _core.own_density(_function(f, "f"), support, log,
                                             None if derivative is None else _function(derivative, "derivative"), mode, error,
                                             vectorized, progress))
        _set(self, "_arguments", (f,))
        _set(self, "_options", _given(options, default))


class CumulativeDistribution(OwnLaw):
    """A law from a distribution function.

    Built once, from at most 2000 values of F.  Variates are by inversion.

    Parameters
    ----------
    F : callable, str or SymPy expression
        Goes from 0 to 1 over the support without falling; the forms of `f` in `Density`.
    support : pair of float
        Either end may be infinite.
    density : callable, str or SymPy expression, optional
        If it is known; else `pdf` is the slope of the tables.
    error : float
        Of the probability.
    vectorized : bool
        F takes and gives arrays.
    progress
        As in `Density`.

    Examples
    --------
    >>> d = vx.CumulativeDistribution(lambda x: x * x, support=(0, 1))
    >>> round(d.quantile(0.25), 9)
    0.5
    """

    __slots__ = ()

    def __init__(self, F: Callable[[float], float] | Any, *, support: tuple[float, float] = (-inf, inf),
                 density: Any = None, error: float = 1e-10, vectorized: bool = False,
                 progress: Progress = None) -> None:
        options = {"support": support, "density": density, "error": error, "vectorized": vectorized}
        default = {"density": None, "error": 1e-10, "vectorized": False}
        _set(self, "_law", _core.own_cumulative(_function(F, "F"), support, None if density is None else _function(density, "density"),
                                                error, vectorized, progress))
        _set(self, "_arguments", (F,))
        _set(self, "_options", _given(options, default))
