"""Counting data: distinct values and runs into tables, numbers into bins."""

import decimal
from math import isinf

from arrays import REAL_TYPES, Source, require_vector
from host import (INFINITY, NAN, Array, Equation, Name, Raised, Range, Sequence, Table, integer64,
                  main, real, same, to_json)
from samples import calls_of, random_boolean, random_integer, sample, vector

DIGITS = decimal.Context(prec=15, traps=[])  # of the host's addition


def weights_of(data, weights):
    require_vector(data, "invalid data sample, expected: one-dimensional ray, received %1")
    w = vector(weights)
    if w and len(w) != len(data.elements):
        raise Raised("vector of points and vector of weights are expected to have the same size, "
                     "received %1, %2", data, weights)
    return w


def tally(data, weights):
    """Counts, or sums of weights by the host's addition, of floats as they print."""
    w = weights_of(data, weights)
    sums = Table()
    for i, element in enumerate(data.elements):
        before = sums.get(element)
        weight = decimal.Decimal(repr(w[i])) if w else 1
        sums[element] = weight if before is None else DIGITS.add(before, weight)
    table = Table()
    for element, total in sums.entries.values():
        table[element] = float(total) if w else int(total)
    return table


def tally_sorted(data, weights):
    """Runs of one object; the last is left out."""
    w = weights_of(data, weights)
    table = Table()
    runs = []
    for i, element in enumerate(data.elements):
        if not runs or not same(to_json(runs[-1][0]), to_json(element)):
            runs.append([element, 0.0 if w else 0])
        runs[-1][1] += w[i] if w else 1
    for element, total in runs[:-1]:
        table[element] = total
    return table


def edges_of(bins, m):
    low, high = real(bins[0]), real(bins[1])
    if m < 1 or m > 1 and (isinf(low) or isinf(high)):
        raise Raised("unable to split the range %1", bins)
    return [low, *(k * ((high - low) / m) + low for k in range(1, m)), high]


def bin_of(edges, x):
    """The last bin holds the end of the range; None is no bin."""
    m = len(edges) - 1
    if x == edges[m]:
        return m - 1
    if not edges[0] <= x < edges[m]:
        return None
    low, count = 0, m
    while count > 1:
        half = count // 2
        if edges[low + half] <= x:
            low += half
            count -= half
        else:
            count = half
    return low


def frequencies(x, w, edges):
    counts = [0 if w is None else 0.0] * (len(edges) - 1)
    for i, v in enumerate(x):
        at = bin_of(edges, v)
        if at is not None:
            counts[at] += 1 if w is None else w[i]
    return counts


def bins_of(edges):
    return [Range(pair) for pair in zip(edges, edges[1:])]


def tally_into(data, weights, ignore, ranges, m):
    x, w = sample(data, weights, ignore)
    if not isinstance(ranges, list):
        raise Raised("expected 4th argument to be of type list(range), received: %1", ranges)
    m = integer64(m)
    if m >= 2**31 - 2 and ranges:
        raise Raised("not enough memory")
    every = []
    for bins in ranges:
        if not isinstance(bins, Range):
            raise Raised("invalid argument; expected a positive integer or a list of ranges, "
                         "received: %1", ranges)
        every.append(edges_of(bins, m))
    return [Equation(pair) for edges in every
            for pair in zip(bins_of(edges), frequencies(x, w, edges))]


def frequency_data(data, weights, ignore, bins, m):
    x, w = sample(data, weights, ignore)
    if not isinstance(bins, Range):
        raise Raised("expected 4th argument to be of type range, received: %1", bins)
    m = integer64(m)
    if m >= 2**31 - 2:
        raise Raised("not enough memory")
    edges = edges_of(bins, m)
    counts = frequencies(x, w, edges)
    sums = counts[:1]
    for count in counts[1:]:
        sums.append(sums[-1] + count)
    datatype = "integer[4]" if w is None else "float[8]"
    return [Array("anything", [(1, m)], bins_of(edges)), Array(datatype, [(1, m)], counts),
            Array(datatype, [(1, m)], sums)]


def calls(random):
    source = Source(random)

    def tally_arguments():
        data, weights = source.sample(wrong=0.3)
        if source.chance(0.3) and isinstance(data, Array):
            data.elements = [random.choice(data.elements) for _ in data.elements]
        return [data, weights]

    def tally_sorted_arguments():
        data, weights = source.sample(wrong=0.1)
        if source.chance(0.8) and isinstance(data, Array):
            data.elements.sort(key=lambda e: str(to_json(e)))
        return [data, weights]

    def bins():
        low = source.choice([0.0, 0, -3, 1.0, -2.5, Name("sqrt(2)"), 2.5, -1e308])
        high = source.choice([5, 4.0, 10, 3.7, Name("Pi"), 1e308, -3, 0.0, 2.5])
        if source.chance(0.1):
            high = source.choice([INFINITY, NAN, Name("x"), "text", 5e-324])
        if source.chance(0.1):
            low = source.choice([-INFINITY, NAN, Name("x"), None])
        return Range((low, high))

    def count():
        if source.chance(0.03):
            return source.choice([-2**63, 2**63 - 1, 2**31, -4])
        return random_integer(random, [1, 2, 3, 4, 5, 7, 10, 100, 0, -1])

    def binned(which):
        data = source.sample(wrong=source.choice([0.0] * 6 + [0.1]))
        return [*data, random_boolean(random), which, count()]

    def tally_into_arguments():
        ranges = [bins() for _ in range(source.choice([0, 1, 1, 2, 3]))]
        if source.chance(0.05):
            ranges = source.choice([bins(), Name("x"), ranges + [3], [[1]]])
        return binned(ranges)

    def frequency_arguments():
        return binned(source.choice([Name("x"), 3, [1, 2], None]) if source.chance(0.04)
                      else bins())

    count2, count5 = "expected 2 arguments, received: %1", "expected 5 arguments, received: %1"
    return calls_of(random, [
        ("STATS_VexelTally_HW", tally, tally_arguments, count2),
        ("VexelTallySorted", tally_sorted, tally_sorted_arguments, count2),
        ("STATS_VexelTallyInto_HW", tally_into, tally_into_arguments, count5),
        ("STATS_VexelFrequencyData_HW", frequency_data, frequency_arguments, count5)])


if __name__ == "__main__":
    main(calls)
