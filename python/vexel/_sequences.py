"""Quasi-random points."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any

from . import _core
from ._random import Random

if TYPE_CHECKING:
    from typing import Self

    from ._types import Array, Doubles, Progress, Rng, Scramble


class _Sequence:
    """What the sequences have in common."""

    __slots__ = ("__weakref__", "_arguments", "_sequence", "_state")
    _make: Any
    _sequence: _core.PointSequence

    def __init__(self, d: int, scramble: Scramble, rng: Rng, start: int, *more: Any) -> None:
        if not (isinstance(scramble, bool) or isinstance(scramble, str) and scramble in ("none", "owen", "shift")):
            wrong = ValueError if isinstance(scramble, str) else TypeError
            raise wrong(f'scramble must be False, True, "owen" or "shift", got {_core.short_text(scramble)}')
        # Kept as it is before the keys are drawn: it makes the same sequence again.
        stream = rng if isinstance(rng, Random) else Random._of(_core.stream(rng))
        state = stream.to_bytes()
        self._sequence = type(self)._make(d, scramble, stream, start, *more)
        self._state = state if scramble else b""
        self._arguments = (d, scramble, start, *more)

    def points(self, n: int, *, out: Array | None = None, progress: Progress = None) -> Doubles:
        """The next n points.

        Parameters
        ----------
        n : int
            How many.
        out : ndarray of float64, optional
            Where to put them: of the shape (n, d), with any strides.
        progress : callable or bool, optional
            Told the share done, 0 to 1, during long work; True shows a bar where tqdm is installed.

        Returns
        -------
        ndarray of float64
            A point in each row: (n, d), in [0, 1).

        Examples
        --------
        >>> vx.Sobol(3).points(8).shape
        (8, 3)
        """
        return self._sequence.points(n, out, progress)

    def skip(self, n: int) -> Self:
        """Moves on by n points, in constant time.

        Parameters
        ----------
        n : int
            How many points to leave out; a negative number is refused.

        Returns
        -------
        Sobol, Halton or Faure
            The sequence itself.

        Examples
        --------
        >>> vx.Sobol(2).skip(2).points(1)
        array([[0.75, 0.25]])
        """
        self._sequence.skip(n)
        return self

    @property
    def index(self) -> int:
        """The index of the next point."""
        return self._sequence.index()

    @property
    def d(self) -> int:
        """The dimension."""
        return self._sequence.dimension()

    def reset(self) -> Self:
        """Goes back to the first point, that of index `start`.

        Returns
        -------
        Sobol, Halton or Faure
            The sequence itself.

        Examples
        --------
        >>> s = vx.Halton(2).fast_forward(5)
        >>> s.reset().index
        0
        """
        self._sequence.reset()
        return self

    # As engines of quasi-Monte-Carlo are used in SciPy.

    def random(self, n: int = 1) -> Doubles:
        """`points` by SciPy's name.

        Parameters
        ----------
        n : int
            How many.

        Returns
        -------
        ndarray of float64
            Of the shape (n, d).

        Examples
        --------
        >>> vx.Halton(2).random(3).shape
        (3, 2)
        """
        return self._sequence.points(n, None, None)

    def fast_forward(self, n: int) -> Self:
        """`skip` by SciPy's name.

        Parameters
        ----------
        n : int
            How many points to leave out.

        Returns
        -------
        Sobol, Halton or Faure
            The sequence itself.

        Examples
        --------
        >>> vx.Sobol(2).fast_forward(2).index
        2
        """
        self._sequence.skip(n)
        return self

    def __reduce__(self) -> Any:
        return _restored, (type(self), self._arguments, self._state, self.index)

    def __eq__(self, other: object) -> bool:
        return isinstance(other, _Sequence) and self.__reduce__() == other.__reduce__()

    __hash__ = None  # type: ignore[assignment]

    def __repr__(self) -> str:
        d, scramble, start, *more = self._arguments
        stream = Random.from_bytes(self._state) if scramble else None
        options = {"scramble": (scramble, False), "rng": (stream, None), "start": (start, 0),
                   "bits": (more[0] if more else 62, 62), "directions": (more[1] if more else None, None)}
        given = "".join(f", {k}={v!r}" for k, (v, default) in options.items() if v != default)
        made = f"{type(self).__name__}({d}{given})"
        if len(made) > 200 or "<" in made:
            return f"<{type(self).__name__}({d}) at index {self.index}>"
        return made if self.index == start else f"{made}.fast_forward({self.index - start})"


def _restored(kind: Any, arguments: tuple[Any, ...], state: bytes, index: int) -> Any:
    d, scramble, start, *more = arguments
    self = kind.__new__(kind)
    _Sequence.__init__(self, d, scramble, Random.from_bytes(state) if state else 0, start, *more)
    self.skip(index - start)
    return self


class Sobol(_Sequence):
    """Sobol's sequence.

    I. M. Sobol, On the distribution of points in a cube and the approximate evaluation of integrals
    (1967), in the Gray-code order of Antonov and Saleev (1979), with direction integers of our own
    that have Sobol's property A in all dimensions.

    Parameters
    ----------
    d : int
        Dimension, 1 to 1111.
    scramble : bool or str
        True or "owen": nested uniform scrambling (Owen 1995); "shift": one digital shift.  Every
        point is uniform then, and nets stay nets.
    rng : Random, int or None
        What the scrambling is drawn from.
    start : int
        The index of the first point; index 0 is the origin.  Leaving it out destroys the net.
    bits : int
        Of an index, 1 to 62: there are 2^bits points.
    directions : sequence, optional
        The caller's: for each dimension the degree of a primitive polynomial, its inner
        coefficients as a number, and its first direction integers.

    Examples
    --------
    >>> vx.Sobol(2).points(4)
    array([[0.  , 0.  ],
           [0.5 , 0.5 ],
           [0.75, 0.25],
           [0.25, 0.75]])
    """

    __slots__ = ()
    _make = staticmethod(_core.sobol)

    def __init__(self, d: int, *, scramble: Scramble = False, rng: Rng = None, start: int = 0,
                 bits: int = 62, directions: Any = None) -> None:
        super().__init__(d, scramble, rng, start, bits, directions)

    def random_base2(self, m: int) -> Doubles:
        """The next 2^m points, by SciPy's name.

        Parameters
        ----------
        m : int
            The logarithm of their number.

        Returns
        -------
        ndarray of float64
            Of the shape (2^m, d).

        Examples
        --------
        >>> vx.Sobol(2).random_base2(3).shape
        (8, 2)
        """
        return self.points(1 << m)


class Halton(_Sequence):
    """Halton's sequence (1960): coordinate j is the radical inverse of the index in the j-th prime.

    Parameters
    ----------
    d : int
        Dimension.  In many dimensions the plain sequence needs very many points: scramble it.
    scramble, rng, start
        As in `Sobol`.

    Examples
    --------
    >>> vx.Halton(2).points(3)
    array([[0.        , 0.        ],
           [0.5       , 0.33333333],
           [0.25      , 0.66666667]])
    """

    __slots__ = ()
    _make = staticmethod(_core.halton)

    def __init__(self, d: int, *, scramble: Scramble = False, rng: Rng = None,
                 start: int = 0) -> None:
        super().__init__(d, scramble, rng, start)


class Faure(_Sequence):
    """Faure's sequence (1982), in the smallest prime base not below the dimension.

    Parameters
    ----------
    d : int
        Dimension.
    scramble, rng, start
        As in `Sobol`.

    Examples
    --------
    >>> vx.Faure(2).points(3)
    array([[0.  , 0.  ],
           [0.5 , 0.5 ],
           [0.25, 0.75]])
    """

    __slots__ = ()
    _make = staticmethod(_core.faure)

    def __init__(self, d: int, *, scramble: Scramble = False, rng: Rng = None,
                 start: int = 0) -> None:
        super().__init__(d, scramble, rng, start)
