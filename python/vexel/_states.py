"""States: statistics of data that come in pieces or from many machines.

Sums are kept exactly: results have one rounding and the same bits for every split into pieces and
every order of merging.  States pickle; `to_bytes` and `from_bytes` keep them across versions.
"""

from __future__ import annotations

from typing import TYPE_CHECKING, Any

from . import _core

if TYPE_CHECKING:
    from typing import Self

    from ._types import ArrayLike, NanPolicy, Progress


class _State:
    """What states have in common; mixed into each before its class of the extension."""

    __slots__ = ()

    def update(self, x: ArrayLike, weights: ArrayLike | None = None, *,
               progress: Progress = None) -> Self:
        """Takes data in.

        Parameters
        ----------
        x : array_like
            Data, of any shape; of `Covariance` a matrix with a variable in each column.
        weights : array_like, optional
            Frequencies, of the shape of `x` (of its rows); 1 where they are left out.
        progress : callable or bool, optional
            Told the share done, 0 to 1, during long work; True shows a bar where tqdm is installed.

        Returns
        -------
        state
            The state itself.

        Raises
        ------
        ValueError
            For missing values under nan_policy="raise"; nothing is taken in then.

        Examples
        --------
        >>> vx.Sums().update([1, 2]).update([3], weights=[10]).sum
        33.0
        """
        self._update(x, weights, progress)  # type: ignore[attr-defined]
        return self

    def merge(self, other: Self) -> Self:
        """Takes in what another state has taken in.

        Parameters
        ----------
        other : state
            Of the same class, made with the same arguments; it stays as it is.

        Returns
        -------
        state
            The state itself.

        Examples
        --------
        >>> vx.Sums().update([1, 2]).merge(vx.Sums().update([3])).sum
        6.0
        """
        self._merge(other)  # type: ignore[attr-defined]
        return self

    def to_bytes(self) -> bytes:
        """Everything that the state holds, for files and other machines.

        Returns
        -------
        bytes
            What `from_bytes` reads, here, in C++ and in the language, of this version and later ones.

        Examples
        --------
        >>> s = vx.Extremes().update([3, 1])
        >>> vx.Extremes.from_bytes(s.to_bytes()) == s
        True
        """
        return super().to_bytes()  # type: ignore[misc,no-any-return]

    @classmethod
    def from_bytes(cls, data: bytes) -> Self:
        """The state that `to_bytes` wrote.

        Parameters
        ----------
        data : bytes
            What `to_bytes` of the same class gave.

        Returns
        -------
        state

        Raises
        ------
        ValueError
            For anything else.
        """
        self = cls._empty()
        self._assign(data)  # type: ignore[attr-defined]
        return self

    @classmethod
    def _empty(cls) -> Self:
        return cls()

    def __reduce__(self) -> Any:
        return _restored, (type(self), self.to_bytes())

    def __copy__(self) -> Self:
        return self.from_bytes(self.to_bytes())

    def __deepcopy__(self, memo: Any) -> Self:
        return self.__copy__()

    def __eq__(self, other: object) -> bool:
        return type(self) is type(other) and self.to_bytes() == other.to_bytes()

    __hash__ = None  # type: ignore[assignment]

    def __repr__(self) -> str:
        return f"<{type(self).__name__} of {self._extent()}>" if self._fed() else self._call()

    def _call(self) -> str:
        """The call that makes an empty state."""
        arguments, mine = self._arguments(), self.to_bytes()
        for policy in ("omit", "raise"):  # a state keeps its policy in its bytes alone
            if type(self)(**arguments, nan_policy=policy).to_bytes() == mine:  # type: ignore[call-arg]
                arguments["nan_policy"] = policy
                break
        return f"{type(self).__name__}({', '.join(f'{k}={v!r}' for k, v in arguments.items())})"

    def _arguments(self) -> dict[str, Any]:
        """Of the constructor, but for the policy."""
        return {}

    def _fed(self) -> bool:
        """Whether it has taken anything in, missing values too."""
        return bool(self.missing or self.count)  # type: ignore[attr-defined]

    def _extent(self) -> str:
        return f"{self.count} values"  # type: ignore[attr-defined]


