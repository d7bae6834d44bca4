"""The generator of random numbers."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any, overload

from . import _core
from ._sampling import choice, permutation, shuffle

if TYPE_CHECKING:
    from ._bit_generator import BitGenerator
    from ._types import Array, ArrayLike, Doubles, Progress, Shape, Size


class Random(_core.Random):
    """A generator of random numbers.

    Eight interleaved lanes of xoshiro256++ (Blackman and Vigna 2021, Scrambled linear pseudorandom
    number generators).  One value or many, into an array or not: the same draws.  What a seed gives
    stays the same within a major version, here, in C++ and in the language.  One thread at a time
    uses a Random.

    Parameters
    ----------
    seed : int, optional
        0 to 2^64 - 1; None: one from the operating system, which `seed` tells.
    block : int
        Blocks of one seed never meet: one for each process or thread.

    Attributes
    ----------
    seed, block : int
        What it was made from.
    state : dict
        Everything that decides the draws to come; may be assigned.

    Notes
    -----
    A repr reads back while nothing has been drawn; in mid-stream `pickle`, `to_bytes` and `state` keep
    the place.

    Examples
    --------
    >>> rng = vx.Random(42)
    >>> rng.uniform(2)
    array([0.81430515, 0.75279169])
    >>> rng.integers(10), rng.integers(10, 20, 3).dtype
    (7, dtype('int64'))
    >>> rng, vx.Random(42, block=3)
    (<Random(42) after draws>, Random(42, block=3))
    """

    def __init__(self, seed: int | None = None, block: int = 0) -> None:
        super().__init__(seed, block)

    @overload
    def uniform(self, n: None = None, *, progress: Progress = None) -> float: ...
    @overload
    def uniform(self, n: Size = None, *, out: Array, progress: Progress = None) -> Array: ...
    @overload
    def uniform(self, n: Shape, *, progress: Progress = None) -> Doubles: ...
    def uniform(self, n: Size = None, *, out: Array | None = None, progress: Progress = None) -> float | Array:
        """Uniform variates on the open interval (0, 1).

        Parameters
        ----------
        n : int or tuple of int, optional
            How many, or the shape; None: one number.
        out : ndarray of float64, optional
            Where to put them; `n` may be left out.
        progress : callable or bool, optional
            Told the share done, 0 to 1, during long work; True shows a bar where tqdm is installed.

        Returns
        -------
        float or ndarray

        Examples
        --------
        >>> vx.Random(42).uniform((1, 2))
        array([[0.81430515, 0.75279169]])
        """
        return super().uniform(n, out, progress)  # type: ignore[no-any-return]

    @overload
    def normal(self, n: None = None, *, progress: Progress = None) -> float: ...
    @overload
    def normal(self, n: Size = None, *, out: Array, progress: Progress = None) -> Array: ...
    @overload
    def normal(self, n: Shape, *, progress: Progress = None) -> Doubles: ...
    def normal(self, n: Size = None, *, out: Array | None = None, progress: Progress = None) -> float | Array:
        """Standard normal variates.

        Parameters
        ----------
        n, out, progress
            As in `uniform`.

        Returns
        -------
        float or ndarray

        Examples
        --------
        >>> vx.Random(1).normal(3).shape
        (3,)
        """
        return super().normal(n, out, progress)  # type: ignore[no-any-return]

    @overload
    def exponential(self, n: None = None, *, progress: Progress = None) -> float: ...
    @overload
    def exponential(self, n: Size = None, *, out: Array, progress: Progress = None) -> Array: ...
    @overload
    def exponential(self, n: Shape, *, progress: Progress = None) -> Doubles: ...
    def exponential(self, n: Size = None, *, out: Array | None = None, progress: Progress = None) -> float | Array:
        """Exponential variates of mean 1.

        Parameters
        ----------
        n, out, progress
            As in `uniform`.

        Returns
        -------
        float or ndarray

        Examples
        --------
        >>> vx.Random(1).exponential() > 0
        True
        """
        return super().exponential(n, out, progress)  # type: ignore[no-any-return]

    @overload
    def integers(self, low: int, high: int | None = None, n: None = None, *, progress: Progress = None) -> int: ...
    @overload
    def integers(self, low: int, high: int | None = None, n: Size = None, *, out: Array,
                 progress: Progress = None) -> Array: ...
    @overload
    def integers(self, low: int, high: int | None = None, *, n: Shape, progress: Progress = None) -> Array: ...
    @overload
    def integers(self, low: int, high: int | None, n: Shape, *, progress: Progress = None) -> Array: ...
    def integers(self, low: int, high: int | None = None, n: Size = None, *,
                 out: Array | None = None, progress: Progress = None) -> int | Array:
        """Whole numbers, each equally likely.

        Parameters
        ----------
        low : int
            The smallest; without `high` it is 0, and `low` the bound above.
        high : int, optional
            The bound above, itself left out.
        n, progress
            As in `uniform`.
        out : ndarray of int64, optional
            Where to put them; C-contiguous.

        Returns
        -------
        int or ndarray of int64

        Examples
        --------
        >>> die = vx.Random(1).integers(1, 7, 1000)
        >>> int(die.min()), int(die.max())
        (1, 6)
        """
        return super().integers(low, high, n, out, progress)  # type: ignore[no-any-return]

    @overload
    def bits(self, n: None = None) -> int: ...
    @overload
    def bits(self, n: Shape) -> Array: ...
    def bits(self, n: Size = None) -> int | Array:
        """Raw words of 64 random bits.

        Parameters
        ----------
        n : int or tuple of int, optional
            As in `uniform`.

        Returns
        -------
        int or ndarray of uint64

        Examples
        --------
        >>> vx.Random(1).bits(2).dtype
        dtype('uint64')
        """
        return super().bits(n)  # type: ignore[no-any-return]

    def jump(self) -> None:
        """Goes to the start of the next block of the same seed.

        Examples
        --------
        >>> rng = vx.Random(1)
        >>> rng.jump()
        >>> rng == vx.Random(1, block=1)
        True
        """
        super().jump()

    def choice(self, x: ArrayLike, n: Size = None, *, weights: ArrayLike | None = None,
               replace: bool = True, progress: Progress = None) -> Any:
        """The function `choice` with this stream.

        Parameters
        ----------
        x, n, weights, replace, progress
            As in `vexel.choice`.

        Returns
        -------
        element or ndarray

        Examples
        --------
        >>> vx.Random(1).choice(["a", "b"], 3).shape
        (3,)
        """
        return choice(x, n, weights=weights, replace=replace, rng=self, progress=progress)

    def permutation(self, n: int | ArrayLike, *, progress: Progress = None) -> Array:
        """The function `permutation` with this stream.

        Parameters
        ----------
        n, progress
            As in `vexel.permutation`.

        Returns
        -------
        ndarray

        Examples
        --------
        >>> sorted(vx.Random(1).permutation(3).tolist())
        [0, 1, 2]
        """
        return permutation(n, rng=self, progress=progress)

    def shuffle(self, x: Any) -> None:
        """The function `shuffle` with this stream.

        Parameters
        ----------
        x : list or ndarray
            What to put in random order, in place.

        Examples
        --------
        >>> x = [1, 2, 3]
        >>> vx.Random(1).shuffle(x)
        >>> sorted(x)
        [1, 2, 3]
        """
        shuffle(x, rng=self)

    @property
    def bit_generator(self) -> BitGenerator:
        """This stream for NumPy's generators, which draw on from where it is.

        Examples
        --------
        >>> 0 <= np.random.Generator(vx.Random(1).bit_generator).beta(2, 3) <= 1
        True
        """
        from ._bit_generator import BitGenerator

        return BitGenerator(self)

    def copy(self) -> Random:
        """A generator of the same draws to come.

        Returns
        -------
        Random

        Examples
        --------
        >>> rng = vx.Random(1)
        >>> rng.copy().uniform() == rng.uniform()
        True
        """
        return Random._of(self)

    __copy__ = copy

    def __deepcopy__(self, memo: Any) -> Random:
        return self.copy()

    def to_bytes(self) -> bytes:
        """The whole state, for files and other processes.

        Returns
        -------
        bytes
            What `from_bytes` reads, here, in C++ and in the language.

        Examples
        --------
        >>> rng = vx.Random(1)
        >>> vx.Random.from_bytes(rng.to_bytes()) == rng
        True
        """
        return super().to_bytes()

    @classmethod
    def _of(cls, other: Any) -> Random:
        self = cls(0)
        self._assign(other)
        return self

    @classmethod
    def from_bytes(cls, data: bytes) -> Random:
        """The generator that `to_bytes` wrote.

        Parameters
        ----------
        data : bytes
            What `to_bytes` gave.

        Returns
        -------
        Random

        Raises
        ------
        ValueError
            For anything else.
        """
        return cls._of(_core.Random.from_bytes(data))

    def __reduce__(self) -> Any:
        return _restored, (self.to_bytes(),)

    def __repr__(self) -> str:
        at = f", block={self.block}" if self.block else ""
        made = f"Random({self.seed}{at})"
        return made if self == Random(self.seed, self.block) else f"<{made} after draws>"

    __hash__ = None  # type: ignore[assignment]


def _restored(data: bytes) -> Random:
    return Random.from_bytes(data)
