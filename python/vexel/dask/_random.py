"""Random and quasi-random numbers as Dask arrays, the same for every chunking."""

from __future__ import annotations

import operator
import pickle
from typing import Any

import dask.array as da
import numpy as np
from dask.base import tokenize

from .. import _sequences
from .._random import Random

block_size = 1 << 16  # values drawn from one block of the seed's stream: part of what a seed gives


def _chunks(n: int, chunks: Any) -> tuple[int, ...]:
    n = operator.index(n)
    if n < 0:
        raise ValueError(f"n must be at least 0, got {n}")
    return da.core.normalize_chunks((1 << 22,) if chunks is None else chunks, (n,), dtype=np.float64)[0]


def _drawn(distribution: Any, seed: int, start: int, size: int) -> Any:
    out = np.empty(size)
    at = 0
    while at < size:
        block, skip = divmod(start + at, block_size)
        n = min(block_size - skip, size - at)
        rng = Random(seed, block=block)
        if n == block_size:
            distribution.sample(rng=rng, out=out[at:at + n])
        else:
            out[at:at + n] = distribution.sample(block_size, rng)[skip:skip + n]
        at += n
    return out


def _starts(sizes: tuple[int, ...]) -> list[int]:
    return [0, *np.cumsum(sizes).tolist()[:-1]]


def sample(distribution: Any, n: int, chunks: Any = None, seed: int | None = None) -> Any:
    """Variates as a Dask array.

    Values 65536 b to 65536 (b + 1) - 1 are drawn from `Random(seed, block=b)`: the array is the
    same for every chunking, and a longer one begins with a shorter one.

    Parameters
    ----------
    distribution
        A distribution of vexel.
    n : int
        How many.
    chunks
        As of Dask arrays; 2^22 values where it is left out.  Multiples of 65536 draw nothing twice.
    seed : int, optional
        None: one from the operating system.
    """
    sizes = _chunks(n, chunks)
    seed = Random(seed).seed
    name = "vexel-sample-" + tokenize(repr(distribution), pickle.dumps(distribution), sizes, seed)
    graph = {(name, i): (_drawn, distribution, seed, start, size)
             for i, (start, size) in enumerate(zip(_starts(sizes), sizes))}
    return da.Array(graph, name, chunks=(sizes,), dtype=np.float64)


def _points(sequence: bytes, start: int, size: int) -> Any:
    own = pickle.loads(sequence)  # as `points` wrote it
    own.skip(start)
    return own.points(size)


class _Points:
    """A sequence whose points come as Dask arrays; the arguments are those of vexel's class."""

    _kind: Any

    def __init__(self, d: int, **arguments: Any) -> None:
        self._sequence = self._kind(d, **arguments)

    def points(self, n: int, chunks: Any = None) -> Any:
        """The next n points, n by d, in chunks of rows."""
        sizes = _chunks(n, chunks)
        sequence = pickle.dumps(self._sequence)
        d = self._sequence.d
        name = "vexel-points-" + tokenize(sequence, sizes)
        graph = {(name, i, 0): (_points, sequence, start, size)
                 for i, (start, size) in enumerate(zip(_starts(sizes), sizes))}
        self._sequence.skip(n)
        return da.Array(graph, name, chunks=(sizes, (d,)), dtype=np.float64)

    def skip(self, n: int) -> None:
        """Moves on by n points."""
        self._sequence.skip(n)

    @property
    def index(self) -> int:
        """The index of the next point."""
        return self._sequence.index


class Sobol(_Points):
    """Sobol's sequence; the arguments are those of `vexel.Sobol`."""

    _kind = _sequences.Sobol


class Halton(_Points):
    """Halton's sequence; the arguments are those of `vexel.Halton`."""

    _kind = _sequences.Halton


class Faure(_Points):
    """Faure's sequence; the arguments are those of `vexel.Faure`."""

    _kind = _sequences.Faure