def _restored(kind: Any, data: bytes) -> Any:
    return kind.from_bytes(data)


class Sums(_State, _core.Sums):
    """Sum, count, weight and mean.

    Parameters
    ----------
    nan_policy : {"propagate", "omit", "raise"}
        What missing values do: make the results NaN, be left out and counted, or be refused.

    Attributes
    ----------
    sum, weight, mean : float
        Σwx, Σw and their quotient; NaN over nothing, but for the sums.
    count, missing : int
        How many values came, and how many pairs were missing.

    Notes
    -----
    R. M. Neal, Fast exact summation using small and large superaccumulators (2015).

    Examples
    --------
    >>> s = vx.Sums().update([1e16, 1.0]).merge(vx.Sums().update([-1e16]))
    >>> s.sum, s.count
    (1.0, 3)
    >>> s, vx.Sums()
    (<Sums of 3 values>, Sums())
    """

    def __init__(self, *, nan_policy: NanPolicy = "propagate") -> None:
        _core.Sums.__init__(self, nan_policy)


class Moments(_State, _core.Moments):
    """Mean, variance, standard deviation, skewness, kurtosis and central moments.

    Parameters
    ----------
    order : int
        The highest moment that is asked for, 1 to 8: 2 for the variance, 4 for the kurtosis.
    nan_policy
        As in `Sums`.

    Attributes
    ----------
    mean, var, std, skewness, kurtosis : float
        As the functions of these names define them; ddof is 1.
    weight : float
        Σw.
    order, count, missing : int
        The highest moment, how many values came, and how many pairs were missing.

    Examples
    --------
    >>> m = vx.Moments().update([1, 2]).update([6])
    >>> m.mean, m.var, m.moment(2)
    (3.0, 7.0, 4.666666666666667)
    """

    def __init__(self, order: int = 4, *, nan_policy: NanPolicy = "propagate") -> None:
        _core.Moments.__init__(self, order, nan_policy)

    def moment(self, k: int) -> float:
        """The central moment Σw(x - mean)^k / Σw.

        Parameters
        ----------
        k : int
            0 to `order`.

        Returns
        -------
        float

        Examples
        --------
        >>> vx.Moments().update([1, 2, 6]).moment(3)
        6.0
        """
        return super().moment(k)

    def _arguments(self) -> dict[str, Any]:
        return {} if self.order == 4 else {"order": self.order}


class Covariance(_State, _core.Covariance):
    """Means, covariances and correlations of k variables.

    Parameters
    ----------
    k : int
        How many variables, 1 to 4096.
    nan_policy : {"propagate", "omit", "raise"}
        omit leaves out a row with something missing; propagate makes NaN what the variable takes
        part in.

    Attributes
    ----------
    mean : ndarray of float64
        Of the shape (k,).
    cov, corr : ndarray of float64
        Of the shape (k, k); ddof is 1.
    weight : float
        Σw.
    variables, count, missing : int
        k, how many rows came, and how many had something missing.

    Examples
    --------
    >>> c = vx.Covariance(2).update([[1, 1], [2, 2]]).update([[3, 6]])
    >>> c.cov
    array([[1. , 2.5],
           [2.5, 7. ]])
    """

    def __init__(self, k: int, *, nan_policy: NanPolicy = "propagate") -> None:
        _core.Covariance.__init__(self, k, nan_policy)

    def _arguments(self) -> dict[str, Any]:
        return {"k": self.variables}

    def _extent(self) -> str:
        return f"{self.count} rows of {self.variables}"

    @classmethod
    def _empty(cls) -> Self:
        return cls(1)


class Extremes(_State, _core.Extremes):
    """Smallest and largest value.

    Parameters
    ----------
    nan_policy
        As in `Sums`.

    Attributes
    ----------
    min, max : float
        NaN over nothing.
    count, missing : int
        How many values came, and how many pairs were missing.

    Examples
    --------
    >>> e = vx.Extremes().update([3, 1, 2])
    >>> e.min, e.max
    (1.0, 3.0)
    """

    def __init__(self, *, nan_policy: NanPolicy = "propagate") -> None:
        _core.Extremes.__init__(self, nan_policy)
