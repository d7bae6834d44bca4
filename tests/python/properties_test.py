"""The properties that the functions have in C++ (tests/functions/statistics_test.cpp), through Python."""

import math
import pathlib

import numpy as np
import pytest

import vexel as vx

DATA = pathlib.Path(__file__).parent.parent / "reference" / "data"
if not DATA.exists():
    pytest.skip("no reference data", allow_module_level=True)
ULP = 2.0 ** -52
PARTNER = np.random.default_rng(3).integers(0, 7, 200).astype(float)


class Statistic:
    """A row of the table: name; power of the scale, how it follows a shift, ulps of the references; call."""

    def __init__(self, line):
        self.name, how, what, options = (part.strip() for part in line.split(";"))
        scale, self.shift, ulps = how.split()
        self.scale, self.ulps = int(scale), float(ulps)
        self.function, _, self.part = what.partition(".")
        self.paired = options.startswith("y")
        self.options = eval(f"dict({options.removeprefix('y').lstrip(', ')})")

    def __call__(self, x, w=None, policy="propagate", y=None):
        pair = [PARTNER[:len(x)] if y is None else y] if self.paired else []
        found = getattr(vx, self.function)(x, *pair, weights=w, nan_policy=policy, **self.options)
        return getattr(found, self.part) if self.part else found


TABLE = {s.name: s for s in map(Statistic, (DATA / "statistic_properties.txt").read_text().splitlines())}


def points(n, seed):
    """Positive multiples of 1/8 with ties, so that shifts and scales are exact."""
    return np.random.default_rng(seed).integers(1, 401, n) / 8


def near(value, expected, ulps):
    if math.isnan(expected):
        return math.isnan(value)
    return value == expected or abs(value - expected) <= ulps * ULP * abs(expected)


@pytest.mark.parametrize("s", TABLE.values(), ids=TABLE)
def test_permutation_scale_and_shift(s):
    for n in (5, 40, 150):
        x = points(n, 1)
        value = s(x)
        assert isinstance(value, float)
        if not s.paired:
            assert near(s(np.random.default_rng(2).permutation(x)), value, 8)
        for exponent in (10, 900, -900):
            try:
                expected = math.ldexp(value, exponent * s.scale)
            except OverflowError:
                expected = math.copysign(math.inf, value)
            tiny = abs(expected) < 2.0 ** -1022
            assert near(s(np.ldexp(x, exponent)), expected, 0 if tiny else 4)
        if s.shift != "other":
            assert near(s(x + 2.0 ** 30), value + (2.0 ** 30 if s.shift == "follows" else 0), 64)


@pytest.mark.parametrize("s", TABLE.values(), ids=TABLE)
def test_weights_missing_and_nothing(s):
    for n in (4, 40, 110):
        x, w = points(n, 4), np.random.default_rng(5).integers(0, 3, n).astype(float)
        w[1] = 2
        times = w.astype(int)
        assert near(s(x, w), s(np.repeat(x, times), y=np.repeat(PARTNER[:n], times)), 16)
    x, w = points(30, 6), np.full(30, 2.0)
    holes, weight_holes = x.copy(), w.copy()
    holes[29] = weight_holes[29] = np.nan
    for data, weights in ((holes, None), (holes, w), (np.full(30, 1.5), weight_holes)):
        assert math.isnan(s(data, weights))
        with pytest.raises(ValueError):
            s(data, weights, "raise")
    assert near(s(holes, None, "omit"), s(x[:29]), 2)
    for weights in (w, weight_holes):
        assert near(s(holes, weights, "omit"), s(x[:29], w[:29]), 2)
    for nothing in ([], [math.nan] * 3):
        assert math.isnan(s(np.array(nothing), None, "omit"))
    for bad in ([0, 0], [1, -1], [1, math.inf], [1]):
        with pytest.raises(ValueError):
            s(np.array([1.0, 2.0]), np.array(bad, dtype=float))


@pytest.mark.parametrize("s", TABLE.values(), ids=TABLE)
def test_element_types_and_strides(s):
    whole = np.random.default_rng(8).integers(1, 1001, 160)
    expected = s(whole.astype(float))
    apart = np.zeros(480)
    apart[::-3] = whole
    for data in (*map(whole.astype, ("int32", "float32", "int64", "int16", ">f8")), apart[::-3], whole.tolist(),
                 np.ma.array(whole)):
        assert s(data) == expected


def test_references():
    samples, rows = {}, 0
    for line in (DATA / "statistics.txt").read_text().splitlines():
        function, names, *words = line.split()
        if function == "sample":
            samples[names.removesuffix(":")] = np.array(words, dtype=float)
            continue
        if function not in TABLE:
            continue  # of the states
        s, expected = TABLE[function], float(words[-1])
        names, _, weights = names.partition("/")
        x, _, y = names.partition(",")
        w = samples[weights] if weights else None
        value = s(samples[x], w, y=samples[y] if y else None)
        size = abs(expected)
        if s.name in ("moment3", "moment7"):  # odd ones are good beside the terms that cancel in them
            size = vx.moment(samples[x], s.scale + 1, weights=w) ** (s.scale / (s.scale + 1))
        elif s.paired or s.scale == 0:
            size = max(1.0, size)
        assert abs(value - expected) <= s.ulps * ULP * size, line
        rows += 1
    assert rows > 150
