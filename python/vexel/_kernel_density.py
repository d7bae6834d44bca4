"""Kernel densities."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any, overload

import numpy as np

from . import _core
from ._arrays import convert
from ._results import MOST_IN_REPR

if TYPE_CHECKING:
    from typing import Literal

    from ._types import Array, ArrayLike, DensityKernel, Doubles, NanPolicy, Number, Progress, Rng, Shape, Size


def _kept(x: Any) -> Any:
    return x if x is None else np.array(x if isinstance(x, (list, tuple)) else convert(x, "x"))


class KernelDensity:
    """A kernel density, made by `kde`; a call gives the density at any point.

    Attributes
    ----------
    x, y : ndarray of float64
        The density `y` at the equally spaced points `x`.

    Examples
    --------
    >>> d = vx.kde([1, 2, 4], bandwidth=1, points=5)
    >>> d.x
    array([-2.  ,  0.25,  2.5 ,  4.75,  7.  ])
    >>> d
    kde([1, 2, 4], bandwidth=1.0, points=5)
    """

    __slots__ = ("_args", "_density", "x", "y")

    def __init__(self, *args: Any, progress: Progress = None) -> None:
        self._density = _core.KernelDensity(*args, progress)
        # Copies: what becomes of the caller's data changes no repr, pickle or comparison.
        self._args = tuple(_kept(a) if i in (0, 5) else a for i, a in enumerate(args))
        self.x, self.y = self._density.grid()

    @property
    def bandwidth(self) -> float:
        """The standard deviation of the kernel."""
        return self._density.bandwidth()

    @overload
    def __call__(self, t: Number, *, progress: Progress = None) -> float: ...
    @overload
    def __call__(self, t: ArrayLike, *, out: Array | None = None, progress: Progress = None) -> Doubles: ...
    def __call__(self, t: ArrayLike, *, out: Array | None = None,
                 progress: Progress = None) -> float | Doubles:
        """The density at t: the direct sum over the data, whatever the grid.

        Parameters
        ----------
        t : float or array_like
            Where.
        out : ndarray of float64, optional
            Where to put the result; of the argument's shape.
        progress : callable or bool, optional
            Told the share done, 0 to 1, during long work; True shows a bar where tqdm is installed.

        Returns
        -------
        float or ndarray
            Of the shape of `t`.

        Examples
        --------
        >>> vx.kde([0], bandwidth=1)([0.0, 1.0])
        array([0.39894228, 0.24197072])
        """
        return self._density.pdf(t, out, progress)

    @overload
    def cdf(self, t: Number, *, progress: Progress = None) -> float: ...
    @overload
    def cdf(self, t: ArrayLike, *, out: Array | None = None, progress: Progress = None) -> Doubles: ...
    def cdf(self, t: ArrayLike, *, out: Array | None = None,
            progress: Progress = None) -> float | Doubles:
        """The distribution function at t.

        Parameters
        ----------
        t, out, progress
            As in `__call__`.

        Returns
        -------
        float or ndarray
            Of the shape of `t`.

        Examples
        --------
        >>> vx.kde([1, 3], bandwidth=1).cdf(2.0)
        0.5
        """
        return self._density.cdf(t, out, progress)

    @overload
    def sample(self, n: None = None, rng: Rng = None, *, progress: Progress = None) -> float: ...
    @overload
    def sample(self, n: Shape, rng: Rng = None, *, progress: Progress = None) -> Doubles: ...
    def sample(self, n: Size = None, rng: Rng = None, *, progress: Progress = None) -> float | Doubles:
        """Exact variates: a point of the data plus a variate of the kernel.

        Parameters
        ----------
        n : int or tuple of int, optional
            How many, or the shape; None: one number.
        rng : Random, int, numpy.random.Generator or None
            The stream, a seed, a generator that gives a seed, or None for a seed from the
            operating system.
        progress
            As in `__call__`.

        Returns
        -------
        float or ndarray

        Examples
        --------
        >>> vx.kde([1, 3]).sample(5, rng=1).shape
        (5,)
        """
        return self._density.sample(n, rng, progress)

    def plot(self, ax: Any = None, **style: Any) -> Any:
        """Draws the curve with matplotlib.

        Parameters
        ----------
        ax : matplotlib.axes.Axes, optional
            Where to draw; new ones where they are left out.
        **style
            What `Axes.plot` takes: color, label, ...

        Returns
        -------
        matplotlib.axes.Axes
        """
        from ._plot import axes

        ax = axes(ax)
        ax.plot(self.x, self.y, **style)
        ax.set(xlabel="x", ylabel="density", ylim=(0, None))
        return ax

    def __reduce__(self) -> Any:
        return KernelDensity, self._args

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, KernelDensity):
            return NotImplemented
        return self._key() == other._key()

    __hash__ = None  # type: ignore[assignment]

    def _key(self) -> tuple[Any, ...]:
        x, _, kernel, _, _, weights, nan_policy = self._args
        w = None if weights is None else np.asarray(weights, dtype=np.float64).tobytes()
        return (np.asarray(x, dtype=np.float64).tobytes(), w, self.bandwidth, kernel, nan_policy, self.x.tobytes())

    def __repr__(self) -> str:
        x, _, kernel, points, bounds, weights, nan_policy = self._args
        if np.size(x) <= MOST_IN_REPR:
            options = {"kernel": (kernel, "gaussian"), "points": (points, 512), "bounds": (bounds, None),
                       "nan_policy": (nan_policy, "propagate")}
            given = "".join(f", {k}={v!r}" for k, (v, default) in options.items() if v is not default and v != default)
            of = "" if weights is None else f", weights={np.asarray(weights).tolist()}"
            return f"kde({np.asarray(x).tolist()}, bandwidth={self.bandwidth!r}{given}{of})"
        return (f"<KernelDensity of {np.size(x)} values, bandwidth {self.bandwidth:.6g}, "
                f"{kernel}, {len(self.x)} points>")


def kde(x: ArrayLike, *, bandwidth: float | Literal["silverman", "scott"] = "silverman",
        kernel: DensityKernel = "gaussian", points: int = 512,
        bounds: tuple[float, float] | None = None, weights: ArrayLike | None = None,
        nan_policy: NanPolicy = "propagate", progress: Progress = None) -> KernelDensity:
    """Kernel density.

    Parameters
    ----------
    x : array_like
        Data.
    bandwidth : float or {"silverman", "scott"}
        The kernel's standard deviation; silverman: 0.9 min(sd, IQR/1.34) n^(-1/5) (Silverman
        1986, Density Estimation), scott: 1.06 in place of 0.9.
    kernel : {"gaussian", "epanechnikov", "rectangular", "triangular", "biweight"}
        Each of standard deviation `bandwidth`.
    points : int
        Of the grid.
    bounds : pair of float, optional
        Of the grid; three bandwidths beyond the data where they are left out.
    weights : array_like, optional
        Frequencies.
    nan_policy : {"propagate", "omit", "raise"}
        What a missing value does.
    progress : callable or bool, optional
        Told the share done, 0 to 1, during long work; True shows a bar where tqdm is installed.

    Returns
    -------
    KernelDensity
        With `x`, `y`, `bandwidth`, a call for the density at any point, `cdf`, `sample`, `plot`.

    Examples
    --------
    >>> d = vx.kde([1, 2, 4], bandwidth=1)
    >>> round(d(2.0), 6)
    0.231635
    >>> d.x.shape, d.y.shape
    ((512,), (512,))
    """
    return KernelDensity(x, bandwidth, kernel, points, bounds, weights, nan_policy, progress=progress)
