"""Laws with a density, laws of separate values, and laws that can be fitted."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any, overload

from . import _core
from ._distributions import Distribution

if TYPE_CHECKING:
    from typing import Self

    from ._types import Array, ArrayLike, Doubles, NanPolicy, Number, Progress, Rng, Shape, Size


class Continuous(Distribution):
    """Distributions with a density."""

    __slots__ = ()

    @overload
    def pdf(self, x: Number, *, progress: Progress = None) -> float: ...
    @overload
    def pdf(self, x: ArrayLike, *, out: Array | None = None, progress: Progress = None) -> Doubles: ...
    def pdf(self, x: ArrayLike, *, out: Array | None = None,
            progress: Progress = None) -> float | Doubles:
        """Density: 0 outside the support, at its ends the limit from within.

        Parameters
        ----------
        x, out, progress
            As in `cdf`.

        Returns
        -------
        float or ndarray
            Of the shape of `x`.

        Examples
        --------
        >>> vx.Exponential(scale=2).pdf([-1, 0, 2])
        array([0.        , 0.5       , 0.18393972])
        """
        return self._law.density(x, out, progress)

    @overload
    def logpdf(self, x: Number, *, progress: Progress = None) -> float: ...
    @overload
    def logpdf(self, x: ArrayLike, *, out: Array | None = None, progress: Progress = None) -> Doubles: ...
    def logpdf(self, x: ArrayLike, *, out: Array | None = None,
               progress: Progress = None) -> float | Doubles:
        """Logarithm of the density.

        Parameters
        ----------
        x, out, progress
            As in `cdf`.

        Returns
        -------
        float or ndarray
            Of the shape of `x`; -inf outside the support.

        Examples
        --------
        >>> vx.Exponential().logpdf([1000, -1])
        array([-1000.,   -inf])
        """
        return self._law.logdensity(x, out, progress)


class Discrete(Distribution):
    """Distributions of separate values."""

    __slots__ = ()

    @overload
    def pmf(self, x: Number, *, progress: Progress = None) -> float: ...
    @overload
    def pmf(self, x: ArrayLike, *, out: Array | None = None, progress: Progress = None) -> Doubles: ...
    def pmf(self, x: ArrayLike, *, out: Array | None = None,
            progress: Progress = None) -> float | Doubles:
        """P(X = x); 0 where x is not in the support.  `pdf` is the same.

        Parameters
        ----------
        x, out, progress
            As in `cdf`.

        Returns
        -------
        float or ndarray
            Of the shape of `x`.

        Examples
        --------
        >>> vx.Binomial(2, 0.5).pmf([0, 1, 1.5])
        array([0.25, 0.5 , 0.  ])
        """
        return self._law.density(x, out, progress)

    @overload
    def logpmf(self, x: Number, *, progress: Progress = None) -> float: ...
    @overload
    def logpmf(self, x: ArrayLike, *, out: Array | None = None, progress: Progress = None) -> Doubles: ...
    def logpmf(self, x: ArrayLike, *, out: Array | None = None,
               progress: Progress = None) -> float | Doubles:
        """Logarithm of `pmf`.  `logpdf` is the same.

        Parameters
        ----------
        x, out, progress
            As in `cdf`.

        Returns
        -------
        float or ndarray
            Of the shape of `x`; -inf where x is not in the support.

        Examples
        --------
        >>> round(vx.Poisson(1).logpmf(1000), 6)
        -5913.128178
        """
        return self._law.logdensity(x, out, progress)

    # The names that all laws answer to.
    pdf = pmf
    logpdf = logpmf


class Whole(Discrete):
    """Distributions of whole numbers."""

    __slots__ = ()

    if TYPE_CHECKING:
        @overload
        def sample(self, size: None = None, rng: Rng = None, *, progress: Progress = None) -> int: ...
        @overload
        def sample(self, size: Size = None, rng: Rng = None, *, out: Array, progress: Progress = None) -> Array: ...
        @overload
        def sample(self, size: Shape, rng: Rng = None, *, progress: Progress = None) -> Array: ...
        def sample(self, *args: Any, **kwds: Any) -> Any: ...


class Fitted(Distribution):
    """Distributions whose parameters are all found by `fit`."""

    __slots__ = ()

    @classmethod
    def fit(cls, x: ArrayLike, *, weights: ArrayLike | None = None,
            nan_policy: NanPolicy = "propagate", progress: Progress = None) -> Self:
        """The law of the greatest likelihood.

        Parameters
        ----------
        x : array_like
            Data, of any shape.
        weights : array_like, optional
            Frequencies, of the shape of `x`; 1 where they are left out.
        nan_policy : {"propagate", "omit", "raise"}
            omit leaves out missing values; otherwise they are refused.
        progress
            As in `cdf`.

        Returns
        -------
        Distribution
            A law of the class that `fit` is called on.

        Raises
        ------
        ValueError
            For a value that no law of the family has, and for data whose likelihood has no maximum.

        Examples
        --------
        >>> vx.Exponential.fit([1, 2, 6])
        Exponential(scale=3.0)
        >>> vx.Normal.fit([1, 2], weights=[3, 1]).mean()
        1.25
        """
        return cls._of(_core.fit_law(cls.__name__, x, weights, nan_policy, {}, progress))
