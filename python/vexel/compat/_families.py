"""Distributions by SciPy's names, with shapes, loc and scale as SciPy's take them."""

from __future__ import annotations

from collections.abc import Callable
from functools import partial
from typing import Any

import numpy as np

import vexel as vx
from vexel._kinds import Discrete
from vexel.compat._fits import fit

_LINEAR = frozenset(("pdf", "logpdf", "pmf", "logpmf", "cdf", "sf", "logcdf", "logsf"))
_INVERSE = frozenset(("ppf", "isf", "quantile"))
# What the first argument is called.
_FIRST = {**dict.fromkeys(_LINEAR, ("x", "k")), **dict.fromkeys(_INVERSE, ("q",)), "interval": ("confidence",), "moment": ("order",)}


def stream(random_state: Any) -> Any:
    """What the samplers take of SciPy's forms: NumPy's older generators give a seed."""
    if isinstance(random_state, np.random.RandomState):
        return random_state.randint(0, 2**63 - 1, dtype=np.int64)
    return random_state


def _invalid(x: Any = 0.0, *_: Any) -> Any:
    """What methods of a law with parameters out of range give, as SciPy's do."""
    return np.full(np.shape(x), np.nan)[()]


class Frozen:
    """A law with its parameters, moved by loc and stretched by scale where it has no such parameters itself."""

    def __init__(self, family: Family, args: tuple[Any, ...], kwds: dict[str, Any]) -> None:
        self.dist, self.args, self.kwds = family, args, kwds
        *shapes, loc, scale = family.arguments(args, dict(kwds))
        self._refused: ValueError | None = None
        try:
            self._law, self._loc, self._scale = family.make(tuple(shapes), loc, scale)
        except ValueError as e:
            self._law, self._loc, self._scale, self._refused = None, 0, 1, e

    def __repr__(self) -> str:
        given = [*map(repr, self.args), *(f"{k}={v!r}" for k, v in self.kwds.items())]
        return f"{self.dist.name}({', '.join(given)})"

    def __getattr__(self, name: str) -> Any:
        if name.startswith("_"):
            raise AttributeError(name)
        if self._refused is not None and (name in _LINEAR or name in _INVERSE):
            return _invalid
        method = getattr(self._law, name)
        loc, scale = self._loc, self._scale
        if name in _LINEAR:
            if loc == 0 and scale == 1:
                return method
            if name in ("pdf", "logpdf") and scale != 1:
                if name == "pdf":
                    return lambda x: method(self._standard(x)) / scale
                return lambda x: method(self._standard(x)) - np.log(scale)
            return lambda x: method(self._standard(x))
        if name in _INVERSE:
            return lambda q: loc + scale * method(_probability(q)) if (loc, scale) != (0, 1) else method(_probability(q))
        return method

    def _standard(self, x: Any) -> Any:
        return (np.asarray(x, dtype=np.float64) - self._loc) / self._scale

    def __reduce__(self) -> Any:
        return Frozen, (self.dist, self.args, self.kwds)

    def rvs(self, size: Any = None, random_state: Any = None) -> Any:
        if self._refused is not None:
            raise self._refused
        values = self._law.sample(size, stream(random_state))
        return values if self._loc == 0 and self._scale == 1 else self._loc + self._scale * values

    def interval(self, confidence: float) -> tuple[float, float]:
        if self._refused is not None:
            return _invalid(confidence), _invalid(confidence)
        low, high = self._law.interval(confidence)
        return self._loc + self._scale * low, self._loc + self._scale * high

    def support(self) -> tuple[float, float]:
        if self._refused is not None:
            return np.nan, np.nan
        low, high = self._law.support()
        return self._loc + self._scale * low, self._loc + self._scale * high

    def mean(self) -> Any:
        return np.nan if self._refused else self._loc + self._scale * self._law.mean()

    def median(self) -> Any:
        return np.nan if self._refused else self._loc + self._scale * self._law.median()

    def var(self) -> Any:
        return np.nan if self._refused else self._scale**2 * self._law.var()

    def std(self) -> Any:
        return np.nan if self._refused else self._scale * self._law.std()

    def stats(self, moments: str = "mv") -> Any:
        methods = {"m": "mean", "v": "var", "s": "skewness", "k": "kurtosis"}
        found = tuple(np.nan if self._refused else getattr(self, methods[m])() for m in moments)
        return found if len(found) > 1 else found[0]

    def moment(self, order: int) -> Any:
        """About 0."""
        if self._refused is not None:
            return np.nan
        if order > 4:
            return (_sum_over if self.dist.discrete else _mean_over)(self, lambda x: x**order)
        if order == 0:
            return 1.0
        m, v = self.mean(), self.var()
        if order < 3:
            return m if order == 1 else v + m * m
        if v == 0:
            return m**order
        third = self._law.skewness() * v * np.sqrt(v)
        if order == 3:
            return third + 3 * m * v + m**3
        return (self._law.kurtosis() + 3) * v * v + 4 * m * third + 6 * m * m * v + m**4

    def entropy(self) -> Any:
        if self._refused is not None:
            return np.nan
        if self.dist.discrete:
            return _sum_over(self, lambda k: -self.logpmf(k))
        *shapes, _, scale = self.dist.arguments(self.args, dict(self.kwds))
        standard = Frozen(self.dist, tuple(shapes), {})

        def information(x: Any) -> Any:
            values = -standard.logpdf(x)
            return np.where(np.isfinite(values), values, 0)  # where x is rounded to an end of the support

        return _mean_over(standard, information) + np.log(scale)

    def expect(self, func: Callable[[Any], Any] | None = None) -> Any:
        if self._refused is not None:
            return np.nan
        if func is None:
            return self.mean()

        def each(x: Any) -> Any:
            return np.array([func(v) for v in x.tolist()], dtype=np.float64)

        return (_sum_over if self.dist.discrete else _mean_over)(self, each)


