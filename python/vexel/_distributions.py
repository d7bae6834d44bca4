"""Distributions.

Error at most 1e-14 max(1, condition) relative in every method, in both tails down to 1e-300 and in
the logarithms beyond.  Laws are immutable, compared by value, and may be used by any number of
threads.
"""

from __future__ import annotations

from typing import TYPE_CHECKING, Any

from . import _core
from ._results import Interval

if TYPE_CHECKING:
    import sys

    from ._types import Array, ArrayLike, NanPolicy, Progress, Rng, Size

    if sys.version_info >= (3, 11):
        from typing import Self

_set = object.__setattr__


class Distribution:
    """The methods that every distribution has.  Arguments are numbers or arrays."""

    __slots__ = ("__weakref__", "_law")
    _law: _core.Law

    def cdf(self, x: ArrayLike, *, out: Array | None = None, progress: Progress = None) -> Any:
        """P(X <= x)."""
        return self._law.cdf(x, out, progress)

    def sf(self, x: ArrayLike, *, out: Array | None = None, progress: Progress = None) -> Any:
        """P(X > x), to the last digits where it is small."""
        return self._law.sf(x, out, progress)

    def logcdf(self, x: ArrayLike, *, out: Array | None = None, progress: Progress = None) -> Any:
        """log P(X <= x), also where the probability underflows or is near 1."""
        return self._law.logcdf(x, out, progress)

    def logsf(self, x: ArrayLike, *, out: Array | None = None, progress: Progress = None) -> Any:
        """log P(X > x), also where the probability underflows or is near 1."""
        return self._law.logsf(x, out, progress)

    def quantile(self, p: ArrayLike, *, out: Array | None = None, progress: Progress = None) -> Any:
        """x with cdf(x) = p; of a discrete law the smallest x of the support with cdf(x) >= p."""
        return self._law.quantile(p, out, progress)

    ppf = quantile

    def isf(self, q: ArrayLike, *, out: Array | None = None, progress: Progress = None) -> Any:
        """x with sf(x) = q; of a discrete law the smallest x of the support with sf(x) <= q."""
        return self._law.isf(q, out, progress)

    def interval(self, level: ArrayLike, *, progress: Progress = None) -> Interval:
        """From quantile((1 - level)/2) to isf((1 - level)/2); arrays of ends for an array."""
        return Interval(*self._law.interval(level, progress))

    def support(self) -> Interval:
        """The smallest and the largest value."""
        return Interval(*self._law.support())

    def mean(self) -> float:
        """Mean; NaN where there is none."""
        return self._law.mean()

    def median(self) -> float:
        """quantile(0.5)."""
        return float(self._law.quantile(0.5, None, None))

    def var(self) -> float:
        """Variance."""
        return self._law.var()

    def std(self) -> float:
        """Standard deviation."""
        return self._law.std()

    def skewness(self) -> float:
        """Skewness."""
        return self._law.skewness()

    def kurtosis(self) -> float:
        """Excess kurtosis: 0 for the normal law."""
        return self._law.kurtosis()

    def sample(self, size: Size = None, rng: Rng = None, *, out: Array | None = None,
               progress: Progress = None) -> Any:
        """Independent variates, whose law is exactly this one.

        Parameters
        ----------
        size : int or tuple, optional
            How many; None: one number.
        rng : Random, int or None
            The stream, a seed, or None for a seed from the operating system.
        out : ndarray of float64, optional
            Where to put them.
        progress : callable or bool, optional
            Told the share done, 0 to 1, during long work; True shows a bar where tqdm is installed.
            The other methods take it too.

        Returns
        -------
        number or ndarray
            int64 for laws of whole numbers, else float64.
        """
        return self._law.sample(size, rng, out, progress)

    def rvs(self, size: Size = None, random_state: Rng = None, *, rng: Rng = None,
            progress: Progress = None) -> Any:
        """`sample` by SciPy's names."""
        return self._law.sample(size, random_state if rng is None else rng, None, progress)

    def log_likelihood(self, x: ArrayLike, *, weights: ArrayLike | None = None,
                       nan_policy: NanPolicy = "propagate", progress: Progress = None) -> float:
        """Σ weights × log density of data."""
        return self._law.log_likelihood(x, weights, nan_policy, progress)

    @property
    def parameters(self) -> dict[str, Any]:
        """The parameters by name, in the constructor's order."""
        return self._law.parameters()

    def plot(self, ax: Any = None, **style: Any) -> Any:
        """Draws the density or the probabilities; returns the axes."""
        from ._plot import draw_law

        return draw_law(self, ax, style)

    @classmethod
    def _of(cls, law: Any) -> Self:
        self = cls.__new__(cls)
        _set(self, "_law", law)
        return self

    def __setattr__(self, name: str, value: Any) -> None:
        raise AttributeError(f"a {type(self).__name__} does not change: make another one")

    def __delattr__(self, name: str) -> None:
        raise AttributeError(f"a {type(self).__name__} does not change: make another one")

    def __repr__(self) -> str:
        arguments = ", ".join(f"{k}={v!r}" for k, v in self.parameters.items())
        return f"{type(self).__name__}({arguments})"

    def __eq__(self, other: object) -> bool:
        return type(self) is type(other) and self._key() == other._key()

    def __hash__(self) -> int:
        return hash((type(self), self._key()))

    def _key(self) -> tuple[Any, ...]:
        return tuple(self.parameters.values())

    def __reduce__(self) -> Any:
        return type(self), tuple(self.parameters.values())


