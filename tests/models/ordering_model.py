"""Sorting, ranking, ordering and shuffling arrays in their own element type."""

from math import isnan

from arrays import INTEGER_BITS, REAL_TYPES, TYPES, Source, extents, like, require_vector
from host import (INFINITY, NAN, Array, Name, RandomStream, Raised, Table, boolean, integer64, main,
                  real, same, to_json)
from samples import calls_of, random_boolean, random_integer


def object_keys(elements):
    """What host objects are compared by; one alone is not compared."""
    return [real(e) for e in elements] if len(elements) > 1 else [0.0] * len(elements)


def sorted_indices(data, ascending):
    """Indices in sorted order, equal elements in theirs; NaNs come after every number."""
    if data.datatype.startswith("complex"):
        raise Raised("unable to compare complex numbers", None)
    keys = object_keys(data.elements) if data.datatype == "anything" else data.elements
    return sorted(range(len(keys)), reverse=ascending != 1,
                  key=lambda i: (isnan(keys[i]), 0 if isnan(keys[i]) else keys[i]))


def sort(data, ascending, uniquify):
    require_vector(data)
    if data.storage != "rectangular":
        raise Raised("invalid storage type, expected: dense array, received %1", data)
    elements = [data.elements[i] for i in sorted_indices(data, boolean(ascending))]
    if boolean(uniquify):
        keys = object_keys(elements) if data.datatype == "anything" else elements
        elements = [e for i, e in enumerate(elements) if i == 0 or keys[i] != keys[i - 1]]
    return like(data, elements)


def rank_sort(data, wants_ranks, ascending):
    require_vector(data)
    indices = sorted_indices(data, boolean(ascending))
    if integer64(wants_ranks) != 0:
        ranks = [0] * len(indices)
        for rank, i in enumerate(indices):
            ranks[i] = rank + 1
        return Array("integer[4]", data.bounds, ranks)
    values = [data.elements[i] for i in indices]
    table = Table()
    rank = 1
    for i, value in enumerate(values):
        if i + 1 < len(values):
            if same_object(values[i + 1], value):
                continue
            if isinstance(value, Name):
                raise Raised("expected: numeric data, received: %1", value)
        table[value] = rank
        rank += 1
    return table


def same_object(a, b):
    return same(to_json(a), to_json(b))


def as_ranks(array):
    """The elements as 32-bit integers, as the host converts them."""
    ranks = []
    for e in array.elements:
        whole = type(e) is int or type(e) is float and e.is_integer()
        if not whole or not -2**31 <= e < 2**31:
            raise Raised("unable to store %1 in an array of %2", e, Name("integer[4]"))
        ranks.append(int(e))
    return ranks


def order(source, target, forward, unique, rank_array):
    if not isinstance(source, Array):
        raise Raised("expected rtables as the source, received: %1", source)
    if not isinstance(target, Array):
        raise Raised("expected rtables as the target, received: %1", target)
    if len(source.bounds) > 2:
        raise Raised("only 1- and 2- dimensional rtables can be ordered, received: %1", source)
    rows, columns = (*extents(source), 1)[:2]
    require_vector(rank_array, "invalid ranks data, expected: one-dimensional array, received %1")
    if len(rank_array.elements) != rows:
        raise Raised("data sample and ranks table are expected to have the same number of "
                     "rows/elements", None)
    ranks = as_ranks(rank_array)
    if source.datatype != target.datatype:
        raise Raised("the source and the target must have the same datatype", None)
    forward = boolean(forward)
    unique = boolean(unique)
    if unique and columns != 1:
        raise Raised("only one-dimensional rtabled can be uniquified", None)

    placed = {}
    # Rows without columns are moved by columns, of which there are none, unless both are by rows.
    if columns > 0 or source.order == target.order == "row":
        for i, rank in enumerate(ranks):
            if not 1 <= rank <= rows:
                raise Raised("invalid rank: %1", rank)
            position = rank if forward else rows + 1 - rank
            if position in placed and not unique:
                raise Raised("duplicate rank: %1", rank)
            placed[position] = source.elements[i * columns:(i + 1) * columns]
    if unique:
        rows = len(placed)
    lowers = [lower for lower, _ in target.bounds]
    if len(source.bounds) > len(lowers):
        raise Raised("array has no dimension %1", 2)
    return Array(source.datatype,
                 [(lo, lo + n - 1) for lo, n in zip(lowers, [rows, columns][:len(source.bounds)])],
                 [e for position in sorted(placed) for e in placed[position]],
                 target.order, target.storage)