def _probability(p: Any) -> Any:
    """p, NaN where it is none."""
    p = np.asarray(p, dtype=np.float64)
    return np.where((p >= 0) & (p <= 1), p, np.nan)[()]


def _sum_over(law: Frozen, f: Callable[[Any], Any]) -> float:
    """The mean of f over the whole numbers that have any weight to speak of."""
    low, high = law.ppf(1e-30), law.isf(1e-30)
    total = 0.0
    for start in np.arange(low, high + 1, 2**16):
        k = np.arange(start, min(start + 2**16, high + 1))
        weights = law.pmf(k)
        k, weights = k[weights > 0], weights[weights > 0]
        total += float(np.dot(f(k), weights))
    return total


def _mean_over(law: Frozen, f: Callable[[Any], Any]) -> float:
    """The mean of f by the double exponential rule over each half of the probabilities."""
    found = np.nan
    for n in range(5, 10):
        t = np.arange(-6 * 2**n, 4 * 2**n + 1) / 2**n
        share = 1 / (1 + np.exp(-np.pi * np.sinh(t)))
        weights = np.pi / 2 * np.cosh(t) * share / (1 + np.exp(np.pi * np.sinh(t)))
        before, found = found, 0.0
        for inverse in (law.ppf, law.isf):
            x = inverse(share / 2)
            used = np.isfinite(x) & (weights > 0)
            with np.errstate(over="ignore"):
                terms = f(x[used]) * weights[used]
            total = float(np.sum(terms))
            # What still counts at probabilities of 1e-275 has no finite mean.
            found += total / 2**n if abs(terms[0]) <= 1e-6 * abs(total) or total == 0 else float(np.copysign(np.inf, terms[0]))
        if not np.isfinite(found) or abs(found - before) <= 1e-11 * max(abs(found), 1e-3):
            break
    return found


