"""What all distributions share; the laws themselves are in the modules beside this one.

Error at most 1e-14 max(1, condition) relative in every method, in both tails down to 1e-300 and in
the logarithms beyond.  Laws are immutable, compared by value, and may be used by any number of
threads.
"""

from __future__ import annotations

from typing import TYPE_CHECKING, Any, overload

from . import _core
from ._results import Interval

if TYPE_CHECKING:
    from typing import Self

    from ._types import Array, ArrayLike, Doubles, NanPolicy, Number, Progress, Rng, Shape, Size

_set = object.__setattr__


class Distribution:
    """The methods that every distribution has.

    Functions take a number and give a float, or an array and give an array of its shape.  NaN gives
    NaN.  Methods whose name begins with log are right where the probability itself underflows or is
    near 1.
    """

    __slots__ = ("__weakref__", "_law")
    _law: _core.Law

    @overload
    def cdf(self, x: Number, *, progress: Progress = None) -> float: ...
    @overload
    def cdf(self, x: ArrayLike, *, out: Array | None = None, progress: Progress = None) -> Doubles: ...
    def cdf(self, x: ArrayLike, *, out: Array | None = None,
            progress: Progress = None) -> float | Doubles:
        """Distribution function: P(X <= x).

        Parameters
        ----------
        x : float or array_like
            Where.
        out : ndarray of float64, optional
            Where to put the result; of the argument's shape.
        progress : callable or bool, optional
            Told the share done, 0 to 1, during long work; True shows a bar where tqdm is installed.

        Returns
        -------
        float or ndarray
            Of the shape of `x`.

        Examples
        --------
        >>> vx.Normal().cdf(0.0)
        0.5
        >>> vx.Exponential(scale=2).cdf([0, 1, 2])
        array([0.        , 0.39346934, 0.63212056])
        """
        return self._law.cdf(x, out, progress)

    @overload
    def sf(self, x: Number, *, progress: Progress = None) -> float: ...
    @overload
    def sf(self, x: ArrayLike, *, out: Array | None = None, progress: Progress = None) -> Doubles: ...
    def sf(self, x: ArrayLike, *, out: Array | None = None,
           progress: Progress = None) -> float | Doubles:
        """Survival function: P(X > x), to its own last digits where it is small.

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
        >>> vx.Normal().sf(10), 1 - vx.Normal().cdf(10)
        (7.61985302416...e-24, 0.0)
        """
        return self._law.sf(x, out, progress)

    @overload
    def logcdf(self, x: Number, *, progress: Progress = None) -> float: ...
    @overload
    def logcdf(self, x: ArrayLike, *, out: Array | None = None, progress: Progress = None) -> Doubles: ...
    def logcdf(self, x: ArrayLike, *, out: Array | None = None,
               progress: Progress = None) -> float | Doubles:
        """Logarithm of `cdf`.

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
        >>> vx.Normal().logcdf([-1000, 10])
        array([-5.00007827e+05, -7.61985302e-24])
        """
        return self._law.logcdf(x, out, progress)

    @overload
    def logsf(self, x: Number, *, progress: Progress = None) -> float: ...
    @overload
    def logsf(self, x: ArrayLike, *, out: Array | None = None, progress: Progress = None) -> Doubles: ...
    def logsf(self, x: ArrayLike, *, out: Array | None = None,
              progress: Progress = None) -> float | Doubles:
        """Logarithm of `sf`.

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
        >>> vx.Exponential().logsf(4000)
        -4000.0
        """
        return self._law.logsf(x, out, progress)

    @overload
    def quantile(self, p: Number, *, progress: Progress = None) -> float: ...
    @overload
    def quantile(self, p: ArrayLike, *, out: Array | None = None, progress: Progress = None) -> Doubles: ...
    def quantile(self, p: ArrayLike, *, out: Array | None = None,
                 progress: Progress = None) -> float | Doubles:
        """The inverse of `cdf`; `ppf` is the same.

        Parameters
        ----------
        p : float or array_like
            Probabilities, 0 to 1; these two give the ends of the support.
        out, progress
            As in `cdf`.

        Returns
        -------
        float or ndarray
            x with cdf(x) = p; of a discrete law the smallest x of the support with cdf(x) >= p.

        Raises
        ------
        ValueError
            For a probability outside [0, 1].

        Examples
        --------
        >>> vx.Normal().quantile([0.025, 0.5])
        array([-1.95996398,  0.        ])
        >>> vx.Binomial(10, 0.3).ppf(0.5)
        3.0
        """
        return self._law.quantile(p, out, progress)

    ppf = quantile

    @overload
    def isf(self, q: Number, *, progress: Progress = None) -> float: ...
    @overload
    def isf(self, q: ArrayLike, *, out: Array | None = None, progress: Progress = None) -> Doubles: ...
    def isf(self, q: ArrayLike, *, out: Array | None = None,
            progress: Progress = None) -> float | Doubles:
        """The inverse of `sf`, right for tails that 1 - q would round away.

        Parameters
        ----------
        q : float or array_like
            Probabilities, 0 to 1.
        out, progress
            As in `cdf`.

        Returns
        -------
        float or ndarray
            x with sf(x) = q; of a discrete law the smallest x of the support with sf(x) <= q.

        Raises
        ------
        ValueError
            For a probability outside [0, 1].

        Examples
        --------
        >>> round(vx.Normal().isf(1e-100), 6)
        21.273454
        """
        return self._law.isf(q, out, progress)

    @overload
    def interval(self, level: Number, *, progress: Progress = None) -> Interval[float]: ...
    @overload
    def interval(self, level: ArrayLike, *, progress: Progress = None) -> Interval[Doubles]: ...
    def interval(self, level: ArrayLike, *, progress: Progress = None) -> Interval[Any]:
        """The interval that leaves out (1 - level)/2 on each side.

        Parameters
        ----------
        level : float or array_like
            Its probability, 0 to 1.
        progress
            As in `cdf`.

        Returns
        -------
        Interval
            low, high: quantile((1 - level)/2) and isf((1 - level)/2); arrays for an array.

        Examples
        --------
        >>> low, high = vx.Normal(mean=10).interval(0.95)
        >>> round(low, 6), round(high, 6)
        (8.040036, 11.959964)
        """
        return Interval(*self._law.interval(level, progress))

    def support(self) -> Interval[float]:
        """The smallest and the largest value, which may be infinite.

        Returns
        -------
        Interval

        Examples
        --------
        >>> vx.Exponential().support()
        Interval(low=0.0, high=inf)
        """
        return Interval(*self._law.support())

    def mean(self) -> float:
        """Mean; NaN where there is none.

        Returns
        -------
        float

        Examples
        --------
        >>> vx.Gamma(shape=2.5, scale=2).mean(), vx.Cauchy().mean()
        (5.0, nan)
        """
        return self._law.mean()

    def median(self) -> float:
        """Median: quantile(0.5).

        Returns
        -------
        float

        Examples
        --------
        >>> vx.Uniform(2, 4).median()
        3.0
        """
        return float(self._law.quantile(0.5, None, None))

    def var(self) -> float:
        """Variance; infinite where the integral is, NaN where there is none.

        Returns
        -------
        float

        Examples
        --------
        >>> vx.Poisson(4).var(), vx.StudentT(2).var()
        (4.0, inf)
        """
        return self._law.var()

    def std(self) -> float:
        """Standard deviation: the square root of `var`.

        Returns
        -------
        float

        Examples
        --------
        >>> vx.Poisson(4).std()
        2.0
        """
        return self._law.std()

    def skewness(self) -> float:
        """Skewness: the third central moment over the cube of the standard deviation.

        Returns
        -------
        float

        Examples
        --------
        >>> vx.Exponential().skewness()
        2.0
        """
        return self._law.skewness()

    def kurtosis(self) -> float:
        """Excess kurtosis: the fourth central moment over the squared variance, less 3.

        Returns
        -------
        float

        Examples
        --------
        >>> vx.Normal().kurtosis(), vx.Exponential().kurtosis()
        (0.0, 6.0)
        """
        return self._law.kurtosis()

    @overload
    def sample(self, size: None = None, rng: Rng = None, *, progress: Progress = None) -> float: ...
    @overload
    def sample(self, size: Size = None, rng: Rng = None, *, out: Array, progress: Progress = None) -> Array: ...
    @overload
    def sample(self, size: Shape, rng: Rng = None, *, progress: Progress = None) -> Array: ...
    def sample(self, size: Size = None, rng: Rng = None, *, out: Array | None = None,
               progress: Progress = None) -> float | Array:
        """Independent variates, whose law is exactly this one.

        Parameters
        ----------
        size : int or tuple of int, optional
            How many, or the shape; None: one number.
        rng : Random, int, numpy.random.Generator or None
            The stream, a seed, a generator that gives a seed, or None for a seed from the
            operating system.
        out : ndarray of float64, optional
            Where to put them; `size` may be left out.
        progress
            As in `cdf`.

        Returns
        -------
        number or ndarray
            int or int64 of laws of whole numbers, else float or float64.

        Examples
        --------
        >>> vx.Normal(mean=5).sample((2, 3), rng=1).shape
        (2, 3)
        >>> vx.Poisson(4).sample(3, rng=vx.Random(7)).dtype
        dtype('int64')
        """
        return self._law.sample(size, rng, out, progress)

    @overload
    def rvs(self, size: None = None, random_state: Rng = None, *, rng: Rng = None,
            progress: Progress = None) -> float: ...
    @overload
    def rvs(self, size: Shape, random_state: Rng = None, *, rng: Rng = None,
            progress: Progress = None) -> Array: ...
    def rvs(self, size: Size = None, random_state: Rng = None, *, rng: Rng = None,
            progress: Progress = None) -> float | Array:
        """`sample` by SciPy's names.

        Parameters
        ----------
        size : int or tuple of int, optional
            As in `sample`.
        random_state, rng
            Either of them: what `rng` is in `sample`.
        progress
            As in `cdf`.

        Returns
        -------
        number or ndarray

        Examples
        --------
        >>> bool((vx.Normal().rvs(size=4, random_state=1) == vx.Normal().sample(4, rng=1)).all())
        True
        """
        return self._law.sample(size, random_state if rng is None else rng, None, progress)

    def log_likelihood(self, x: ArrayLike, *, weights: ArrayLike | None = None,
                       nan_policy: NanPolicy = "propagate", progress: Progress = None) -> float:
        """Log-likelihood of data: Σ weights × logarithm of the density.

        Parameters
        ----------
        x : array_like
            Data, of any shape.
        weights : array_like, optional
            Frequencies, of the shape of `x`; 1 where they are left out.
        nan_policy : {"propagate", "omit", "raise"}
            What a missing value does: make the sum NaN, nothing, or an error.
        progress
            As in `cdf`.

        Returns
        -------
        float

        Examples
        --------
        >>> vx.Exponential().log_likelihood([1, 2, 3], weights=[1, 1, 2])
        -9.0
        """
        return self._law.log_likelihood(x, weights, nan_policy, progress)

    @property
    def parameters(self) -> dict[str, Any]:
        """The parameters by name, in the constructor's order.

        Examples
        --------
        >>> vx.Gamma(2.5).parameters
        {'shape': 2.5, 'scale': 1.0}
        """
        return self._law.parameters()

    def plot(self, ax: Any = None, **style: Any) -> Any:
        """Draws the density, or the probabilities of a discrete law, with matplotlib.

        Parameters
        ----------
        ax : matplotlib.axes.Axes, optional
            Where to draw; new ones where they are left out.
        **style
            What `Axes.plot` (`Axes.vlines` for a discrete law) takes: color, label, ...

        Returns
        -------
        matplotlib.axes.Axes
        """
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
