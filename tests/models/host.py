"""What the models share: the host's values and random stream, calls and what they must give.

A model computes the result of an entry point a second time, as plainly as it can be said, with the
same order of draws and operations.  Its program makes random calls, gives them to the command and
compares every bit of what comes back:

    python3 tests/models/NAME.py build/bin/vexel [--count N] [--seed S]
"""

import argparse
import json
import math
import random
import struct
import subprocess
import sys
from fractions import Fraction

NAN = math.nan
INFINITY = math.inf
M64 = 2**64 - 1


class Name(str):
    """A host expression by its text, which stands for itself: an unassigned name, sqrt(2), ..."""


class Procedure(Name):
    """A procedure by its text."""


class Raised(Exception):
    """The host error that a call must raise; values are the error's arguments."""

    def __init__(self, message, *values):
        super().__init__(message)
        self.message = message
        self.values = values

    def json(self):
        return {"message": self.message, "args": [to_json(v) for v in self.values]}


class Range(tuple):
    """lo .. hi"""


class Equation(tuple):
    """lhs = rhs"""


class Sequence(list):
    """An expression sequence."""


class Table:
    """A table; keys are one when they print alike, as 2 and 2 but not 2 and 2.0 do."""

    def __init__(self, entries=()):
        self.entries = {}
        for key, value in dict(entries).items():
            self[key] = value

    def __setitem__(self, key, value):
        self.entries[json.dumps(to_json(key))] = (key, value)

    def get(self, key):
        return self.entries.get(json.dumps(to_json(key)), (key, None))[1]

    def json(self):
        return {"table": [to_json(list(entry)) for entry in self.entries.values()]}


class Near(float):
    """A float that a result may miss by the tolerance, in a place of its own or in an array."""

    def __new__(cls, value, tolerance):
        near = super().__new__(cls, value)
        near.tolerance = tolerance
        return near


class Array:
    """An array of the host; elements are in index order, the last index fastest.

    Elements are floats for float types, ints for integer types, complex for complex[8], any host
    value for anything, pairs of host values for complex.
    """

    def __init__(self, datatype, bounds, elements, order="column", storage="rectangular"):
        self.datatype = datatype
        self.bounds = [tuple(b) for b in bounds]
        self.elements = list(elements)
        self.order = order
        self.storage = storage

    def nested(self, encode):
        def level(elements, bounds):
            if len(bounds) == 1:
                return [encode(e) for e in elements]
            extent = bounds[0][1] - bounds[0][0] + 1
            step = len(elements) // extent if extent > 0 else 0
            return [level(elements[i * step:(i + 1) * step], bounds[1:]) for i in range(extent)]
        return level(self.elements, self.bounds) if self.elements else []

    def block(self):
        """The elements as they lie in memory, of two dimensions at most."""
        if self.order == "row" or len(self.bounds) == 1 or not self.elements:
            return list(self.elements)
        step = len(self.elements) // (self.bounds[0][1] - self.bounds[0][0] + 1)
        return [x for j in range(step) for x in self.elements[j::step]]

    def set_block(self, block):
        """Takes the elements as they are to lie in memory."""
        if self.order == "column" and len(self.bounds) == 2:
            rows = self.bounds[0][1] - self.bounds[0][0] + 1
            block = [x for i in range(rows) for x in block[i::rows]]
        self.elements = list(block)

    def text(self):
        def brackets(x):
            return "[" + ", ".join(map(brackets, x)) + "]" if isinstance(x, list) else x

        bounds = ", ".join(f"{lo}..{hi}" for lo, hi in self.bounds)
        values = ", " + brackets(self.nested(to_text)) if self.elements else ""
        return (f"Array({bounds}{values}, datatype = {self.datatype}, order = {self.order}, "
                f"storage = {self.storage})")

    def json(self):
        return {"array": self.nested(to_json), "bounds": [list(b) for b in self.bounds],
                "datatype": self.datatype, "order": self.order, "storage": self.storage}


def vector(values, first=1, datatype="float[8]", **options):
    values = list(values)
    return Array(datatype, [(first, first + len(values) - 1)], values, **options)


def float32(x):
    """x rounded to 32 bits."""
    try:
        return struct.unpack("f", struct.pack("f", x))[0]
    except OverflowError:
        return math.copysign(INFINITY, x)


def to_text(value):
    """The source text of a value, safe as an operand."""
    if value is None:
        return "NULL"
    if isinstance(value, bool):
        return "true" if value else "false"
    if isinstance(value, float):
        if math.isnan(value):
            return "undefined"
        text = repr(value).replace("inf", "infinity")
        return f"({text})" if text[0] == "-" else text
    if isinstance(value, complex):
        return f"Complex({to_text(value.real)}, {to_text(value.imag)})"
    if isinstance(value, Name):
        return str(value)
    if isinstance(value, str):
        return json.dumps(value)
    if isinstance(value, (Array,)):
        return value.text()
    if isinstance(value, Range):
        return f"{to_text(value[0])} .. {to_text(value[1])}"
    if isinstance(value, Equation):
        return f"({to_text(value[0])} = {to_text(value[1])})"
    if isinstance(value, Sequence):
        return "(" + ", ".join(map(to_text, value)) + ")"
    if isinstance(value, list):
        return "[" + ", ".join(map(to_text, value)) + "]"
    if isinstance(value, tuple):
        return f"Complex({to_text(value[0])}, {to_text(value[1])})"
    text = str(value)  # int, Fraction
    return f"({text})" if text[0] == "-" else text


