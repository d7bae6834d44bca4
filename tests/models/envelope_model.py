"""The random sample driver with envelopes, alone and beside the built-in distributions."""

import host
from envelope import Endless, Envelope, Record, Unusable
from host import Array, Name, Procedure, Raised, RandomStream, Table
from random_sample_model import PROCEDURES, generator_of, random_description, random_sample

DENSITIES = [
    ("exp(-x*x*0.5)", "-x*exp(-x*x*0.5)"), ("x*exp(-x)", "exp(-x)*(1-x)"), ("6*x*(1-x)", "6-12*x"),
    ("1/(1+x*x)", "-2*x/((1+x*x)*(1+x*x))"), ("3*x*x", "6*x"), ("1", "0"), ("x", "1"),
    ("x-0.5", "1"), ("exp(-abs(x))", "if(x<0,exp(x),-exp(-x))"), ("2*x-x*x", "2-2*x"),
    ("if(x<0.25,x,0.5-x/2)", "if(x<0.25,1,-0.5)"), ("if(x<0.5,1,0.25)", "0"),
    ("if(x<0.7,1,undefined)", "0"), ("1", "if(x<0.6,1,undefined)"),
    ("x*x", "if(x<0.5,1e9*x,3e8)"), ("1+x", "1e9*(x-0.5)"), ("1+x", "1e9*(x-0.7)"),
    ("1+x", "1e9*(x-1.2)"), ("1+x", "1e9*(x+1)"), ("2-x", "-1e8*x*x*x*x-4e7"),
    ("exp(-x)", "-exp(-x)")]
ODD = [7, -1, 1.5, Name("z"), True, None, [], [0], [0, 1], Array("integer[4]", [(1, 2)], [0, 1]),
       Array("float[8]", [(1, 1), (1, 2)], [0.0, 1.0]), Array("anything", [(1, 2)], [0, Name("z")])]


def odd(random, values, share, first=0):
    """Sometimes puts an odd value among the others."""
    if random.random() < share and values:
        values[random.randrange(first, len(values))] = random.choice(ODD)
    return values


def envelope(random, record):
    h, h1 = random.choice([d for d in DENSITIES if record.kept or "undefined" not in "".join(d)])
    n = random.choice([2, 2, 2, 3, 3, 3, 4, 5, 6] * 2 + [0, 1])
    kind = random.random()
    values = [random.choice([random.random() * 2, random.random(), float(random.randint(0, 3))])
              if kind < 0.6 else random.uniform(-3, 3) for _ in range(n)]
    points = sorted(values) if random.random() < 0.9 else values
    if random.random() < 0.4:
        points = host.vector(points, random.choice([1, 0, -3]), random.choice(
            ["float[8]", "anything"]), storage=random.choice(["rectangular", "sparse"]))
    elif random.random() < 0.2:
        points.insert(random.randint(0, n), random.choice([None, None, Name("z"), 1]))
    maximum = random.choice([0, 1, 2, 3, 5, 10, 50, 100, -5])
    setup = [record.procedure("h", h), record.procedure("h1", h1), points, maximum,
             random.choice([True, False]) if record.kept else True]
    setup = odd(random, setup, 0.06, 2)
    return [1, setup[:4] if random.random() < 0.01 else odd(random, [setup], 0.02)[0]]


def calls(random):
    while True:
        record = Record(random.random() < 0.6, random.choice([None] * 7 + [random.randint(1, 30)]))

        def make(description):
            if description[0] != 1:
                return generator_of(description)
            try:
                return Envelope(record, description[1]).draw
            except Unusable:
                raise Raised("unable to initialize random variate generator with parameters %1",
                             description) from None

        procedure = random.choice([None, None, Procedure(random.choice(list(PROCEDURES)))])
        count = PROCEDURES[procedure][0] if procedure else random.choice([0, 1, 1, 1, 1, 1, 1, 2])
        descriptions = [envelope(random, record) if random.random() < 0.8
                        else random_description(random, 0.0) for _ in range(count)]
        output = host.vector([0.0] * random.choice([0, 1, 1, 2, 5, 20, 60]),
                             order=random.choice(["row", "column"]))
        seed = random.getrandbits(40)
        stream = RandomStream(seed)
        arguments = [output, procedure, descriptions, True]
        try:
            value = host.expected(random_sample, stream, *arguments, make=make)
        except Endless:
            continue
        call = host.call("STATS_VexelRandomSample_HW", *arguments)
        yield (f"n := 0: T := table(): randomize({seed}): "
               + (call if isinstance(value, Raised) else f"[{call}, RandomInt32()]"), value)
        yield "T", Table(enumerate(record.calls, 1))


if __name__ == "__main__":
    host.main(calls)
