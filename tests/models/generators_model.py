"""Samples by alias urn, bootstrap and tabulated density, from the same draws as the library's."""

from functools import partial

import host
import samples
from host import Array, Name, Procedure, Raised, RandomStream, integer32, integer64, real
from interpolation_model import discrete
from libm import divide, sqrt
from samples import check_count


class AliasUrn:
    """Indices with given weights: cell k keeps its own with probability cutoff[k]."""

    def __init__(self, weights):
        n = len(weights)
        self.alias = list(range(n))
        if n == 1:
            self.cutoff = [1.0]
            return
        total = 0.0
        for w in weights:
            total += w
        scale = divide(float(n), total)
        self.cutoff = [scale * w for w in weights]
        small = [i for i in range(n) if not self.cutoff[i] >= 1.0]
        large = [i for i in range(n) if self.cutoff[i] >= 1.0]
        while small and large:
            needy, giver = small[-1], large[-1]
            self.alias[needy] = giver
            self.cutoff[giver] = self.cutoff[needy] - 1.0 + self.cutoff[giver]
            if self.cutoff[giver] < 1.0:
                small[-1] = large.pop()
            else:
                small.pop()
        for i in small:
            self.cutoff[i], self.alias[i] = 1.0, i

    def draw(self, stream):
        cells = len(self.cutoff)
        shift = 31 - (cells - 1).bit_length()
        k = cells
        while k >= cells:
            k = stream.int32() % 2**32 >> shift
        return k if self.cutoff[k] >= stream.double01() else self.alias[k]


class UniformIndex:
    def __init__(self, size):
        self.size = size
        self.shift = 32 - size.bit_length() if size > 1 else 31

    def draw(self, stream):
        i = self.size
        while i >= self.size:
            i = stream.int32() % 2**32 >> self.shift
        return i


def alias_urn_sample(stream, *arguments):
    check_count(arguments, len(arguments) == 2, "expected 2 arguments, received: %1")
    length, weights = arguments
    if type(length) is not int or not -2**31 <= length < 2**31:
        raise Raised("invalid sample length, expected positive integer, received: %1", length)
    values = samples.vector(weights)
    if not values:
        raise Raised("expected at least one weight, received: %1", weights)
    urn = AliasUrn(values)
    return Array("integer[4]", [(1, length)], [urn.draw(stream) for _ in range(length)])


def bootstrap_sample(stream, *arguments):
    check_count(arguments, len(arguments) == 4, "expected 4 arguments, received: %1")
    data, rows, columns, weights = arguments
    for x in data, weights:
        if not isinstance(x, Array) or len(x.bounds) != 1:
            raise Raised("expected: one-dimensional array, received %1", x)
    rows, columns = integer64(rows), integer64(columns)
    if data.storage != "rectangular":
        raise Raised("input array must have rectangular storage type", None)
    if data.datatype not in ("anything", "integer[4]", "float[4]"):
        raise Raised("expected: array of integer[4], float[4] or host objects as data, received %1",
                     data)
    if not data.elements:
        raise Raised("expected: non-empty array as data, received %1", data)
    if not weights.elements:
        index = UniformIndex(len(data.elements))
    elif len(weights.elements) != len(data.elements):
        raise Raised("data array and weights array must have the same number of elements", None)
    else:
        index = AliasUrn(samples.vector(weights))
    drawn = Array(data.datatype, [(1, rows), (1, columns)], [], data.order)
    drawn.set_block([data.elements[index.draw(stream)]
                     for _ in range(max(rows, 0) * max(columns, 0))])
    return drawn


def float_vector(length, elements):
    return Array("float[8]", [(1, length)], elements)


def bootstrap_statistic(log, value, stream, *arguments):
    """Puts the resamples into log; value is the statistic's."""
    check_count(arguments, len(arguments) == 5, "expected 5 arguments, received: %1")
    data, weights, _, size, replications = arguments
    x, w = samples.sample(data, weights)
    n, m = integer64(size), integer64(replications)
    if w is None and n > len(x):
        raise Raised("resample size %1 exceeds the number of data points in %2", size, data)
    index = AliasUrn(w) if w is not None else UniformIndex(max(n, 1))
    values = []
    for _ in range(m):
        resample = [x[index.draw(stream)] for _ in range(n)]
        log[:] = [list(log), resample]
        values.append(real(resample[-1] if value == "X[count(X)]" else value))
    return float_vector(m, values)


def bootstrap_statistic_of_variates(log, stream, *arguments):
    check_count(arguments, len(arguments) == 4, "expected 4 arguments, received: %1")
    _, _, size, replications = arguments
    m = integer64(replications)
    integer64(size)
    values = []
    for _ in range(m):
        sample = [size, stream.int32(), stream.double01()]
        log[:] = [list(log), sample]
        values.append(sample[2])
    return float_vector(m, values)


