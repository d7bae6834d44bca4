"""What streams accept: arguments, tables and their sizes; the binary matrices made from tables."""

import host
from host import Array, Name, Raised, Sequence, integer64
from streams_model import integers

MAX_INT = 2**31 - 1


def table(value, bits):
    """The elements of a dense table of integers."""
    if (not isinstance(value, Array) or value.datatype != f"integer[{bits // 8}]"
            or value.storage != "rectangular"):
        raise Raised(f"invalid table, expected: dense array of {bits}-bit integers, received %1",
                     value)
    return value.elements


def require(value, first, count):
    if first < 0 or first + count > len(value.elements):
        raise Raised("table has too few elements for the dimension and sizes given: %1", value)


def require_degree(degree):
    if degree < 1:
        raise Raised("degree of a primitive polynomial is expected to be positive, received: %1",
                     degree)


def require_dimension(dimension, lowest, highest):
    if dimension < lowest:
        raise Raised("dimension is expected to be at least %1, received: %2", lowest, dimension)
    if dimension > highest:
        raise Raised("dimension is expected to be at most %1, received: %2", highest, dimension)


def dimension_of_new(*arguments):
    """The dimension of the stream that STATS_InitializeQRStream_HW makes."""
    if len(arguments) == 1 and isinstance(arguments[0], list):
        arguments = arguments[0]  # a single argument is the sequence itself
    if len(arguments) < 2:
        raise Raised("expected at least 2 arguments, received: %1", *(arguments or [None]))
    dimension, kind = integer64(arguments[0]), integer64(arguments[1])
    if kind == 0:
        check_sobol(dimension, arguments)
    elif kind == 1:
        require_dimension(dimension, 1, 105097565)
    elif kind == 2:
        require_dimension(dimension, 2, 2**28)
    else:
        raise Raised("invalid quasi-random stream kind, expected: 0 (Sobol), 1 (Halton) or 2 "
                     "(Faure), received: %1", kind)
    return dimension


def check_sobol(dimension, arguments):
    if len(arguments) < 5:
        raise Raised("expected at least 5 arguments for sobol, received: %1", Sequence(arguments))
    degrees, codes, directions = arguments[2:5]
    if not isinstance(directions, Array):
        raise Raised("an array expected, received %1", directions)
    if len(directions.bounds) != 2:
        raise Raised("direction integers are expected in a two-dimensional array, received: %1",
                     directions)
    if len(arguments) < 6:
        raise Raised("index %1 out of range", 6)
    precision = integer64(arguments[5])
    require_dimension(dimension, 1, MAX_INT)
    if not 1 <= precision <= 62:
        raise Raised("precision is expected to be an integer between 1 and 62, received: %1",
                     precision)
    used = dimension if dimension > 1 else 0
    table(degrees, 32)
    require(degrees, 0, used)
    table(codes, 32)
    require(codes, 0, used)
    table(directions, 64)
    columns = directions.bounds[1][1] - directions.bounds[1][0] + 1
    require(directions, (dimension - 1) * columns, precision)
    for degree in degrees.elements[1:used]:
        require_degree(degree)


def no_stream(handle):
    return Raised("expected VexelPointer containing quasi-random number generator, received %1",
                  handle)