class Continuous(Distribution):
    """Distributions with a density."""

    __slots__ = ()

    def pdf(self, x: ArrayLike, *, out: Array | None = None, progress: Progress = None) -> Any:
        """Density: 0 outside the support, at its ends the limit from within."""
        return self._law.density(x, out, progress)

    def logpdf(self, x: ArrayLike, *, out: Array | None = None, progress: Progress = None) -> Any:
        """Logarithm of the density."""
        return self._law.logdensity(x, out, progress)


class Discrete(Distribution):
    """Distributions of separate values."""

    __slots__ = ()

    def pmf(self, x: ArrayLike, *, out: Array | None = None, progress: Progress = None) -> Any:
        """P(X = x); 0 where x is not in the support."""
        return self._law.density(x, out, progress)

    def logpmf(self, x: ArrayLike, *, out: Array | None = None, progress: Progress = None) -> Any:
        """log P(X = x)."""
        return self._law.logdensity(x, out, progress)

    # The names that all laws answer to.
    pdf = pmf
    logpdf = logpmf


class _Fitted(Distribution):
    __slots__ = ()

    @classmethod
    def fit(cls, x: ArrayLike, *, weights: ArrayLike | None = None,
            nan_policy: NanPolicy = "propagate", progress: Progress = None) -> Self:
        """The law of the greatest likelihood.

        Parameters
        ----------
        x : array_like
            Data.
        weights : array_like, optional
            Frequencies.
        nan_policy : {"propagate", "omit", "raise"}
            omit leaves out missing values; otherwise they are refused.
        progress : callable or bool, optional
            As in `sample`.
        """
        return cls._of(_core.fit_law(cls.__name__, x, weights, nan_policy, {}, progress))


class Normal(_Fitted, Continuous):
    """Normal law of `mean` and standard deviation `sd` > 0.

    Examples
    --------
    >>> vx.Normal().cdf([-1, 0])
    array([0.15865525, 0.5       ])
    >>> vx.Normal(mean=1).sf(41) < 1e-300
    True
    """

    __slots__ = ()

    def __init__(self, mean: float = 0, sd: float = 1) -> None:
        _set(self, "_law", _core.make_law("Normal", (mean, sd)))


class LogNormal(_Fitted, Continuous):
    """Of exp(Y), Y normal of mean `mu` and standard deviation `sigma` > 0."""

    __slots__ = ()

    def __init__(self, mu: float, sigma: float) -> None:
        _set(self, "_law", _core.make_law("LogNormal", (mu, sigma)))