class Several:
    """Frozen arrays of parameters: a law for each element."""

    __repr__ = Frozen.__repr__

    def __init__(self, family: Family, args: tuple[Any, ...], kwds: dict[str, Any]) -> None:
        self.dist, self.args, self.kwds = family, args, kwds

    def __getattr__(self, name: str) -> Any:
        if name.startswith("_"):
            raise AttributeError(name)
        method = getattr(self.dist, name)
        return lambda *x, **kwds: method(*x, *self.args, **self.kwds, **kwds)

    def rvs(self, size: Any = None, random_state: Any = None) -> Any:
        return self.dist.rvs(*self.args, **self.kwds, size=size, random_state=random_state)


class Family:
    """A distribution by SciPy's name.

    `law(shapes, scale)` gives the law, where it has a scale (a law of its own loc and scale is
    `law(shapes, loc, scale)`, marked by `located`).
    """

    __module__ = "vexel.compat.scipy"  # which knows it by its name

    def __init__(self, name: str, shapes: str, law: Callable[..., Any], *, scaled: bool = False,
                 located: bool = False, shift: float = 0) -> None:
        self.name = name
        self._names = shapes.split()
        self.shapes = ", ".join(self._names) or None
        self.numargs = len(self._names)
        # Laws of whole numbers have no scale.
        self.discrete = isinstance(law, type) and issubclass(law, Discrete) or name == "randint"
        self._law, self._scaled, self._located = law, scaled, located
        self._shift = shift

    def make(self, shapes: tuple[Any, ...], loc: Any, scale: Any) -> tuple[Any, Any, Any]:
        if self._located:
            return self._law(*shapes, loc, scale), 0, 1
        if self._scaled:
            return self._law(*shapes, scale), loc + self._shift, 1
        if not 0 < scale < np.inf:
            raise ValueError(f"{self.name}: scale must be positive and finite, got {scale}")
        return self._law(*shapes), loc + self._shift, scale

    def arguments(self, args: tuple[Any, ...], kwds: dict[str, Any]) -> tuple[Any, ...]:
        names = [*self._names, "loc"] if self.discrete else [*self._names, "loc", "scale"]
        if len(args) > len(names):
            raise TypeError(f"{self.name}: there must be at most {len(names)} parameters, got {len(args)}")
        given = dict(zip(names, args))
        for key in [k for k in kwds if k in names]:
            given[key] = kwds.pop(key)
        missing = [n for n in self._names if n not in given]
        if missing:
            raise TypeError(f"{self.name}: {', '.join(missing)} must be given")
        return (*(given[n] for n in self._names), given.get("loc", 0), given.get("scale", 1))

    def __call__(self, *args: Any, **kwds: Any) -> Any:
        others = dict(kwds)
        parameters = self.arguments(args, others)
        if others:
            raise TypeError(f"{self.name}: unknown parameters {', '.join(others)}")
        return (Several if any(np.ndim(p) for p in parameters) else Frozen)(self, args, kwds)

    def _at(self, parameters: tuple[Any, ...]) -> Frozen:
        return Frozen(self, parameters[:-1] if self.discrete else parameters, {})

    freeze = __call__

    def __reduce__(self) -> str:
        return self.name

    def __repr__(self) -> str:
        return self.name

    def _apply(self, method: str, x: tuple[Any, ...], args: tuple[Any, ...], kwds: dict[str, Any]) -> Any:
        parameters = self.arguments(args, kwds)
        if all(np.ndim(p) == 0 for p in parameters):
            return getattr(self._at(parameters), method)(*x, **kwds)
        if (method in _LINEAR or method in _INVERSE) and all(np.ndim(p) == 0 for p in parameters[:-2]):
            return self._of_standard(method, *x, *parameters)
        # Arrays of shapes: a law for each element.
        all_of = np.broadcast_arrays(*x, *parameters)
        n = len(x)
        found = []
        for at in np.ndindex(all_of[0].shape):
            values = [a[at].item() for a in all_of]
            found.append(getattr(self._at(tuple(values[n:])), method)(*values[:n], **kwds))
        if found and isinstance(found[0], tuple):  # the ends of an interval, several moments
            return tuple(np.array(part).reshape(all_of[0].shape) for part in zip(*found))
        return np.array(found, dtype=np.float64).reshape(all_of[0].shape)

    def _of_standard(self, method: str, x: Any, *parameters: Any) -> Any:
        """Arrays of loc or scale: the law with neither, at what is standardized by them."""
        *shapes, loc, scale = parameters
        standard = getattr(self(*shapes), method)
        loc, scale = np.asarray(loc, dtype=np.float64), np.asarray(scale, dtype=np.float64)
        possible = np.isfinite(loc) & (scale > 0) & np.isfinite(scale)
        loc, scale = np.where(possible, loc, np.nan), np.where(possible, scale, np.nan)
        if method in _INVERSE:
            return loc + scale * standard(x)
        found = standard((np.asarray(x, dtype=np.float64) - loc) / scale)
        if method == "pdf":
            return found / scale
        return found - np.log(scale) if method == "logpdf" else found

    def __getattr__(self, name: str) -> Any:
        if name in _FIRST:
            return partial(self._of_first, name)
        if name in ("mean", "median", "var", "std", "stats", "support", "entropy"):
            return lambda *args, **kwds: self._apply(name, (), args, kwds)
        raise AttributeError(f"{self.name} has no {name}")

    def _of_first(self, method: str, *args: Any, **kwds: Any) -> Any:
        """A method whose first argument is not a parameter of the law, by its place or by name."""
        for key in _FIRST[method]:
            if key in kwds:
                args = (kwds.pop(key), *args)
        if not args:
            raise TypeError(f"{self.name}.{method}: {_FIRST[method][0]} must be given")
        return self._apply(method, args[:1], args[1:], kwds)

    def rvs(self, *args: Any, size: Any = None, random_state: Any = None, **kwds: Any) -> Any:
        last = len(self._names) + (1 if self.discrete else 2)
        if len(args) > last and size is None:  # after the parameters by position, as in SciPy
            size, *others = args[last:]
            random_state = others[0] if others else random_state
            args = args[:last]
        parameters = self.arguments(args, kwds)
        if kwds:
            raise TypeError(f"{self.name}: unknown parameters {', '.join(kwds)}")
        if not any(np.ndim(p) for p in parameters):
            return self._at(parameters).rvs(size, random_state)
        # Arrays of parameters: one variate of each law, all from one stream.
        given = stream(random_state)
        if isinstance(given, np.random.Generator):
            given = int(given.integers(2**63 - 1))
        rng = given if isinstance(given, vx.Random) else vx.Random(given)
        shape = np.broadcast_shapes(*map(np.shape, parameters))
        all_of = [np.broadcast_to(p, shape if size is None else size) for p in parameters]
        found = []
        for at in np.ndindex(all_of[0].shape):
            values = [a[at].item() for a in all_of]
            found.append(self._at(tuple(values)).rvs(None, rng))
        return np.array(found).reshape(all_of[0].shape)

    def expect(self, func: Callable[[Any], Any] | None = None, args: tuple[Any, ...] = (), **place: Any) -> Any:
        return self(*args, **place).expect(func)

    def nnlf(self, theta: Any, x: Any) -> float:
        """Minus the log-likelihood; infinite where the parameters are out of range."""
        law = self(*theta)
        if law._refused is not None:
            return float("inf")
        return -float(np.sum((law.logpmf if self.discrete else law.logpdf)(x)))

    def fit(self, data: Any, *start: Any, floc: float | None = None, fscale: float | None = None, method: str = "MLE",
            **others: Any) -> Any:
        """Maximum likelihood; what a search would start from is not needed."""
        if method.upper() != "MLE":
            raise NotImplementedError(f'{self.name}.fit: method must be "MLE", got {method!r}')
        fixed = {*(f"f{i}" for i in range(len(self._names))), *(p + n for n in self._names for p in ("f", "fix_"))}
        for key in others:
            if key in fixed:
                raise NotImplementedError(f"{self.name}.fit: {key} cannot be given: shapes are fitted")
            if key not in (*self._names, "loc", "scale", "optimizer"):
                raise TypeError(f"{self.name}.fit: unknown argument {key}")
        return fit(self.name, data, floc, fscale)
