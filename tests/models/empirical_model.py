"""The empirical distribution: quantiles of the first type, and samples by their inversion."""

from distributions import counted, miscounts
from host import (NAN, Array, Name, RandomStream, call, expected, integer32, main, real, to_text,
                  vector)
from quantiles_model import quantiles_of, repeated_selection
from samples import random_boolean, random_data, random_floats, random_size, random_weights, sample


def deviate(_, *arguments):
    u, data, weights, copy = counted("EmpiricalDeviate", arguments, 4)
    u = real(u)
    return quantiles_of(*sample(data, weights, copy), [u], 1)[0]


def random_variate(stream, *arguments):
    data, weights, copy = counted("EmpiricalRandomVariate", arguments, 3)
    points, weights = sample(data, weights, copy)
    return [quantiles_of(points, weights, [stream.double01()], 1)[0], stream.int32()]


def random_sample(stream, *arguments):
    """The first variate leaves weighted points in the order in which the others find them."""
    n, data, weights, copy = counted("EmpiricalRandomSample", arguments, 4)
    n = integer32(n)
    points, weights = sample(data, weights, copy)
    values = [quantiles_of(points, weights, [stream.double01()], 1)[0] for _ in range(n)]
    return [Array("float[8]", [(1, n)], values), stream.int32()]


def in_place(random):
    """A quantile or a sample of points without weights, and how it leaves them."""
    x = random_floats(random, random.randint(0, 40), ("ties", "plain", "missing", "zeros"))
    seed, n = random.randrange(2**64), random.choice([0, 1, 2, 3, 30])
    arrays = f"d := {to_text(vector(x))}: randomize({seed}): "
    stream = RandomStream(seed)

    def next_value(u):
        return (repeated_selection(x, [u], 1) or [NAN])[0]

    if random.random() < 0.4:
        u = random.random()
        text = call("STATS_VexelEmpiricalDeviate_HW", u, Name("d"), vector([]), False)
        value = next_value(u)
    elif random.random() < 0.4:
        text = call("STATS_VexelEmpiricalRandomVariate_HW", Name("d"), vector([]), False)
        value = next_value(stream.double01())
    else:
        text = call("STATS_VexelEmpiricalRandomSample_HW", n, Name("d"), vector([]), False)
        value = vector([next_value(stream.double01()) for _ in range(n)])
    return f"{arrays}[{text}, d, RandomInt32()]", [value, vector(x), stream.int32()]


def sample_in_place(random):
    """A sample of tied points with weights, and how it leaves them."""
    size = random.randint(6, 40)
    x = [float(random.randint(-2, 3)) for _ in range(size)]
    w = random.choice([[random.uniform(0.0, 2.0) for _ in x], [float(i % 4) for i in range(size)],
                       [10.0**random.randint(-3, 17) for _ in x]])
    n, seed = random.choice([0, 1, 2, 3, 30]), random.randrange(2**64)
    text = call("STATS_VexelEmpiricalRandomSample_HW", n, Name("d"), Name("w"), False)
    arrays = f"d := {to_text(vector(x))}: w := {to_text(vector(w))}: "
    stream = RandomStream(seed)
    values = [quantiles_of(x, w, [stream.double01()], 1)[0] for _ in range(n)]
    return (f"{arrays}randomize({seed}): [{text}, d, w, RandomInt32()]",
            [vector(values), vector(x), vector(w), stream.int32()])


def calls(random):
    for operation, size in [("Deviate", 4), ("RandomVariate", 3), ("RandomSample", 4)]:
        yield from miscounts("Empirical" + operation, size)
    while True:
        if random.random() < 0.1:
            yield sample_in_place(random)
        if random.random() < 0.1:
            yield in_place(random)
        size = random_size(random)
        data = random_data(random, random_floats(random, size))
        arguments = [data, random_weights(random, size), random_boolean(random)]
        if random.random() < 0.02:
            arguments = random.choice([arguments[:-1], arguments + [1], arguments[:1], []])
        seed = random.randrange(2**64)
        stream = RandomStream(seed)
        choice = random.randrange(3)
        if choice == 0:
            u = random.choice([0, 1, 0.5, -0.5, random.random(), random.random(), "a"])
            arguments.insert(0, u)
            yield (call("STATS_VexelEmpiricalDeviate_HW", *arguments),
                   expected(deviate, stream, *arguments))
        elif choice == 1:
            text = call("STATS_VexelEmpiricalRandomVariate_HW", *arguments)
            yield (f"randomize({seed}): [{text}, RandomInt32()]",
                   expected(random_variate, stream, *arguments))
        else:
            many = 5000 if size <= 12 and random.random() < 0.02 else 40
            arguments.insert(0, random.choice([0, -2, 1, 2, 5, many, many, 2.0]))
            text = call("STATS_VexelEmpiricalRandomSample_HW", *arguments)
            yield (f"randomize({seed}): [{text}, RandomInt32()]",
                   expected(random_sample, stream, *arguments))


if __name__ == "__main__":
    main(calls)