class Uniform(_Fitted, Continuous):
    """Uniform law on [a, b], a < b."""

    __slots__ = ()

    def __init__(self, a: float = 0, b: float = 1) -> None:
        _set(self, "_law", _core.make_law("Uniform", (a, b)))


class Exponential(_Fitted, Continuous):
    """exp(-x/scale)/scale on x >= 0; scale > 0."""

    __slots__ = ()

    def __init__(self, scale: float = 1) -> None:
        _set(self, "_law", _core.make_law("Exponential", (scale,)))


class Gamma(_Fitted, Continuous):
    """x^(shape-1) exp(-x/scale) / (scale^shape Γ(shape)) on x >= 0; shape, scale > 0.

    Examples
    --------
    >>> d = vx.Gamma(shape=2.5, scale=2)
    >>> d.mean(), d.quantile(d.cdf(3.0))
    (5.0, 2.9999999999999996)
    >>> d
    Gamma(shape=2.5, scale=2.0)
    """

    __slots__ = ()

    def __init__(self, shape: float, scale: float = 1) -> None:
        _set(self, "_law", _core.make_law("Gamma", (shape, scale)))


class Beta(_Fitted, Continuous):
    """x^(a-1) (1-x)^(b-1) / B(a, b) on [0, 1]; a, b > 0."""

    __slots__ = ()

    def __init__(self, a: float, b: float) -> None:
        _set(self, "_law", _core.make_law("Beta", (a, b)))


class ChiSquare(_Fitted, Continuous):
    """Of the sum of `df` squares of standard normal variables; df > 0, whole or not."""

    __slots__ = ()

    def __init__(self, df: float) -> None:
        _set(self, "_law", _core.make_law("ChiSquare", (df,)))


class StudentT(_Fitted, Continuous):
    """Student's t of `df` > 0 degrees of freedom."""

    __slots__ = ()

    def __init__(self, df: float) -> None:
        _set(self, "_law", _core.make_law("StudentT", (df,)))


class FRatio(_Fitted, Continuous):
    """Of the ratio of two chi-square variables, each over its degrees of freedom; df1, df2 > 0."""

    __slots__ = ()

    def __init__(self, df1: float, df2: float) -> None:
        _set(self, "_law", _core.make_law("FRatio", (df1, df2)))


class Cauchy(_Fitted, Continuous):
    """1/(π scale (1 + z²)), z = (x - location)/scale; scale > 0."""

    __slots__ = ()

    def __init__(self, location: float = 0, scale: float = 1) -> None:
        _set(self, "_law", _core.make_law("Cauchy", (location, scale)))


class Laplace(_Fitted, Continuous):
    """exp(-|z|)/(2 scale), z = (x - location)/scale; scale > 0."""

    __slots__ = ()

    def __init__(self, location: float = 0, scale: float = 1) -> None:
        _set(self, "_law", _core.make_law("Laplace", (location, scale)))


class Logistic(_Fitted, Continuous):
    """exp(-z)/(scale (1 + exp(-z))²), z = (x - location)/scale; scale > 0."""

    __slots__ = ()

    def __init__(self, location: float = 0, scale: float = 1) -> None:
        _set(self, "_law", _core.make_law("Logistic", (location, scale)))


class Gumbel(_Fitted, Continuous):
    """exp(-z - exp(-z))/scale, z = (x - location)/scale, the law of largest values; scale > 0."""

    __slots__ = ()

    def __init__(self, location: float = 0, scale: float = 1) -> None:
        _set(self, "_law", _core.make_law("Gumbel", (location, scale)))


class Weibull(_Fitted, Continuous):
    """(shape/scale) t^(shape-1) exp(-t^shape), t = x/scale >= 0; shape, scale > 0."""

    __slots__ = ()

    def __init__(self, shape: float, scale: float = 1) -> None:
        _set(self, "_law", _core.make_law("Weibull", (shape, scale)))


