"""Quantiles, order statistics, medians and their deviations."""

import math
from fractions import Fraction

import host
from host import (NAN, Array, Name, Raised, boolean, call, integer64, real, to_text,
                  vector as array_of)
from kernels import in_order, select, sort, total
from samples import (calls_of, is_numeric, random_boolean, random_data, random_floats,
                     random_integer, random_size, random_weights, sample, vector)

# Parameters a, b, c, d: the position of a probability p is a + (n + b) p; the share of the next
# value c + d times the position's fraction.
TYPES = {2: (0.5, 0, 0, 0), 3: (0, 0, 0, 1), 4: (0.5, 0, 0, 1), 5: (0, 1, 0, 1), 6: (1, -1, 0, 1),
         7: (1 / 3, 1 / 3, 0, 1), 8: (0.375, 0.25, 0, 1)}
FIRST_TYPE = (0, 0, 1, 0)


def plain_quantile(ordered, p, kind):
    a, b, c, d = TYPES.get(kind, FIRST_TYPE)
    n = len(ordered)
    h = (n + b) * p + a
    low, high = max(math.floor(h) - 1, 0), max(math.ceil(h) - 1, 0)
    low = min(low, n - 1)
    value = ordered[low]
    if low != high and low < n - 1:
        value += (ordered[low + 1] - value) * ((h - math.floor(h)) * d + c)
    return value


def weighted_quantile(x, w, whole, p, kind):
    """Of points in order with their weights, which sum to whole."""
    a, b, c, d = TYPES.get(kind, FIRST_TYPE)
    h = (whole + b) * p + a
    beyond, cumulative = 0, w[0]
    while not cumulative > h:
        beyond += 1
        if beyond == len(w):
            break
        cumulative += w[beyond]
    low = max(beyond - 1, 0)
    lower, upper = x[low], x[min(low + 1, len(x) - 1)]
    fraction = h - math.floor(h) if math.isfinite(h) else NAN
    return lower + (upper - lower) * (fraction * d + c)


def quantiles_of(x, w, probabilities, kind):
    """Sorts points and weights together."""
    if not x:
        return [NAN] * len(probabilities)
    if w is None:
        ordered = in_order(x)
        return [plain_quantile(ordered, p, kind) for p in probabilities]
    whole = total(w)
    sort(x, w)
    return [weighted_quantile(x, w, whole, p, kind) for p in probabilities]