def drawn(dimension, *arguments):
    """The output of a new stream whose handle is the first argument, or what is refused."""
    if len(arguments) != 3:
        raise Raised("expected 3 arguments, received: %1", Sequence(arguments))
    handle, count, out = arguments
    if handle != "h":
        raise no_stream(handle)
    count = integer64(count)
    if (not isinstance(out, Array) or out.datatype != "float[8]"
            or out.storage != "rectangular"):
        raise Raised("invalid output, expected: dense array of 64-bit floats, received %1", out)
    if count > min(MAX_INT, len(out.elements) // dimension):
        raise Raised("output array has no room for %1 points: %2", count, out)
    return out  # a count below 1 writes nothing


def size(value, lowest):
    if not lowest <= value <= MAX_INT:
        raise Raised("invalid row, size or stride of a binary matrix: %1", value)
    return value


class Matrices:
    """The state of a call that makes rows of binary matrices: what the tables hold, by name."""

    def __init__(self, directions, out, codes, degrees, rows):
        self.tables = [directions, out, codes, degrees]
        self.m, self.out = table(directions, 64), list(table(out, 32))
        for t in (codes, degrees):
            table(t, 32)
            require(t, 0, rows if rows > 1 else 0)
        self.codes, self.degrees = codes.elements, degrees.elements

    def check(self, row, n, stride):
        written = max(n, 1)
        if row > 0:
            require_degree(self.degrees[row])
            size(stride, 0)
            require(self.tables[0], row * stride, self.degrees[row])
            written = max(n, self.degrees[row])
        require(self.tables[1], row * n, written)

    def row(self, row, n, stride):
        if row == 0:
            self.out[0:max(n, 1)] = [1] + [0] * (n - 1)
            return
        s, code = self.degrees[row], self.codes[row]
        bits = [int(self.m[row * stride + k] >= 2**k) for k in range(s)]
        for k in range(s, n):
            bits.append(bits[k - s])
            for t in range(1, s):
                bits[k] ^= bits[k - s + t] & (code >> (t - 1))
        self.out[row * n:row * n + len(bits)] = bits


def matrix(directions, d, stride, out, codes, degrees):
    d, stride = integer64(d), integer64(stride)
    d = 0 if d < 1 else size(d, 1)
    made = Matrices(directions, out, codes, degrees, d)
    for row in range(d):
        made.check(row, d, stride)
    for row in range(d):
        made.row(row, d, stride)
    return made.out


def matrix_row(directions, row, n, stride, out, codes, degrees):
    row = size(integer64(row), 1) - 1
    n = size(integer64(n), -2**31)
    stride = integer64(stride)
    made = Matrices(directions, out, codes, degrees, row + 1)
    made.check(row, n, stride)
    made.row(row, n, stride)
    return made.out


ODD_VALUES = [None, 2.0, 0, 1, 3, -1, 64, 2**31, 2**40, 2**62, 2**70, Name("x"), True, [1, 2],
              Array("anything", [(1, 2)], [1, 2]), Array("integer[4]", [(1, 3)], [1, 2, 3]),
              Array("integer[8]", [(1, 2), (1, 2)], [1, 2, 3, 4]),
              Array("integer[8]", [(1, 9)], [1] * 9), Array("float[8]", [(1, 2)], [0.0, 0.0]),
              Array("integer[4]", [(1, 3)], [1, 1, 1], storage="sparse"),
              Array("integer[8]", [(1, 2), (1, 9)], [1] * 18, storage="sparse"),
              Array("float[8]", [(1, 9)], [0.0] * 9, storage="sparse")]


def changed(random, arguments, share):
    """The arguments, that share of the time with an odd one among them."""
    arguments = list(arguments)
    if random.random() < share:
        arguments[random.randrange(len(arguments))] = random.choice(ODD_VALUES)
    return arguments


def sobol_arguments(random):
    """Near to the least that is accepted."""
    dimension, precision = random.randint(1, 4), random.choice([1, 2, 4, 4, 62] * 3 + [0, 63])
    columns = random.choice([1, 2, 3, precision, precision + 1]) or 1
    rows = random.choice([dimension, dimension, max(dimension - 1, 1), dimension + 3])
    length = dimension + random.choice([-1, 0, 0, 0, 1])
    degrees = [random.choice([0, 1, 1, 2, 3, 5]) for _ in range(length)]
    return [dimension, 0, integers(random, degrees), integers(random, [1] * length),
            integers(random, [1] * (rows * columns), 64, columns), precision]


def new_streams(random):
    arguments = sobol_arguments(random)
    if random.random() < 0.3:
        arguments = random.choice([[random.choice([-1, 0, 1, 2, 105097566]), 1], [2, 3],
                                   [random.choice([0, 1, 2, 4, 2**28 + 1]), 2]])
    arguments = changed(random, arguments, 0.4)[:random.choice([0, 1, 2, 4, 5] + [9] * 20)]
    yield (f"STATS_QRStreamGetDimension_HW({host.call('STATS_InitializeQRStream_HW', *arguments)})",
           host.expected(dimension_of_new, *arguments))


def draws(random):
    dimension, room = random.randint(1, 3), random.randint(0, 9)
    out = Array("float[8]", [(1, room)], [0.5] * room)
    count = random.choice([-1, 0, room // dimension + 1])
    arguments = changed(random, [Name("h"), count, out], 0.6)
    arguments = arguments[:3 if random.random() < 0.9 or arguments[0] == "h" else 2]
    value = host.expected(drawn, dimension, *arguments)
    if isinstance(value, Raised) or integer64(arguments[1]) < 1:
        yield (f"h := STATS_InitializeQRStream_HW({dimension}, 1): "
               + host.call("STATS_QRStreamNext_HW", *arguments), value)


def handles(random):
    handle = random.choice([v for v in ODD_VALUES if not isinstance(v, list)])
    entry = random.choice(["ResetQRStream", "TerminateQRStream", "QRStreamSkip",
                           "QRStreamGetDimension", "QRStreamGetOptions"])
    arguments = [handle]
    if entry.startswith("QR"):  # not the sequence itself
        arguments.append(1)
    yield host.call(f"STATS_{entry}_HW", *arguments), no_stream(handle)


def matrices(random):
    """The tables after a call stand in O, which is sometimes one of the others as well."""
    rows = random.randint(1, 6)
    stride = random.choice([0, 1, 3, 5, 8, 64])
    block = [random.choice([random.randint(0, 40), random.getrandbits(63), -5])
             for _ in range(rows * stride + random.choice([0, 0, 1, -1]) * (stride > 0))]
    degrees = [random.choice([1, 2, 3, 5, max(stride, 1)]) for _ in range(rows)]
    degrees[random.randrange(rows)] = random.choice([1, 1, 1, 0, -1])
    codes = [random.getrandbits(8) for _ in range(rows)]
    if random.random() < 0.2:  # nothing is read of them for a single row
        random.choice([codes, degrees]).pop()
    n = random.choice([0, -1, -3, 1, 1, 2, 4, 7, rows])
    room = max(rows * n, rows * rows, 1) + random.choice([0, 0, 3, -1])
    out = integers(random, [-7] * room)
    directions, codes, degrees = [integers(random, block, 64), integers(random, codes),
                                  integers(random, degrees)]
    alias = random.random() < 0.1
    if alias:
        out = degrees
    if random.random() < 0.5:
        entry, model = "STATS_QRStreamGenBinaryMatrix_HW", matrix
        arguments = [directions, rows, stride, out, codes, degrees]
    else:
        entry, model = "STATS_QRStreamGenBinaryMatrixRow_HW", matrix_row
        arguments = [directions, random.randint(1, rows), n, stride, out, codes, degrees]
    if not alias:
        arguments = changed(random, arguments, 0.15)
        out = arguments[4 if model is matrix_row else 3]
    value = host.expected(model, *arguments)
    texts = [Name("O") if a is out else a for a in arguments]
    before = f"O := {host.to_text(out)}: "
    if isinstance(value, Raised):
        yield before + host.call(entry, *texts), value
        yield "O", out
    else:
        after = Array(out.datatype, out.bounds, value, out.order)
        yield before + f"[{host.call(entry, *texts)}, O]", [None, after]


def calls(random):
    while True:
        for part in new_streams, new_streams, draws, matrices, matrices, handles:
            yield from part(random)


if __name__ == "__main__":
    host.main(calls)