class Pareto(_Fitted, Continuous):
    """shape minimum^shape / x^(shape+1) on x >= minimum; shape, minimum > 0."""

    __slots__ = ()

    def __init__(self, shape: float, minimum: float = 1) -> None:
        _set(self, "_law", _core.make_law("Pareto", (shape, minimum)))


class Power(_Fitted, Continuous):
    """shape x^(shape-1) / maximum^shape on [0, maximum]; shape, maximum > 0."""

    __slots__ = ()

    def __init__(self, shape: float, maximum: float = 1) -> None:
        _set(self, "_law", _core.make_law("Power", (shape, maximum)))


class Rayleigh(_Fitted, Continuous):
    """x/scale² exp(-x²/(2 scale²)) on x >= 0; scale > 0."""

    __slots__ = ()

    def __init__(self, scale: float = 1) -> None:
        _set(self, "_law", _core.make_law("Rayleigh", (scale,)))


class Maxwell(_Fitted, Continuous):
    """sqrt(2/π) x² exp(-x²/(2 scale²))/scale³ on x >= 0; scale > 0."""

    __slots__ = ()

    def __init__(self, scale: float = 1) -> None:
        _set(self, "_law", _core.make_law("Maxwell", (scale,)))


class Triangular(_Fitted, Continuous):
    """Rising on [a, mode], falling on [mode, b]; a <= mode <= b, a < b."""

    __slots__ = ()

    def __init__(self, a: float, b: float, mode: float) -> None:
        _set(self, "_law", _core.make_law("Triangular", (a, b, mode)))


class InverseGaussian(_Fitted, Continuous):
    """sqrt(shape/(2π x³)) exp(-shape (x-mean)²/(2 mean² x)) on x > 0; mean, shape > 0."""

    __slots__ = ()

    def __init__(self, mean: float, shape: float) -> None:
        _set(self, "_law", _core.make_law("InverseGaussian", (mean, shape)))


class Moyal(_Fitted, Continuous):
    """exp(-(z + exp(-z))/2)/(scale sqrt(2π)), z = (x - location)/scale; scale > 0."""

    __slots__ = ()

    def __init__(self, location: float = 0, scale: float = 1) -> None:
        _set(self, "_law", _core.make_law("Moyal", (location, scale)))


class ExponentialPower(_Fitted, Continuous):
    """Proportional to exp(-|z|^(2/shape)/2), z = (x - location)/scale; scale, shape > 0.  Shape 1 is the
    normal law, shape 2 Laplace's with twice the scale."""

    __slots__ = ()

    def __init__(self, location: float, scale: float, shape: float) -> None:
        _set(self, "_law", _core.make_law("ExponentialPower", (location, scale, shape)))


class NonCentralChiSquare(Continuous):
    """Of a sum of `df` squares of normal variables whose squared means add up to `nc`; df > 0, nc >= 0."""

    __slots__ = ()

    def __init__(self, df: float, nc: float) -> None:
        _set(self, "_law", _core.make_law("NonCentralChiSquare", (df, nc)))


class NonCentralBeta(Continuous):
    """The Poisson mixture, of mean nc/2, of beta laws of a + j and b; a, b > 0, nc >= 0."""

    __slots__ = ()

    def __init__(self, a: float, b: float, nc: float) -> None:
        _set(self, "_law", _core.make_law("NonCentralBeta", (a, b, nc)))


class NonCentralFRatio(Continuous):
    """Of (N/df1)/(C/df2), N non-central chi-square of df1 and nc, C chi-square of df2; nc >= 0."""

    __slots__ = ()

    def __init__(self, df1: float, df2: float, nc: float) -> None:
        _set(self, "_law", _core.make_law("NonCentralFRatio", (df1, df2, nc)))


class NonCentralStudentT(Continuous):
    """Of (Z + nc)/sqrt(C/df), Z standard normal, C chi-square of `df` > 0."""

    __slots__ = ()

    def __init__(self, df: float, nc: float) -> None:
        _set(self, "_law", _core.make_law("NonCentralStudentT", (df, nc)))