def median_of(x, w):
    """Reorders its arguments."""
    n = len(x)
    if n == 0:
        return NAN
    if w is not None:
        return quantiles_of(x, w, [0.5], 1)[0]
    if n % 2 == 1:
        return select(x, 0, n, n // 2)
    above = select(x, 0, n, n // 2)
    below = select(x, 0, n // 2, n // 2 - 1)
    return (below + above) * 0.5


def quantile(data, given, weights, ignore, kind, inplace):
    sample(data, weights)
    listed = isinstance(given, list)
    probabilities = given if listed else [given]
    if not all(is_numeric(p) and 0 <= real(p) <= 1 for p in probabilities):
        raise Raised("expected: list of numeric constants between 0 and 1, received %1" if listed
                     else "expected: numeric constant or a list of numeric constants between 0 and "
                     "1, received %1", given)
    x, w = sample(data, weights, ignore)
    values = quantiles_of(x, w, [real(p) for p in probabilities], integer64(kind))
    boolean(inplace)
    return values if listed else values[0]


def order_statistic(data, given, weights, ignore):
    x = vector(data)
    listed = isinstance(given, list)
    ranks = given if listed else [given]
    if not all(type(r) is int and -2**63 <= r < 2**63 for r in ranks):
        raise Raised("expected: integer or list of integers, received %1", given)
    ordered = in_order(x)
    if boolean(ignore):
        ordered = [v for v in ordered if v == v]
    values = []
    for rank in ranks:
        if ordered and not 1 <= rank <= len(ordered):
            raise Raised("index out of range: %1", rank)
        values.append(ordered[rank - 1] if ordered else NAN)
    return values if listed else values[0]


def median(data, weights, ignore, inplace):
    x, w = sample(data, weights, ignore)
    boolean(inplace)
    return median_of(x, w)


def median_deviation(data, weights, ignore):
    x, w = sample(data, weights, ignore)
    centre = median_of(x, w)
    return median_of([abs(v - centre) for v in x], w)


KINDS = ("ties", "plain", "positive", "missing", "infinite", "large")


def median_in_place(random):
    """A call that may reorder its arrays, and how it leaves them."""
    n = random_size(random)
    x = random_floats(random, n, KINDS + ("zeros",))
    w = [float(random.randint(0, 3)) for _ in x] if random.random() < 0.6 else []
    given = f"d := {to_text(array_of(x))}: w := {to_text(array_of(w))}: "
    kind, p = random.randint(1, 8), random.random()
    names = Name("d"), Name("w")
    if w and random.random() < 0.5:
        text = call("STATS_VexelQuantile_HW", names[0], p, names[1], False, kind, True)
        value = quantiles_of(x, w, [p], kind)[0]
    else:
        text = call("STATS_VexelMedian_HW", *names, False, True)
        value = median_of(x, w or None)
    return f"{given}[{text}, d, w]", [value, array_of(x), array_of(w)]


def repeated_selection(x, probabilities, kind):
    """Quantiles by one selection after the other, each above the place of the one before."""
    values, first, n = [], 0, len(x)
    a, b, c, d = TYPES.get(kind, FIRST_TYPE)
    for p in probabilities if n else []:
        h = (n + b) * p + a
        low, high = max(math.floor(h) - 1, 0), max(math.ceil(h) - 1, 0)
        low = min(low, n - 1)
        first = 0 if low < first else first
        value = select(x, first, n - first, low - first)
        first = low
        if low != high and low < n - 1:
            above = select(x, low + 1, n - low - 1, 0)
            value += (above - value) * ((h - math.floor(h)) * d + c)
        values.append(value)
    return values or [NAN] * len(probabilities)


def quantile_in_place(random):
    """Several probabilities, and how they leave the points."""
    x = random_floats(random, random_size(random), KINDS + ("zeros",))
    probabilities = [random.random() for _ in range(random.randint(0, 6))]
    kind = random.randint(1, 8)
    text = call("STATS_VexelQuantile_HW", Name("d"), probabilities, array_of([]), False, kind, True)
    given = f"d := {to_text(array_of(x))}: "
    return f"{given}[{text}, d]", [repeated_selection(x, probabilities, kind), array_of(x)]


def calls(random):
    def data_and_weights(kinds=KINDS):
        n = random_size(random)
        return random_data(random, random_floats(random, n, kinds)), random_weights(random, n)

    def flag():
        return random_boolean(random)

    def inplace():
        """Without ignore a true one may reorder the data; that is another kind of call."""
        return random.choice([False, False, 0, None])

    def probability(n):
        if random.random() < 0.02:
            return random.choice([-0.1, 1.0001, 2, NAN, Name("z"), Name("Pi"), "a", True, None,
                                  Fraction(-1, 3), [0.5]])
        return random.choice([0, 1, 0.5, 0.25, Fraction(1, 3), random.random(),
                              random.randint(0, n) / max(n, 1)])

    def rank(n):
        if random.random() < 0.03:
            return random.choice([0, n + 1, -1, 2**62, 2**63, 1.0, Name("z"), "a", None, [1]])
        return random.randint(1, max(n, 1))

    def one_or_more(of, data):
        n = len(data.elements) if isinstance(data, Array) else 3
        return of(n) if random.random() < 0.4 else [of(n) for _ in range(random.randint(0, 6))]

    def quantile_arguments():
        data, weights = data_and_weights()
        ignore = flag()
        return [data, one_or_more(probability, data), weights, ignore,
                random_integer(random, range(-1, 10)), True if ignore is True else inplace()]

    def order_arguments():
        data, weights = data_and_weights()
        return [data, one_or_more(rank, data), random.choice([weights, None, Name("z")]), flag()]

    def median_arguments():
        ignore = flag()
        return [*data_and_weights(KINDS + ("zeros",)), ignore,
                True if ignore is True else inplace()]

    def deviation_arguments():
        return [*data_and_weights(KINDS + ("zeros",)), flag()]

    ordinary = calls_of(random, [
        ("STATS_VexelQuantile_HW", quantile, quantile_arguments,
         "expected 6 arguments, received: %1"),
        ("STATS_VexelOrderStatistic_HW", order_statistic, order_arguments,
         "VexelOrderStatistic expects 4 arguments, received: %1"),
        ("STATS_VexelMedian_HW", median, median_arguments, "expected 4 arguments, received: %1"),
        ("STATS_VexelMedianDeviation_HW", median_deviation, deviation_arguments,
         "VexelAbsoluteDeviation expects 3 arguments, received: %1"),
    ])
    while True:
        for _ in range(10):
            yield next(ordinary)
        yield median_in_place(random)
        yield quantile_in_place(random)


if __name__ == "__main__":
    host.main(calls)