def to_json(value):
    """What json.loads makes of a value's line."""
    if isinstance(value, float) and not math.isfinite(value):
        return {"float": "undefined" if math.isnan(value) else to_text(value).strip("()")}
    if isinstance(value, complex):
        return {"complex": [to_json(value.real), to_json(value.imag)]}
    if isinstance(value, Procedure):
        return {"procedure": str(value)}
    if isinstance(value, (Name, Fraction)):
        return {"expr": str(value)}
    if isinstance(value, (Array, Raised, Table)):
        return value.json()
    if isinstance(value, Range):
        return {"range": [to_json(v) for v in value]}
    if isinstance(value, Equation):
        return {"eq": [to_json(v) for v in value]}
    if isinstance(value, Sequence):
        return {"seq": [to_json(v) for v in value]}
    if isinstance(value, list):
        return [to_json(v) for v in value]
    if isinstance(value, tuple):  # a complex number of two host values
        return {"complex": [to_json(v) for v in value]}
    return value  # None, bool, int, float, str


def same(a, b):
    """b is a to the last bit, but for what is Near; 2 is not 2.0 and 0.0 is not -0.0.

    The entries of a table have no order.
    """
    if isinstance(a, Near):
        return type(b) is float and abs(a - b) <= a.tolerance
    if type(a) is not type(b):
        return False
    if isinstance(a, dict):
        if "table" in a and "table" in b:
            a, b = ({json.dumps(k): v for k, v in table["table"]} for table in (a, b))
        return a.keys() == b.keys() and all(same(a[k], b[k]) for k in a)
    if isinstance(a, list):
        return len(a) == len(b) and all(map(same, a, b))
    if isinstance(a, float):
        return struct.pack("d", a) == struct.pack("d", b)
    return a == b


def call(name, *arguments):
    """The text of a call; Sequence arguments are handed over as they are."""
    return f"{name}({', '.join(map(to_text, arguments))})"


def real(value):
    """An argument as the library's entry points convert it to a double."""
    constants = {"Pi": math.pi, "sqrt(2)": math.sqrt(2.0)}
    if isinstance(value, Name) and value in constants:
        return constants[value]
    if isinstance(value, bool) or not isinstance(value, (int, float, Fraction)):
        raise Raised("unable to evaluate %1 to floating-point", value)
    try:
        return float(value)
    except OverflowError:
        return math.copysign(INFINITY, value)


def integer32(value):
    """An argument as the host converts it to a 32-bit integer."""
    if type(value) is not int or not -2**31 <= value < 2**31:
        raise Raised("an integer of 32 bits expected, received %1", value)
    return value


def integer64(value):
    """An argument as the host converts it to a 64-bit integer."""
    if type(value) is not int or not -2**63 <= value < 2**63:
        raise Raised("an integer of 64 bits expected, received %1", value)
    return value


def boolean(value):
    """An argument as the host converts it to a boolean; 32-bit integers stay what they are."""
    if not isinstance(value, int) or not -2**31 <= value < 2**31:
        raise Raised("true or false expected, received %1", value)
    return int(value)


def expected(function, *arguments, **options):
    """The model's result, or the error it raises."""
    try:
        return function(*arguments, **options)
    except Raised as error:
        return error


class RandomStream:
    """The host's uniform source: xoshiro256++, seeded through SplitMix64."""

    def __init__(self, seed=0):
        self.state = []
        for _ in range(4):
            seed = (seed + 0x9E3779B97F4A7C15) & M64
            z = seed
            z = ((z ^ (z >> 30)) * 0xBF58476D1CE4E5B9) & M64
            z = ((z ^ (z >> 27)) * 0x94D049BB133111EB) & M64
            self.state.append(z ^ (z >> 31))

    def _next(self):
        def rotated(x, k):
            return ((x << k) | (x >> (64 - k))) & M64
        a, b, c, d = self.state
        result = (rotated((a + d) & M64, 23) + a) & M64
        c ^= a
        d ^= b
        self.state = [a ^ d, b ^ c, c ^ ((b << 17) & M64), rotated(d, 45)]
        return result

    def int32(self):
        r = self._next() >> 32
        return r - 2**32 if r >= 2**31 else r

    def double01(self):
        return ((self._next() >> 12) + 0.5) * 2.0**-52


def run(command, statements):
    """The JSON value of each statement's one line; statements end with a semicolon of ours."""
    script = "".join(s + ";\n" for s in statements)
    result = subprocess.run([command, "--quiet", "--json", "-"], input=script, text=True,
                            capture_output=True, timeout=600)
    lines = result.stdout.splitlines()
    if result.returncode not in (0, 1) or len(lines) != len(statements):
        sys.exit(f"{len(lines)} lines for {len(statements)} statements, status {result.returncode}:"
                 f"\n{result.stderr}")
    return [json.loads(line) for line in lines]


def main(calls, count=2000):
    """Compares; calls(random) yields pairs of a statement and the value it must have, for ever.

    A statement may hold others before it, ended by colons; it is followed by a semicolon.
    """
    parser = argparse.ArgumentParser()
    parser.add_argument("command")
    parser.add_argument("--count", type=int, default=count)
    parser.add_argument("--seed", type=int, default=1)
    options = parser.parse_args()
    source = calls(random.Random(options.seed))
    pairs = [next(source) for _ in range(options.count)]
    wrong = 0
    for (statement, value), got in zip(pairs, run(options.command, [p[0] for p in pairs])):
        got.pop("error", None) if isinstance(got, dict) else None
        if not same(to_json(value), got):
            wrong += 1
            if wrong <= 5:
                print(f"{statement};\n  must give {json.dumps(to_json(value))}\n"
                      f"  but gives {json.dumps(got)}")
    print(f"{len(pairs)} calls, {wrong} wrong")
    sys.exit(1 if wrong > 0 else 0)