def shuffle(data, stream):
    require_vector(data)
    if data.storage != "rectangular":
        raise Raised("an array of rectangular storage expected, received %1", data)
    x = list(data.elements)
    for i in range(len(x) - 1, 0, -1):
        bits = (i + 1).bit_length()
        j = i + 1
        while j > i:
            j = (stream.int32() % 2**32) >> (32 - bits)
        x[i], x[j] = x[j], x[i]
    return like(data, x)


def random_ranks(source, rows):
    """Ranks for so many rows, sometimes repeated, out of range, too many or no integers."""
    ranks = source.random.sample(range(1, rows + 1), rows)
    if source.chance(0.3):
        ranks = [source.randint(1, rows) for _ in ranks]
    if rows > 0 and source.chance(0.1):
        ranks[-1] = source.choice([0, -1, rows + 1, 100])
    if source.chance(0.03):
        ranks.append(1)
    datatype = source.choice(["integer[4]"] * 5 + REAL_TYPES)
    array = source.array(datatype, size=len(ranks))
    if datatype not in INTEGER_BITS:
        ranks = [float(r) if source.chance(0.5) or datatype != "anything" else r for r in ranks]
        if ranks and source.chance(0.1):
            ranks[0] = source.choice([1.5, NAN, INFINITY, 2.0**31])
    array.elements = [min(r, 127) for r in ranks] if datatype == "integer[1]" else ranks
    return array


def calls(random):
    source = Source(random)

    def data():
        datatype = source.choice(REAL_TYPES if source.chance(0.7) else TYPES)
        return source.data(datatype=datatype, size=0 if source.chance(0.05) else None,
                           wrong=source.choice([0.0, 0.0, 0.0, 0.1]),
                           storage="rectangular" if source.chance(0.8) else "sparse")

    def flag():
        return random_boolean(random)

    def sort_arguments():
        return [data(), flag(), flag()]

    def rank_sort_arguments():
        return [data(), random_integer(random, [0, 0, 1, 2, -1]), flag()]

    def order_arguments():
        dimensions = source.choice([1, 1, 2])
        size = source.randint(0, 4) if dimensions == 2 else None
        rows = source.array(size=size, dimensions=3 if source.chance(0.02) else dimensions)
        target = source.array(rows.datatype, size=source.randint(0, 2),
                              dimensions=dimensions if source.chance(0.9)
                              else source.choice([1, 2, 3]))
        ranks = random_ranks(source, extents(rows)[0])
        unique = flag() if dimensions == 1 or source.chance(0.1) else False
        arguments = [rows, target, flag(), unique, ranks]
        if source.chance(0.06):
            arguments[source.choice([0, 1, 4])] = source.choice([3, Name("x"), source.data()])
        return arguments

    def shuffle_arguments():
        return [source.data(storage="rectangular" if source.chance(0.95) else None)]

    stream = RandomStream()
    return calls_of(random, [
        ("STATS_VexelSort_HW", sort, sort_arguments, "expected 3 arguments, received: %1"),
        ("STATS_VexelRankSort_HW", rank_sort, rank_sort_arguments,
         "expected 3 arguments, received: %1"),
        ("STATS_VexelOrder_HW", order, order_arguments, "expected 4 arguments, received: %1"),
        ("STATS_VexelShuffle_HW", lambda data: shuffle(data, stream), shuffle_arguments,
         "VexelShuffle expects 1 argument, received: %1")])


if __name__ == "__main__":
    main(calls)