class Bernoulli(_Fitted, Discrete):
    """1 with probability p, else 0; 0 <= p <= 1."""

    __slots__ = ()

    def __init__(self, p: float) -> None:
        _set(self, "_law", _core.make_law("Bernoulli", (p,)))


class Binomial(Discrete):
    """Successes in n trials of probability p; n >= 0, 0 <= p <= 1.

    Examples
    --------
    >>> vx.Binomial.fit([1, 2, 3], n=4)
    Binomial(n=4, p=0.5)
    """

    __slots__ = ()

    def __init__(self, n: int, p: float) -> None:
        _set(self, "_law", _core.make_law("Binomial", (n, p)))

    @classmethod
    def fit(cls, x: ArrayLike, *, n: int, weights: ArrayLike | None = None,
            nan_policy: NanPolicy = "propagate", progress: Progress = None) -> Binomial:
        """The law of the greatest likelihood, n given."""
        return cls._of(_core.fit_law("Binomial", x, weights, nan_policy, {"n": n}, progress))


class Poisson(_Fitted, Discrete):
    """mean^k exp(-mean)/k!; mean >= 0.

    Examples
    --------
    >>> vx.Poisson(3).quantile(0.5)
    3.0
    """

    __slots__ = ()

    def __init__(self, mean: float) -> None:
        _set(self, "_law", _core.make_law("Poisson", (mean,)))


class Geometric(_Fitted, Discrete):
    """Failures before the first success: p (1-p)^k; 0 < p <= 1.  (SciPy counts the success too.)"""

    __slots__ = ()

    def __init__(self, p: float) -> None:
        _set(self, "_law", _core.make_law("Geometric", (p,)))


class NegativeBinomial(_Fitted, Discrete):
    """Failures before success number n: Γ(n+k)/(Γ(n) k!) p^n (1-p)^k; n >= 0, whole or not, 0 < p <= 1."""

    __slots__ = ()

    def __init__(self, n: float, p: float) -> None:
        _set(self, "_law", _core.make_law("NegativeBinomial", (n, p)))


class Hypergeometric(Discrete):
    """Marked ones among those drawn from a population without replacement."""

    __slots__ = ()

    def __init__(self, population: int, marked: int, drawn: int) -> None:
        _set(self, "_law", _core.make_law("Hypergeometric", (population, marked, drawn)))

    @classmethod
    def fit(cls, x: ArrayLike, *, population: int, drawn: int, weights: ArrayLike | None = None,
            nan_policy: NanPolicy = "propagate", progress: Progress = None) -> Hypergeometric:
        """The law of the greatest likelihood, population and drawn given."""
        given = {"population": population, "drawn": drawn}
        return cls._of(_core.fit_law("Hypergeometric", x, weights, nan_policy, given, progress))


class DiscreteUniform(_Fitted, Discrete):
    """1/(b - a + 1) on a, a + 1, ..., b; a <= b."""

    __slots__ = ()

    def __init__(self, a: int, b: int) -> None:
        _set(self, "_law", _core.make_law("DiscreteUniform", (a, b)))

class Empirical(Discrete):
    """The law of a sample: each distinct value of x with its share of the total weight.

    Parameters
    ----------
    x : array_like
        At least one value.
    weights : array_like, optional
        1 each where they are left out.

    Examples
    --------
    >>> vx.Empirical([1, 1, 4]).pmf([1, 2, 4])
    array([0.66666667, 0.        , 0.33333333])
    """

    __slots__ = ()

    def __init__(self, x: ArrayLike, weights: ArrayLike | None = None) -> None:
        _set(self, "_law", _core.make_law("Empirical", (x, weights)))

    def _key(self) -> tuple[Any, ...]:
        return tuple(v.tobytes() for v in self.parameters.values())

    def _values(self) -> Array:
        x: Array = self.parameters["x"]
        return x

    def __repr__(self) -> str:
        x, weights = (v.tolist() for v in self.parameters.values())
        return f"Empirical({x}, {weights})" if len(x) <= 8 else f"<Empirical law of {len(x)} values>"
