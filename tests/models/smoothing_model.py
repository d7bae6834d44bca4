"""The linear filter and moving statistics."""

import host
from host import NAN, Array, Name, Procedure, Raised, boolean, call, expected, integer64
from kernels import mean_of, total
from quantiles_model import median_of
from samples import (calls_of, check_count, random_boolean, random_data, random_floats,
                     random_integer, random_weights, vector)

KINDS = ("ties", "plain", "positive", "missing", "infinite", "zeros")


def present(x, ignore):
    return [v for v in x if not (ignore and v != v)]


def linear_filter(data, coefficients, initial, recursive, ignore):
    x, c, history = vector(data), vector(coefficients), vector(initial)
    if len(x) < len(c):
        raise Raised("the size of the filter cannot exceed the size of the data set")
    series = present(x, boolean(ignore))
    recursive = boolean(recursive)
    places = max(len(c) - 1, 0)
    history = (history + [0.0] * places)[:places]
    inputs = history[::-1] + series
    y = []
    for i in range(len(series)):
        y.append(total(v * u for v, u in zip(inputs[i:], c[::-1])))
        if recursive and c:
            inputs[i + places] = y[-1]
    first = data.bounds[0][0]
    return Array("float[8]", [(first, first + len(y) - 1)], y, data.order)


def check_window(n, size):
    if not 1 <= integer64(size) <= n:
        raise Raised("invalid size of the moving window, expected: integer between 1 and %1, "
                     "received: %2", n, size)


def moving_statistic(data, size, offset, weights, ignore, recursive, statistic_of):
    """statistic_of() gives the function of a window's values and weights."""
    x, w = vector(data), vector(weights)
    ignore = boolean(ignore)
    size, offset = integer64(size), integer64(offset)
    check_window(len(x), size)
    if not 0 <= offset < len(x):
        raise Raised("invalid offset for the moving window, expected: integer between 0 and %1, "
                     "received: %2", len(x) - 1, offset)
    recursive = boolean(recursive)
    series, w = present(x, ignore), present(w, ignore)
    if w and len(w) != size:
        raise Raised("the number of elements in the weights array must be equal to the size of the "
                     "moving window", None)
    statistic = statistic_of()

    windows = max(len(series) - size + 1, 0)
    results = max(offset + len(series) - size + 1, 0)
    series += [NAN] * (results - len(series))
    leading = series[:offset]
    values = []
    for s in range(windows):
        values.append(statistic(series[s:s + size], w[:] or None))
        if recursive:
            series[offset + s] = values[-1]
    values = series[:results] if recursive else (leading + values)[:results]
    return Array("float[8]", [(1, len(values))], values, data.order)


def moving_mean(data, size, offset, weights, ignore, kind, recursive):
    def mean():
        mean_type = integer64(kind)
        return lambda x, w: mean_of(x, w, mean_type)
    return moving_statistic(data, size, offset, weights, ignore, recursive, mean)


def moving_median(data, size, offset, weights, ignore, recursive):
    return moving_statistic(data, size, offset, weights, ignore, recursive, lambda: median_of)


# Procedures of a window x by the text of their body, and what they give.
PROCEDURES = [
    ("x[{lo}]", lambda window: window[0]),
    ("[x[{hi}], x[{lo}]]", lambda window: [window[-1], window[0]]),
    ("tolist(x)", list),
    ("NULL", lambda window: None),
]


def moving(*arguments):
    check_count(arguments, len(arguments) >= 3,
                "VexelMoving expects at least 3 arguments, received: %1")
    data, size, procedure, *more = arguments
    if not isinstance(data, Array) or len(data.bounds) != 1:
        raise Raised("invalid data sample, expected: one-dimensional array, received %1", data)
    n = len(data.elements)
    check_window(n, size)
    first = data.bounds[0][0]
    last = n - size - first + 2
    values = [procedure.of(data.elements[s:s + size], more) for s in range(n - size + 1)]
    places = max(last - first + 1, 0)
    return Array("anything", [(first, last)], (values + [0] * places)[:places], data.order)


def window_procedure(random, data, size, more):
    """A procedure of a window and of more arguments, which knows what it gives."""
    first = data.bounds[0][0] if isinstance(data, Array) else 1
    last = first + size - 1 if type(size) is int else first
    body, of = random.choice(PROCEDURES)
    body = body.format(lo=first, hi=last)
    names = [f"a{i}" for i in range(len(more))]
    repeats = random.random() < 0.5
    if repeats:
        body = "[" + ", ".join([body] + names) + "]"
    procedure = Procedure(f"({', '.join(['x'] + names)}) -> {body}")
    procedure.of = lambda window, given: [of(window), *given] if repeats else of(window)
    return procedure


def calls(random):
    def series():
        n = random.randint(20, 200) if random.random() < 0.15 else random.randint(0, 12)
        data = random_data(random, random_floats(random, n, KINDS))
        return data, n

    def flag():
        return random_boolean(random)

    def kind():
        return random_integer(random, [0, 0, 1, 2, 3, 4, -1])

    def window(n):
        size = random_integer(random, [1, 2, 3, 5, n, n - 1, n // 2, random.randint(1, n + 1)])
        if random.random() < 0.03:
            size = random.choice([0, -1, n + 1, 2**40])
        offset = random_integer(random, [0, 0, 1, 2, n - 1, n // 2, random.randint(0, n)])
        places = size if type(size) is int and 0 < size < 300 else 3
        return size, offset, random_weights(random, places)

    def filter_arguments():
        data, n = series()
        k = random.choice([0, 1, 2, 3, random.randint(0, n + 1)])
        coefficients = random_data(random, random_floats(random, k, KINDS))
        initial = random_data(random, random_floats(random, random.randint(0, k + 2), KINDS))
        return [data, coefficients, initial, flag(), flag()]

    def mean_arguments():
        data, n = series()
        return [data, *window(n), flag(), kind(), flag()]

    def median_arguments():
        data, n = series()
        return [data, *window(n), flag(), flag()]

    statistics = calls_of(random, [
        ("STATS_VexelLinearFilter_HW", linear_filter, filter_arguments,
         "expected 5 arguments, received: %1"),
        ("STATS_VexelMovingMean_HW", moving_mean, mean_arguments,
         "VexelMovingMean expects 7 arguments, received: %1"),
        ("STATS_VexelMovingMedian_HW", moving_median, median_arguments,
         "VexelMovingMedian expects 6 arguments, received: %1"),
    ])

    def moving_call():
        n = random.randint(1, 8)
        data = random_data(random, random_floats(random, n, KINDS))
        size = random_integer(random, [1, 1, 2, 3, n, n + 1, 0])
        more = [random.choice([1, Name("q"), "s", 2.5]) for _ in range(random.choice([0, 0, 1, 2]))]
        arguments = [data, size, window_procedure(random, data, size, more), *more]
        if random.random() < 0.02:
            arguments = arguments[:random.randint(0, 2)]
        return call("STATS_VexelMoving_HW", *arguments), expected(moving, *arguments)

    while True:
        for _ in range(3):
            yield next(statistics)
        yield moving_call()


if __name__ == "__main__":
    host.main(calls)
