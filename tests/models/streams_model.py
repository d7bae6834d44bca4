"""Quasi-random streams: every point from its index, by the definition of its sequence."""

import math

import host
from host import Array, Equation, INFINITY, Name, Raised, Sequence

PRIMES = [n for n in range(2, 2000) if all(n % p for p in range(2, math.isqrt(n) + 1))]
MAX_INT = 2**31 - 1
HANDLE = Name("h")


def signed(x, bits):
    return (x + 2**(bits - 1)) % 2**bits - 2**(bits - 1)


class Stream:
    """index is the one of the next point; negative beyond 31 bits."""

    kind = None
    restart = 1

    def __init__(self, dimension):
        self.dimension = dimension
        self.index = 1

    def point(self):
        raise NotImplementedError

    def draw(self, count):
        """The next count points, or those before the stream runs out."""
        points = []
        for _ in range(count):
            point = self.point()
            self.skip(1)
            if point is None:
                break
            points.append(point)
        return points

    def skip(self, count):
        self.index = signed(self.index + count, 32)

    def reset(self):
        self.index = self.restart

    def options(self):
        return Sequence([self.dimension, Name(type(self).__name__)])


class Halton(Stream):
    """Coordinate j is the radical inverse of the index in the j-th prime."""

    kind = 1

    def point(self):
        return [self.inverse(base) for base in PRIMES[:self.dimension]]

    def inverse(self, base):
        value, factor, rest = 0.0, 1.0 / base, abs(self.index)
        while rest != 0:
            rest, digit = divmod(rest, base)
            value += digit * factor
            factor /= base
        return -value if self.index < 0 else value


class Sobol(Stream):
    """Coordinate j is the exclusive or of v[j][k] over the bits k of the index's Gray code."""

    kind = 0
    restart = 0

    def __init__(self, dimension, degrees, codes, directions, precision):
        """Overwrites directions, the host's block, with the direction numbers."""
        super().__init__(dimension)
        self.codes, self.directions, self.precision = codes, directions, precision
        stride = len(directions.elements) // (directions.bounds[0][1] - directions.bounds[0][0] + 1)
        block = directions.block()
        self.numbers = []
        for j in range(dimension):
            s, code = (degrees.elements[j], codes.elements[j]) if j > 0 else (1, 0)
            m = block[j * stride:j * stride + min(s, precision)]
            for k in range(len(m), precision):
                term = 1 if j == 0 else m[k - s] ^ (m[k - s] << s)
                for t in range(1, s):
                    term ^= (m[k - s + t] << (s - t)) * (code >> (t - 1) & 1)
                m.append(signed(term, 64))
            self.numbers.append([signed(x << (precision - 1 - k), 64) for k, x in enumerate(m)])
            block[j * stride:j * stride + precision] = self.numbers[-1]
        directions.set_block(block)

    def point(self):
        gray = self.index ^ (self.index >> 1)
        point = []
        for v in self.numbers:
            x = 0
            for k in range(min(self.precision, gray.bit_length())):
                x ^= v[k] * (gray >> k & 1)
            point.append(float(x) / 2.0**self.precision)
        return point

    def options(self):
        tables = {"precision": self.precision, "primitivepolynomials": self.codes,
                  "directionintegers": self.directions}
        return Sequence(super().options() + [Equation((Name(k), v)) for k, v in tables.items()])


