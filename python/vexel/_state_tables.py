"""States that grow with the data's values, or have a size of their own."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any

from . import _core
from ._states import _State

if TYPE_CHECKING:
    from typing import Self

    from ._types import ArrayLike, DensityKernel, Doubles, NanPolicy, QuantileMethod


class Tally(_State, _core.Tally):
    """Distinct values and their counts or weights.

    Parameters
    ----------
    nan_policy : {"propagate", "omit", "raise"}
        Missing pairs are left out and counted; raise refuses them.

    Attributes
    ----------
    values, counts : ndarray of float64
        The distinct values, ascending, and how often each came, or its weight.
    missing : int
        How many pairs were left out.

    Examples
    --------
    >>> t = vx.Tally().update([3, 1]).update([3])
    >>> t.values, t.counts
    (array([1., 3.]), array([1., 2.]))
    """

    def __init__(self, *, nan_policy: NanPolicy = "propagate") -> None:
        _core.Tally.__init__(self, nan_policy)

    def _fed(self) -> bool:
        return bool(self.missing or len(self.counts))

    def _extent(self) -> str:
        return f"{len(self.values)} distinct values, weight {self.counts.sum():.6g}"


class Histogram(_State, _core.Histogram):
    """Counts between edges.

    Parameters
    ----------
    edges : array_like
        Ascending; bin i is [edges[i], edges[i+1]), the last one closed.
    nan_policy : {"propagate", "omit", "raise"}
        Missing pairs are left out and counted; raise refuses them.

    Attributes
    ----------
    counts, edges : ndarray of float64
        Of k and k + 1 elements.
    missing : int
        How many pairs were left out.

    Examples
    --------
    >>> vx.Histogram([0, 1, 2]).update([0.5, 1, 2]).counts
    array([1., 2.])
    """

    def __init__(self, edges: ArrayLike, *, nan_policy: NanPolicy = "propagate") -> None:
        _core.Histogram.__init__(self, edges, nan_policy)

    def _fed(self) -> bool:
        return bool(self.missing or self.counts.any())

    def _arguments(self) -> dict[str, Any]:
        return {"edges": self.edges.tolist()}

    def _extent(self) -> str:
        return f"{len(self.counts)} bins, weight {self.counts.sum():.6g}"

    @classmethod
    def _empty(cls) -> Self:
        return cls([0, 1])


class DensityGrid(_State, _core.DensityGrid):
    """Kernel densities on a grid, whose bandwidth is chosen last.

    Each value is shared out between its neighbours on the grid.

    Parameters
    ----------
    bounds : pair of float
        Ends of the grid; data beyond count in the total only.
    points : int
        Equally spaced, 2 to 2^24; make their step a small part of the bandwidths to come.
    nan_policy : {"propagate", "omit", "raise"}
        Missing pairs are left out and counted; a density with any is NaN, omit excepted; raise
        refuses them.

    Attributes
    ----------
    x : ndarray of float64
        The points.
    weight : float
        Σw.
    missing : int
        How many pairs were left out.

    Examples
    --------
    >>> g = vx.DensityGrid((-5, 5), 1001).update([0, 1])
    >>> g.density(1.0, "gaussian").shape, float(g.x[0])
    ((1001,), -5.0)
    """

    def __init__(self, bounds: tuple[float, float], points: int, *,
                 nan_policy: NanPolicy = "propagate") -> None:
        _core.DensityGrid.__init__(self, bounds, points, nan_policy)

    def density(self, bandwidth: float, kernel: DensityKernel = "gaussian") -> Doubles:
        """The density at the points `x`.

        It is that of the direct sum to within (step/bandwidth)²/8 of a kernel's curvature.

        Parameters
        ----------
        bandwidth : float
            The kernel's standard deviation.
        kernel : str
            One of those of `kde`.

        Returns
        -------
        ndarray of float64
            Of the shape of `x`.

        Examples
        --------
        >>> g = vx.DensityGrid((-5, 5), 1001).update([0])
        >>> g.density(1.0)[500:502]
        array([0.39894228, 0.39892233])
        """
        return self._density(bandwidth, kernel)

    def _fed(self) -> bool:
        return bool(self.missing or self.weight)

    def _arguments(self) -> dict[str, Any]:
        return {"bounds": (float(self.x[0]), float(self.x[-1])), "points": len(self.x)}

    def _extent(self) -> str:
        return f"{len(self.x)} points, weight {self.weight:.6g}"

    @classmethod
    def _empty(cls) -> Self:
        return cls((0, 1), 2)


class Ranks(_State, _core.Ranks):
    """Exact quantiles in at most four passes over the data.

    Each pass settles some bits of every order statistic that is asked for, so memory does not grow
    with the data.

    Parameters
    ----------
    q : array_like
        Probabilities, up to 250.
    method : str
        One of those of `quantile`.
    nan_policy
        As in `Sums`.

    Attributes
    ----------
    done : bool
        Whether no more passes are needed.
    result : ndarray of float64
        The quantiles, those of `quantile` to the last bit; ValueError before the last pass.
    q : ndarray of float64
        The probabilities.
    method : str
        The definition.
    number : int
        Of the pass, from 1.
    weight : float
        Σw.
    missing : int
        How many pairs were missing.

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
        """Ends a pass over all data.

        Returns
        -------
        Ranks
            The state itself.

        Examples
        --------
        >>> vx.Ranks([0.5]).update([1, 2, 3]).next_pass().number
        2
        """
        self._next_pass()
        return self

    def _fed(self) -> bool:
        return bool(self.missing or self.weight or self.number > 1)

    def _arguments(self) -> dict[str, Any]:
        return {"q": self.q.tolist(), **({} if self.method == "linear" else {"method": self.method})}

    def _extent(self) -> str:
        return f"weight {self.weight:.6g}, {'done' if self.done else f'in pass {self.number}'}"

    @classmethod
    def _empty(cls) -> Self:
        return cls([0.5])
