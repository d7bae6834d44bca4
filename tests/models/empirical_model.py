"""The empirical distribution: quantiles of the first type, and samples by their inversion."""

from distributions import counted, miscounts
from host import Array, RandomStream, call, expected, integer32, main, real
from quantiles_model import quantiles_of
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


def calls(random):
    for operation, size in [("Deviate", 4), ("RandomVariate", 3), ("RandomSample", 4)]:
        yield from miscounts("Empirical" + operation, size)
    while True:
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