class Faure(Stream):
    """Coordinate k is the radical inverse, in the base b, of a power of Pascal's matrix times the
    Gray digits of the index.  An index has m digits; beyond the last one there are no points."""

    kind = 2

    def __init__(self, dimension):
        super().__init__(dimension)
        self.base = next(p for p in PRIMES if p >= dimension)
        self.digits = int(math.log(MAX_INT) / math.log(self.base))
        self.period = self.base**self.digits

    def point(self):
        b, m = self.base, self.digits
        if self.index >= self.period:
            return None
        c = [self.index // b**j % b for j in range(m + 1)]
        gray = [(c[j] - c[j + 1]) % b for j in range(m)]
        used = [j for j in range(m) if gray[j] != 0]
        point = []
        for k in range(self.dimension):
            y = [sum(math.comb(j, i) * k**(j - i) * gray[j] for j in used if j >= i) % b
                 for i in range(m)]
            point.append(sum(y[i] * b**(m - 1 - i) for i in range(m)) / self.period)
        return point

    def skip(self, count):
        self.index += max(count, 0)


def written(stream, count, out):
    """What STATS_QRStreamNext_HW leaves in out, and whether the stream has run out."""
    block = out.block()
    points = stream.draw(count)
    for i, point in enumerate(points):
        for j, x in enumerate(point):
            block[i * len(point) + j if out.order == "column" else i + j * count] = x
    result = Array(out.datatype, out.bounds, [], out.order)
    result.set_block(block)
    return result, len(points) < count


def integers(random, values, bits=32, columns=None, **options):
    """An integer table with any lower bounds; columns makes it two-dimensional."""
    low = random.choice([1, 1, 0, -3])
    bounds = [(low, low + len(values) // (columns or 1) - 1)]
    if columns:
        bounds.append((low, low + columns - 1))
    return Array(f"integer[{bits // 8}]", bounds, values, **options)


def sobol_tables(random, dimension, precision):
    columns = precision + random.choice([0, 0, 1, 3])
    rows = dimension + random.choice([0, 0, 1])
    degrees = [random.randint(1, min(9, precision + 2)) for _ in range(dimension)]
    if random.random() < 0.7:
        codes = [random.getrandbits(s - 1) if s > 1 else 0 for s in degrees]
        block = [random.randrange(1, 2**(min(k, 9) + 1), 2) for _ in range(rows)
                 for k in range(columns)]
    else:
        codes = [signed(random.getrandbits(32), 32) for _ in degrees]
        block = [signed(random.getrandbits(random.choice([2, 62, 64])), 64)
                 for _ in range(rows * columns)]
    degrees[0] = random.choice([0, 1, -3])
    if dimension == 1 and random.random() < 0.5:
        degrees, codes = [], []  # nothing is read of them
    order = random.choice(["row", "column"])
    directions = integers(random, [0] * len(block), 64, columns, order=order)
    directions.set_block(block)
    return integers(random, degrees), integers(random, codes), directions, precision


def made(random):
    """A stream and the statement that makes it h; T is a Sobol stream's table of directions."""
    kind = random.choice([Halton, Sobol, Sobol, Faure])
    if kind is Sobol:
        dimension = random.randint(1, 6)
        degrees, codes, directions, precision = sobol_tables(
            random, dimension, random.choice([1, 2, 3, 4, 8, 16, 30, 31, 32, 33, 53, 61, 62]))
        table = directions.text()
        stream = Sobol(dimension, degrees, codes, directions, precision)
        arguments = [dimension, 0, degrees, codes, Name("T"), precision]
        return stream, f"T := {table}: h := {host.call('STATS_InitializeQRStream_HW', *arguments)}"
    dimensions = range(1, 14) if random.random() < 0.9 else [23, 25, 48, 190, 191, 230]
    stream = kind(random.choice([d for d in dimensions if kind is Halton or 1 < d < 60]))
    extra = random.choice([[], [], [None], [Name("x"), 3]])
    return stream, "h := " + host.call("STATS_InitializeQRStream_HW", stream.dimension, kind.kind,
                                       *extra)


def output(random, dimension, count):
    """An array of zeros with room for count points, and sometimes for more."""
    low = random.choice([1, 1, 0, -3])
    room = max(count, 0) + random.choice([0, 0, 2])
    bounds = [(low, low + dimension - 1), (1, room)] if random.random() < 0.6 else [
        (low, low + dimension * room - 1)]
    return Array("float[8]", bounds, [0.0] * (dimension * room), random.choice(["row", "column"]))


def step(random, stream):
    """The text and value of a call that uses h."""
    what = random.random()
    if what < 0.5:
        most = 40 if stream.dimension < 15 else 2
        count = min(random.choice([0, -1, 1, 2, 3, 8, 15, 16, 17, 40, 40]), most)
        if stream.dimension < 4 and random.random() < 0.02:
            count = random.choice([260, 600])
        out = output(random, stream.dimension, count)
        text = host.call("STATS_QRStreamNext_HW", HANDLE, count, out)
        return text, written(stream, count, out)[0]
    if what < 0.75:
        count = random.choice([0, 1, -1, 5, 100, 1000, 255 - stream.index, -stream.index - 3,
                               2**31 - 10 - stream.index, 2**31, 2**32 - 9, 2**32 + 3, -2**31, -7,
                               random.getrandbits(40)])
        if isinstance(stream, Faure):  # stays away from the end
            count = min(count, stream.period - 700 - stream.index)
        stream.skip(count)
        return host.call("STATS_QRStreamSkip_HW", HANDLE, count), None
    if what < 0.85:
        stream.reset()
        return host.call("STATS_ResetQRStream_HW", HANDLE), None
    if what < 0.9:
        return host.call("STATS_QRStreamGetDimension_HW", HANDLE), stream.dimension
    if what < 0.95:
        return host.call("STATS_QRStreamGetOptions_HW", HANDLE), stream.options()
    return random.choice([("STATS_QRStreamGetMaxSobolPrecision_HW()", 62),
                          ("STATS_TerminateQRStream_HW(h)", None)])  # h stays while it has a name


def uses(random):
    stream, statement = made(random)
    steps = [step(random, stream) for _ in range(random.randint(1, 6))]
    if isinstance(stream, Sobol):
        steps.append(("T", stream.directions))
    yield statement + ": [" + ", ".join(s[0] for s in steps) + "]", [s[1] for s in steps]


def end_of_faure(random):
    """The last points of a stream, and what follows."""
    stream = Faure(random.choice([2, 3, 4, 5, 7, 12]))
    skipped = stream.period - random.randint(2, 12)
    stream.skip(skipped)
    count = random.randint(12, 20)
    zeros = Array("float[8]", [(1, stream.dimension * count)], [0.0] * (stream.dimension * count))
    out, _ = written(stream, count, zeros)
    yield (f"h := STATS_InitializeQRStream_HW({stream.dimension}, 2): "
           f"STATS_QRStreamSkip_HW(h, {skipped}): O := {zeros.text()}: "
           f"STATS_QRStreamNext_HW(h, {count}, O)", Raised("quasi-random stream is exhausted"))
    yield "O", out
    further = random.choice([0, 1, stream.period, 2**63 - 1])
    yield (f"STATS_QRStreamSkip_HW(h, {further}): STATS_QRStreamNext_HW(h, 3, O)",
           Raised("quasi-random stream is exhausted"))
    stream.reset()
    after, _ = written(stream, 3, zeros)
    yield f"STATS_ResetQRStream_HW(h): STATS_QRStreamNext_HW(h, 3, {zeros.text()})", after


def calls(random):
    while True:
        for _ in range(9):
            yield from uses(random)
        yield from end_of_faure(random)


if __name__ == "__main__":
    host.main(calls)
