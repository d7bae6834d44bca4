"""Laws of whole numbers, and the law of a sample."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any

from . import _core
from ._distributions import _set
from ._kinds import Discrete, Fitted, Whole
from ._results import MOST_IN_REPR

if TYPE_CHECKING:
    from ._types import Array, ArrayLike, NanPolicy, Progress


class Bernoulli(Fitted, Whole):
    """Bernoulli's law: 1 with probability p, else 0.

    Mean p, variance p (1 - p).

    Parameters
    ----------
    p : float
        0 to 1.

    Examples
    --------
    >>> vx.Bernoulli(0.25).pmf([0, 1])
    array([0.75, 0.25])
    """

    __slots__ = ()

    def __init__(self, p: float) -> None:
        _set(self, "_law", _core.make_law("Bernoulli", (p,)))


class Binomial(Whole):
    """Binomial law: successes in n independent trials.

    P(X = k) = C(n, k) p^k (1-p)^(n-k), k from 0 to n.  Mean n p, variance n p (1 - p).

    Parameters
    ----------
    n : int
        Trials, >= 0.
    p : float
        Probability of success, 0 to 1.

    Examples
    --------
    >>> vx.Binomial(n=10, p=0.5).cdf(4), vx.Binomial(10, 0.5).mean()
    (0.376953125, 5.0)
    """

    __slots__ = ()

    def __init__(self, n: int, p: float) -> None:
        _set(self, "_law", _core.make_law("Binomial", (n, p)))

    @classmethod
    def fit(cls, x: ArrayLike, *, n: int, weights: ArrayLike | None = None,
            nan_policy: NanPolicy = "propagate", progress: Progress = None) -> Binomial:
        """The law of the greatest likelihood, `n` given.

        Parameters
        ----------
        x : array_like
            Numbers of successes.
        n : int
            The number of trials.
        weights, nan_policy, progress
            As in `Poisson.fit`.

        Returns
        -------
        Binomial

        Examples
        --------
        >>> vx.Binomial.fit([1, 2, 3], n=4)
        Binomial(n=4, p=0.5)
        """
        return cls._of(_core.fit_law("Binomial", x, weights, nan_policy, {"n": n}, progress))


class Poisson(Fitted, Whole):
    """Poisson's law.

    P(X = k) = mean^k exp(-mean)/k!, k from 0.  The variance is the mean.

    Parameters
    ----------
    mean : float
        >= 0.

    Examples
    --------
    >>> vx.Poisson(3).quantile(0.5), vx.Poisson(1).pmf(0)
    (3.0, 0.36787944117144233)
    """

    __slots__ = ()

    def __init__(self, mean: float) -> None:
        _set(self, "_law", _core.make_law("Poisson", (mean,)))


class Geometric(Fitted, Whole):
    """Geometric law: failures before the first success.

    P(X = k) = p (1-p)^k, k from 0.  Mean (1 - p)/p.  (SciPy counts the success too, from 1.)

    Parameters
    ----------
    p : float
        Probability of success, 0 < p <= 1.

    Examples
    --------
    >>> vx.Geometric(0.5).pmf([0, 1, 2])
    array([0.5  , 0.25 , 0.125])
    """

    __slots__ = ()

    def __init__(self, p: float) -> None:
        _set(self, "_law", _core.make_law("Geometric", (p,)))


class NegativeBinomial(Fitted, Whole):
    """Negative binomial law: failures before success number n.

    P(X = k) = Γ(n+k)/(Γ(n) k!) p^n (1-p)^k, k from 0.  Mean n (1 - p)/p, variance n (1 - p)/p².

    Parameters
    ----------
    n : float
        >= 0, whole or not.
    p : float
        Probability of success, 0 < p <= 1.

    Examples
    --------
    >>> vx.NegativeBinomial(n=2.5, p=0.5).mean()
    2.5
    """

    __slots__ = ()

    def __init__(self, n: float, p: float) -> None:
        _set(self, "_law", _core.make_law("NegativeBinomial", (n, p)))


class Hypergeometric(Whole):
    """Hypergeometric law: marked ones among those drawn without replacement.

    P(X = k) = C(marked, k) C(population-marked, drawn-k) / C(population, drawn), k from
    max(0, drawn + marked - population) to min(marked, drawn).  Mean drawn × marked/population.

    Parameters
    ----------
    population : int
        How many there are.
    marked : int
        How many of them are marked.
    drawn : int
        How many are drawn.

    Examples
    --------
    >>> vx.Hypergeometric(population=20, marked=7, drawn=12).support()
    Interval(low=0.0, high=7.0)
    """

    __slots__ = ()

    def __init__(self, population: int, marked: int, drawn: int) -> None:
        _set(self, "_law", _core.make_law("Hypergeometric", (population, marked, drawn)))

    @classmethod
    def fit(cls, x: ArrayLike, *, population: int, drawn: int, weights: ArrayLike | None = None,
            nan_policy: NanPolicy = "propagate", progress: Progress = None) -> Hypergeometric:
        """The law of the greatest likelihood, `population` and `drawn` given.

        Parameters
        ----------
        x : array_like
            Numbers of marked ones among those drawn.
        population, drawn
            As in `Hypergeometric`.
        weights, nan_policy, progress
            As in `Poisson.fit`.

        Returns
        -------
        Hypergeometric

        Examples
        --------
        >>> vx.Hypergeometric.fit([2, 3], population=20, drawn=5)
        Hypergeometric(population=20, marked=10, drawn=5)
        """
        given = {"population": population, "drawn": drawn}
        return cls._of(_core.fit_law("Hypergeometric", x, weights, nan_policy, given, progress))


class DiscreteUniform(Fitted, Whole):
    """Each of the whole numbers from a to b, equally likely.

    P(X = k) = 1/(b - a + 1).  Both ends belong to it.

    Parameters
    ----------
    a, b : int
        The ends, a <= b.

    Examples
    --------
    >>> die = vx.DiscreteUniform(1, 6)
    >>> die.mean(), die.cdf(2) == 1 / 3
    (3.5, True)
    """

    __slots__ = ()

    def __init__(self, a: int, b: int) -> None:
        _set(self, "_law", _core.make_law("DiscreteUniform", (a, b)))


class Empirical(Discrete):
    """The law of a sample: each distinct value with its share of the total weight.

    Its moments are those of the sample with the divisor n; variates are draws with replacement, as
    floats.

    Parameters
    ----------
    x : array_like
        At least one value, one-dimensional.
    weights : array_like, optional
        Of the values; 1 each where they are left out.

    Examples
    --------
    >>> d = vx.Empirical([1, 1, 4])
    >>> d.pmf([1, 2, 4])
    array([0.66666667, 0.        , 0.33333333])
    >>> d
    Empirical([1.0, 4.0], [2.0, 1.0])
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
        return f"Empirical({x}, {weights})" if len(x) <= MOST_IN_REPR else f"<Empirical law of {len(x)} values>"
