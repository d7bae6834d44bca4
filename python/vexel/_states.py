"""States: statistics of data that come in pieces or from many machines.

Sums are kept exactly: results have one rounding and the same bits for every split into pieces and
every order of merging.  States pickle; `to_bytes` and `from_bytes` keep them across versions.
"""

from __future__ import annotations

from typing import TYPE_CHECKING, Any

from . import _core

if TYPE_CHECKING:
    import sys

    from ._types import ArrayLike, Doubles, NanPolicy, Progress, QuantileMethod

    if sys.version_info >= (3, 11):
        from typing import Self


class _State:
    """What states have in common; mixed into each before its class of the extension."""

    __slots__ = ()

    def update(self, x: ArrayLike, weights: ArrayLike | None = None, *,
               progress: Progress = None) -> Self:
        """Takes data in; returns the state.  `progress` is told the share done, as in `mean`."""
        self._update(x, weights, progress)  # type: ignore[attr-defined]
        return self

    def merge(self, other: Self) -> Self:
        """Takes in what another state of the kind has taken in; returns the state."""
        self._merge(other)  # type: ignore[attr-defined]
        return self

    @classmethod
    def from_bytes(cls, data: bytes) -> Self:
        """The state that `to_bytes` wrote; ValueError for anything else."""
        self = cls._empty()
        self._assign(data)  # type: ignore[attr-defined]
        return self

    @classmethod
    def _empty(cls) -> Self:
        return cls()

    def __reduce__(self) -> Any:
        return _restored, (type(self), self.to_bytes())  # type: ignore[attr-defined]

    def __copy__(self) -> Self:
        return self.from_bytes(self.to_bytes())  # type: ignore[attr-defined]

    def __deepcopy__(self, memo: Any) -> Self:
        return self.__copy__()

    def __eq__(self, other: object) -> bool:
        return type(self) is type(other) and self.to_bytes() == other.to_bytes()  # type: ignore[attr-defined]

    __hash__ = None  # type: ignore[assignment]

    def __repr__(self) -> str:
        return f"<{type(self).__name__} of {self._extent()}>"

    def _extent(self) -> str:
        return f"{self.count} values"  # type: ignore[attr-defined]


def _restored(kind: Any, data: bytes) -> Any:
    return kind.from_bytes(data)


class Sums(_State, _core.Sums):
    """Sum, count, weight and mean.

    Examples
    --------
    >>> s = vx.Sums().update([1e16, 1.0]).merge(vx.Sums().update([-1e16]))
    >>> s.sum, s.count
    (1.0, 3)
    """

    def __init__(self, *, nan_policy: NanPolicy = "propagate") -> None:
        _core.Sums.__init__(self, nan_policy)


class Moments(_State, _core.Moments):
    """Mean, variance, standard deviation (ddof 1), skewness, kurtosis and central moments.

    Parameters
    ----------
    order : int
        The highest moment that `moment(k)` is asked for, 1 to 8.

    Examples
    --------
    >>> m = vx.Moments().update([1, 2]).update([6])
    >>> m.mean, m.var, m.moment(2)
    (3.0, 7.0, 4.666666666666667)
    """

    def __init__(self, order: int = 4, *, nan_policy: NanPolicy = "propagate") -> None:
        _core.Moments.__init__(self, order, nan_policy)


class Covariance(_State, _core.Covariance):
    """Means and covariances (ddof 1) of k variables.

    Examples
    --------
    >>> c = vx.Covariance(2).update([[1, 1], [2, 2]]).update([[3, 6]])
    >>> c.cov
    array([[1. , 2.5],
           [2.5, 7. ]])
    """

    def __init__(self, k: int, *, nan_policy: NanPolicy = "propagate") -> None:
        _core.Covariance.__init__(self, k, nan_policy)

    @classmethod
    def _empty(cls) -> Self:
        return cls(1)


class Extremes(_State, _core.Extremes):
    """Smallest and largest value.

    Examples
    --------
    >>> e = vx.Extremes().update([3, 1, 2])
    >>> e.min, e.max
    (1.0, 3.0)
    """

    def __init__(self, *, nan_policy: NanPolicy = "propagate") -> None:
        _core.Extremes.__init__(self, nan_policy)


class Tally(_State, _core.Tally):
    """Distinct values, ascending, and their counts or weights.

    Examples
    --------
    >>> t = vx.Tally().update([3, 1]).update([3])
    >>> t.values, t.counts
    (array([1., 3.]), array([1., 2.]))
    """

    def __init__(self, *, nan_policy: NanPolicy = "propagate") -> None:
        _core.Tally.__init__(self, nan_policy)

    def _extent(self) -> str:
        return f"{len(self.values)} distinct values, weight {self.counts.sum():.6g}"


class Histogram(_State, _core.Histogram):
    """Counts between edges; bin i is [edges[i], edges[i+1]), the last one closed.

    Examples
    --------
    >>> vx.Histogram([0, 1, 2]).update([0.5, 1, 2]).counts
    array([1., 2.])
    """

    def __init__(self, edges: ArrayLike, *, nan_policy: NanPolicy = "propagate") -> None:
        _core.Histogram.__init__(self, edges, nan_policy)

    def _extent(self) -> str:
        return f"{len(self.counts)} bins, weight {self.counts.sum():.6g}"

    @classmethod
    def _empty(cls) -> Self:
        return cls([0, 1])


class DensityGrid(_State, _core.DensityGrid):
    """Kernel densities on a grid.

    Parameters
    ----------
    bounds : pair of float
        Ends of the grid; data beyond count in the total only.
    points : int
        Equally spaced; make their step a small part of the bandwidths to come.

    Examples
    --------
    >>> g = vx.DensityGrid((-5, 5), 1001).update([0, 1])
    >>> g.density(1.0, "gaussian").shape, float(g.x[0])
    ((1001,), -5.0)
    """

    def __init__(self, bounds: tuple[float, float], points: int, *,
                 nan_policy: NanPolicy = "propagate") -> None:
        _core.DensityGrid.__init__(self, bounds, points, nan_policy)

    def density(self, bandwidth: float, kernel: str = "gaussian") -> Doubles:
        """The density at `x`, by the kernels of `kde`."""
        return self._density(bandwidth, kernel)

    def _extent(self) -> str:
        return f"{len(self.x)} points, weight {self.weight:.6g}"

    @classmethod
    def _empty(cls) -> Self:
        return cls((0, 1), 2)


class Ranks(_State, _core.Ranks):
    """Exact quantiles in at most four passes over the data.

    Parameters
    ----------
    q : array_like
        Probabilities, up to 250.
    method : str
        As in `quantile`.

    Examples
    --------
    >>> r = vx.Ranks([0.25, 0.5])
    >>> while not r.done:
    ...     r = r.update([1, 2]).update([3, 4]).next_pass()
    >>> r.result
    array([1.75, 2.5 ])
    """

    def __init__(self, q: ArrayLike, method: QuantileMethod = "linear", *,
                 nan_policy: NanPolicy = "propagate") -> None:
        _core.Ranks.__init__(self, q, method, nan_policy)

    def next_pass(self) -> Self:
        """Ends a pass over all data; returns the state."""
        self._next_pass()
        return self

    def _extent(self) -> str:
        return f"weight {self.weight:.6g}, {'done' if self.done else f'in pass {self.number}'}"

    @classmethod
    def _empty(cls) -> Self:
        return cls([0.5])