def kernel_density_sample(stream, *arguments):
    check_count(arguments, len(arguments) <= 4, "expected 4 arguments, received: %1")
    values = []
    for i, convert in enumerate([lambda array: array, real, real, integer32]):
        if i == len(arguments):
            raise Raised("index %1 out of range", i + 1)
        values.append(convert(arguments[i]))
    array, a, b, n = values
    if not isinstance(array, Array):
        raise Raised("an array expected, received %1", array)
    if array.datatype != "float[8]" or array.storage != "rectangular" or not array.elements:
        raise Raised("expected: non-empty array of float[8] as density, received %1", array)
    d = array.block()
    h = divide(b - a, len(d) - 1.0)
    masses = [d[0] * 0.5 * h]
    for low, high in zip(d, d[1:]):
        masses.append(masses[-1] + (high + low) * 0.5 * h)
    masses.append(masses[-1] + 0.5 * d[-1] * h)
    values = []
    for _ in range(n):
        u = stream.double01() * masses[-1]
        k = discrete(u, masses.__getitem__, 0, len(d), 100)  # by bisection, which matters for NaN
        if k == 0:
            x = h - sqrt(divide(2.0 * h * u, d[0]))
        else:
            p, q = d[k - 1], (d + [0.0])[k]
            root = sqrt(2.0 * h * (u - masses[k - 1]) * (q - p) + p * p * (h * h))
            x = h - divide(h * p - root, p - q)
        values.append(k * h + a - x)
    return float_vector(n, values)


# Random calls.

def counts(random):
    return samples.random_integer(random, [-2, 0, 1, 1, 2, 3, 5, 9])


def dense(random, values, datatypes):
    """Mostly what a call accepts, sometimes any array of these values."""
    if random.random() < 0.15:
        return samples.random_array(random, values)
    datatype = random.choice(datatypes)
    return host.vector(samples.random_elements(random, datatype, values),
                       random.choice([1, 1, 0, -3]), datatype,
                       order=random.choice(["column", "row"]))


def urn_call(random):
    values = samples.random_floats(random, samples.random_size(random),
                                   ("positive", "positive", "ties", "zeros", "infinite", "missing"))
    weights = samples.random_data(random, [w if random.random() < 0.2 else abs(w) for w in values])
    return "AliasUrnSample", alias_urn_sample, [counts(random), weights], []


def bootstrap_call(random):
    n = random.choice([0, 1, 1, 2, 3, 4, 5, 7, 8, 9, 16, 17, 300])
    data = dense(random, samples.random_floats(random, n), ["anything", "integer[4]", "float[4]"])
    arguments = [data, counts(random), counts(random), samples.random_weights(random, n)]
    return "BootstrapSample", bootstrap_sample, arguments, []


def statistic_call(random):
    n = random.choice([1, 1, 2, 3, 4, 5, 7, 8, 9, 16, 17, 0])
    size = samples.random_integer(random, [n, n, n, n - 1, n + 1, 3])
    value = random.choice([2, Name("Pi"), Name("z")])
    if isinstance(size, int) and size > 0 and random.random() < 0.8:
        value = "X[count(X)]"
    statistic = Procedure(f"proc(X) L := [L, tolist(X)]; {value} end")
    data = samples.random_data(random, samples.random_floats(random, n))
    arguments = [data, samples.random_weights(random, n), statistic, size, counts(random)]
    log = []
    return "BootstrapStatistic", partial(bootstrap_statistic, log, value), arguments, log


def variates_call(random):
    arguments = [Procedure("n -> [n, RandomInt32(), RandomDouble01()]"),
                 Procedure("proc(s) L := [L, s]; part(s, 3) end"), counts(random), counts(random)]
    log = []
    return ("BootstrapStatisticRV", partial(bootstrap_statistic_of_variates, log), arguments, log)


def density_call(random):
    n = random.choice([0, 1, 2, 2, 3, 4, 5, 9, 33])
    kinds = ("positive",) * 6 + ("ties", "zeros", "infinite", "missing")
    density = dense(random, samples.random_floats(random, n, kinds), ["float[8]"])
    a = random.choice([0, 0.0, -1.5, random.gauss(0, 3), Name("Pi"), Name("z")])
    b = random.choice([1, 2.0, 5.5, random.gauss(0, 5), host.INFINITY, None, 10])
    return "KernelDensitySample", kernel_density_sample, [density, a, b, counts(random)], []


def calls(random):
    while True:
        for one in urn_call, bootstrap_call, statistic_call, variates_call, density_call:
            name, model, arguments, log = one(random)
            if random.random() < 0.03:
                arguments = random.choice([arguments[:2], arguments[:-1], arguments + [1], []])
            seed = random.getrandbits(40)
            stream = RandomStream(seed)
            value = host.expected(model, stream, *arguments)
            text = host.call(f"STATS_Vexel{name}_HW", *arguments)
            if isinstance(value, Raised):
                yield f"L := []: randomize({seed}): {text}", value
            else:
                yield (f"L := []: randomize({seed}): [{text}, L, RandomInt32()]",
                       [value, log, stream.int32()])


if __name__ == "__main__":
    host.main(calls)
