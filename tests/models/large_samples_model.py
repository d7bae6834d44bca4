"""Quantiles, order statistics and medians of samples that are so large that they are only read.

Weighted samples are not: as many points with weights are copied and sorted.
"""

import host
from host import NAN, Array, Name, Raised, call
from kernels import in_order, sort
from quantiles_model import plain_quantile, weighted_quantile

SIZE = 24000
PRIME = 20011

# Samples by name: how the host computes element i, and how the model does.
SAMPLES = {
    "mixed": (f"i^2 - {PRIME}*floor(i^2/{PRIME})", lambda i: float(i * i % PRIME)),
    "holed": (f"if(floor(i/3) = i/3, undefined, i^2 - {PRIME}*floor(i^2/{PRIME}))",
              lambda i: NAN if i % 3 == 0 else float(i * i % PRIME)),
    "rising": ("i", float),
    "falling": ("-i", lambda i: float(-i)),
    "saw": ("i - 7*floor(i/7)", lambda i: float(i % 7)),
    "tailed": ("2/(2*i - 47999)", lambda i: 2 / (2 * i - 47999)),
    "missing": ("undefined", lambda i: NAN),
}
WEIGHTS = Name("weights")
EMPTY = Array("float[8]", [(1, 0)], [])


def definitions():
    elements = [(name, element) for name, (element, _) in SAMPLES.items()]
    elements.append((WEIGHTS, "i - 5*floor(i/5)"))
    return "".join(f"{name} := Array([seq({element}, i = 1 .. {SIZE})], datatype = float[8]): "
                   for name, element in elements)


def order_statistics(ordered, ranks):
    for rank in ranks:
        if ordered and not 1 <= rank <= len(ordered):
            return Raised("index out of range: %1", rank)
    return [ordered[r - 1] if ordered else NAN for r in ranks]


def median(ordered):
    n = len(ordered)
    return (ordered[(n - 1) // 2] + ordered[n // 2]) * 0.5 if ordered else NAN


def calls(random):
    ordered = {}
    for name, (_, value_of) in SAMPLES.items():
        everything = in_order([value_of(i) for i in range(1, SIZE + 1)])
        ordered[name, False] = everything
        ordered[name, True] = [v for v in everything if v == v]
    points = [SAMPLES["mixed"][1](i) for i in range(1, SIZE + 1)]
    weights = [float(i % 5) for i in range(1, SIZE + 1)]
    sort(points, weights)

    def probability():
        return random.choice([0, 1, 0.5, 0.999, random.random(), random.random()**4])

    yield definitions() + "1", 1
    while True:
        name, ignore = random.choice(list(ordered))
        values = ordered[name, ignore]
        n = len(values)
        m = random.choice([1, 1, 2, 3, 5, 20])
        given = [probability() for _ in range(m)]
        kind = random.randint(1, 8)
        yield (call("STATS_VexelQuantile_HW", Name(name), given, EMPTY, ignore, kind, False),
               [plain_quantile(values, p, kind) if values else NAN for p in given])
        ranks = [random.choice([1, n, random.randint(1, n + 1)]) for _ in range(m)]
        yield (call("STATS_VexelOrderStatistic_HW", Name(name), ranks, EMPTY, ignore),
               order_statistics(values, ranks))
        yield call("STATS_VexelMedian_HW", Name(name), EMPTY, ignore, False), median(values)
        if random.random() < 0.1:
            p = random.random()
            yield (call("STATS_VexelQuantile_HW", Name("mixed"), p, WEIGHTS, False, kind, False),
                   weighted_quantile(points, weights, sum(weights), p, kind))
            yield (call("STATS_VexelMedian_HW", Name("mixed"), WEIGHTS, True, False),
                   weighted_quantile(points, weights, sum(weights), 0.5, 1))


if __name__ == "__main__":
    host.main(calls)
