"""Functions on data through arrays of every kind: shapes as NumPy's, policies, weights, no copies."""

import glob
import os
from fractions import Fraction

import numpy as np
import pytest
from hypothesis import given
from hypothesis import strategies as st
from hypothesis.extra import numpy as hnp

import vexel as vx

# A function, and what NumPy gives for the same call.
REDUCTIONS = {
    "mean": (vx.mean, np.mean), "median": (vx.median, np.median),
    "var": (vx.var, lambda x, **k: np.var(x, ddof=1, **k)),
    "std": (lambda x, **k: vx.std(x, ddof=0, **k), np.std),
    "moment": (lambda x, **k: vx.moment(x, 2, **k), np.var),
    "quantile": (lambda x, **k: vx.quantile(x, 0.3, **k), lambda x, **k: np.quantile(x, 0.3, **k)),
    "quantiles": (lambda x, **k: vx.quantile(x, [[0.1, 0.5], [0.7, 1]], **k),
                  lambda x, **k: np.quantile(x, [[0.1, 0.5], [0.7, 1]], **k)),
}
MAPS = {
    "sort": (vx.sort, np.sort), "argsort": (vx.argsort, lambda x, **k: np.argsort(x, kind="stable", **k)),
    "cumulative": (vx.cumulative, np.cumsum),
    "cumulative max": (lambda x, **k: vx.cumulative(x, kind="max", **k), np.maximum.accumulate),
}
DTYPES = st.sampled_from(["f8", "f4", "i4", "i8", "u1", "i2", ">f8", "?"])


@st.composite
def arrays(draw, dims=st.integers(1, 4)):
    """Arrays of small numbers: any type, order and strides, without and with negative ones."""
    shape = tuple(draw(st.lists(st.integers(2, 4), min_size=draw(dims), max_size=4)))
    x = draw(hnp.arrays(draw(DTYPES), shape, elements=st.integers(0, 1)))
    x = x + np.arange(x.size, dtype=x.dtype).reshape(shape) if x.dtype != bool else x
    x = np.asarray(x, order=draw(st.sampled_from("CF")))
    steps = tuple(slice(None, None, draw(st.sampled_from([1, -1, 2]))) for _ in shape)
    return np.transpose(x, draw(st.permutations(range(x.ndim))))[steps]


def close(ours, theirs):
    np.testing.assert_allclose(ours, theirs, rtol=1e-6 if np.asarray(theirs).dtype == "f4" else 1e-12, atol=1e-12)
    assert np.shape(ours) == np.shape(theirs)


@pytest.mark.filterwarnings("ignore")
@pytest.mark.parametrize("name", REDUCTIONS)
@given(x=arrays(), data=st.data())
def test_reductions_have_numpys_shapes(name, x, data):
    ours, theirs = REDUCTIONS[name]
    axis = data.draw(st.one_of(st.none(), st.integers(-x.ndim, x.ndim - 1), st.just(tuple(range(x.ndim))[::2])))
    keepdims = data.draw(st.booleans())
    result = ours(x, axis=axis, keepdims=keepdims)
    expected = theirs(x.astype("f8"), axis=axis, keepdims=keepdims)
    close(result, expected)
    if np.ndim(expected) == 0 and not keepdims:
        assert type(result) is float
    else:
        out = np.full(np.shape(expected) * 1, 7.0, order="F")
        assert ours(x, axis=axis, keepdims=keepdims, out=out) is out
        close(out, expected)


@pytest.mark.parametrize("name", MAPS)
@given(x=arrays(), data=st.data())
def test_maps_have_numpys_shapes(name, x, data):
    if x.dtype == bool:
        x = x.astype("i4")
    ours, theirs = MAPS[name]
    axis = data.draw(st.one_of(st.integers(-x.ndim, x.ndim - 1), st.none() if name != "cumulative max" else st.just(0)))
    expected = theirs(x.astype("f8") if name.startswith("cum") else x, axis=axis)
    close(ours(x, axis=axis), expected)


def test_element_types():
    for dtype in ("f8", "f4", "i4", "i8"):
        x = np.array([3, 1, 2, 1], dtype)
        assert vx.sort(x).dtype == vx.tally(x).values.dtype == vx.trim(x, 0.25).dtype == dtype
        assert vx.winsorize(x, 0.25).dtype == dtype and vx.rank(x).dtype == "f8"
    for dtype in ("i1", "u1", "i2", "u2", "u4", "u8", "f2", "?"):
        x = np.array([1, 0, 1, 1], dtype)
        out = np.empty(4, dtype)
        assert vx.sort(x, out=out) is out and out.tolist() == [0, 1, 1, 1]
        assert vx.winsorize(x, 0.25, out=out) is out and out.tolist() == [1, 1, 1, 1]
        assert vx.sort(x).dtype == vx.tally(x).values.dtype == vx.trim(x, 0.25).dtype == vx.winsorize(x, 0).dtype == dtype
    big = np.array([2**62 + 1, 2**62])
    assert vx.sort(big).tolist() == [2**62, 2**62 + 1] and vx.sort([3, 1]).dtype == "i8"


@pytest.mark.parametrize("f", [vx.mean, vx.median, vx.std, vx.skewness, vx.iqr, vx.mode, vx.mean_absolute_deviation,
                               lambda x, **k: vx.quantile(x, 0.3, **k), lambda x, **k: vx.trimmed_mean(x, 0.1, **k)])
@given(pairs=st.lists(st.tuples(st.integers(-50, 50), st.integers(0, 3)), min_size=3, max_size=30))
def test_whole_weights_repeat(f, pairs):
    x, w = np.array(pairs, dtype=float).T
    if w.sum() < 4:
        return
    repeated = np.repeat(x, w.astype(int))
    expected = f(repeated)
    np.testing.assert_allclose(f(x, weights=w), expected, rtol=1e-12, atol=1e-12)
    both = np.vstack([x, x[::-1]])
    np.testing.assert_allclose(f(both, axis=1, weights=np.vstack([w, w[::-1]])), [expected] * 2, rtol=1e-12, atol=1e-12)
    np.testing.assert_allclose(f(both[:1], axis=1, weights=w), [expected], rtol=1e-12, atol=1e-12)


@pytest.mark.parametrize("f", [vx.mean, vx.median, vx.var, vx.kurtosis, lambda x, **k: vx.quantile(x, [0.3, 0.6], **k)])
def test_policies(f):
    x = [1.0, np.nan, 2, 5, 9]
    assert np.isnan(f(x)).all()
    np.testing.assert_array_equal(f(x, nan_policy="omit"), f([1, 2, 5, 9]))
    with pytest.raises(ValueError):
        f(x, nan_policy="raise")
    with pytest.raises(ValueError, match="nan_policy must be"):
        f(x, nan_policy="ignore")
    assert np.isnan(f([])).all() and np.isnan(f([np.nan], nan_policy="omit")).all()
    w = [1, 1, np.nan, 1, 1]
    np.testing.assert_array_equal(f(x, weights=w, nan_policy="omit"), f([1, 5, 9]))
    for bad in ([-1, 1, 1, 1, 1], [0] * 5, [np.inf, 1, 1, 1, 1], [1, 2]):
        with pytest.raises(ValueError):
            f([1, 2, 3, 4, 5], weights=bad)


@pytest.mark.parametrize("call, error, text", [
    (lambda: vx.mean([[1, 2]], axis=2), ValueError, "axis must be -2 to 1"),
    (lambda: vx.mean([[1, 2]], axis=(0, 0)), ValueError, "axis"),
    (lambda: vx.mean("text"), TypeError, "x must be numbers, got"),
    (lambda: vx.mean([1j]), TypeError, "x must be numbers"),
    (lambda: vx.quantile([1, 2], 1.5), ValueError, "1.5"),
    (lambda: vx.quantile([1, 2], 0.5, method="best"), ValueError, 'method must be "linear"'),
    (lambda: vx.mean([1, 2], out=np.empty(3)), ValueError, r"out must be of shape \(\), got \(3,\)"),
    (lambda: vx.cumulative([1, 2], out=np.empty(2, "f4")), ValueError, "out must be a writable array of float64"),
    (lambda: vx.cumulative([1, 2], out=[0, 0]), TypeError, "out must be a NumPy array"),
    (lambda: vx.cov([1, 2, 3]), ValueError, "x must be a matrix"),
    (lambda: vx.moving([1, 2], 0), ValueError, "window must be at least 1"),
    (lambda: vx.trimmed_mean([1, 2], (0.1,)), ValueError, "^cut must be"),
    (lambda: vx.trimmed_mean([1, 2], np.array([0.1, 0.2, 0.3])), ValueError, "^cut must be"),
    (lambda: vx.Random(-1), ValueError, r"seed must be 0 to 2\^64 - 1"),
    (lambda: vx.Random(2**64), ValueError, "seed"),
    (lambda: vx.Random("a"), TypeError, "seed"),
])
def test_errors_name_parameter_and_value(call, error, text):
    with pytest.raises(error, match=text):
        call()


def test_an_axis_in_a_tuple_is_that_axis():
    x = np.arange(12.0).reshape(3, 4) ** 2
    for axis, weights in ((0, [1, 0, 3]), (1, [1, 2, 0, 1])):
        np.testing.assert_array_equal(vx.var(x, axis=(axis,), weights=weights), vx.var(x, axis=axis, weights=weights))
    for shape, axis, result in (((5, 0, 2), (0,), (0, 2)), ((5, 0, 2), (1, 2), (5,)), ((0, 3, 0), (1, 2), (0,))):
        np.testing.assert_array_equal(vx.mean(np.empty(shape), axis=axis), np.full(result, np.nan))


def test_one_number_is_a_mean_to_test_against():
    x = [1.0, 2, 4, 4, 9]
    for number in (2, np.float64(2), np.int64(2), np.float32(2), np.array(2.0), Fraction(2)):
        assert vx.t_test(x, number) == vx.t_test(x, mean=2)
    for y in (2, x):
        with pytest.raises(ValueError, match="mean must be left out"):
            vx.t_test(x, y, mean=1)


def test_errors_never_print_arrays():
    x = np.arange(1000.0)
    for call in (lambda: vx.mean(x, weights=-x), lambda: vx.mean(x.astype(complex)), lambda: vx.mean(x, out=x),
                 lambda: vx.histogram(x, x[::-1]), lambda: vx.quantile(x, x), lambda: vx.mean(list(x) + ["a"])):
        with pytest.raises((ValueError, TypeError)) as info:
            call()
        assert len(str(info.value)) < 250


def test_certified_statistics():
    here = os.path.dirname(__file__)
    files = glob.glob(os.path.join(here, "..", "reference", "data", "nist", "*.txt"))
    for path in files:
        with open(path) as file:
            head, data = file.read().split("# data\n")
        mean, std, lag = (float(line.rsplit(": ", 1)[1]) for line in head.splitlines()[1:])  # of these very doubles
        x = np.array(data.split(), float)
        found = vx.describe(x)
        np.testing.assert_allclose([found.mean, found.std, vx.autocorrelation(x, 1)[1]], [mean, std, lag], rtol=2**-52)
    assert len(files) == 9


def test_inputs_are_viewed_not_changed():
    x = np.arange(10.0)[::-1]
    x.setflags(write=False)
    before = x.copy()
    for f in (vx.sort, vx.median, vx.rank, vx.describe, vx.shapiro, vx.kde, vx.tally, lambda v: vx.quantile(v, [0.2, 0.4])):
        f(x)
    np.testing.assert_array_equal(x, before)


def test_exact_numbers():
    from decimal import Decimal
    import pandas as pd
    import sympy

    third = Fraction(1, 3)
    x = np.array([third + Fraction(1, 10**40), Decimal("0.5"), third, 2**80 + 1, 2**80, sympy.Rational(1, 3), None], object)
    assert vx.argsort(x).tolist() == [2, 5, 0, 1, 4, 3, 6]
    np.testing.assert_array_equal(vx.rank(x), [3, 4, 1.5, 6, 5, 1.5, np.nan])
    t = vx.tally(x)
    assert list(t.values) == [third, x[0], Decimal("0.5"), 2**80, 2**80 + 1] and t.counts.tolist() == [2, 1, 1, 1, 1]
    assert t.missing == 1
    assert vx.sort([sympy.pi, sympy.sqrt(10), 3]).tolist() == [3, sympy.pi, sympy.sqrt(10)]
    assert vx.mean([third, Fraction(2, 3)]) == 0.5
    big, table = 10**30, np.array([[third, Fraction(1, 4)], [Fraction(1, 5), None]], object)
    assert vx.rank([[big + 1, big]]).tolist() == [[2, 1]] and vx.argsort([[big + 1, big]]).tolist() == [[1, 0]]
    assert vx.tally([[big + 1, big]]).values.tolist() == [big, big + 1]
    assert vx.sort(table).tolist() == [[Fraction(1, 4), third], [Fraction(1, 5), None]]
    assert vx.sort(table, axis=0).tolist() == [[Fraction(1, 5), Fraction(1, 4)], [third, None]]
    assert vx.sort(table, axis=None).tolist() == [Fraction(1, 5), Fraction(1, 4), third, None]
    assert vx.sort(pd.Series(table[0])).tolist() == vx.sort(pd.DataFrame(table[:1]))[0].tolist() == [Fraction(1, 4), third]
    assert vx.rank([2**53 + 1, 2.0**53]).tolist() == [2, 1] and vx.sort([[2**53 + 1, 2.0**53]]).tolist() == [[2**53, 2**53 + 1]]
    assert vx.sort([2, 1e300]).dtype == np.float64
    assert vx.sort(np.ma.array([third, third], object, mask=[1, 0])).tolist() == [third, None]
    one = sympy.sin(1) ** 2 + sympy.cos(1) ** 2
    assert vx.tally([one, 1]).counts.tolist() == [2] and vx.sort([1, one, third]).tolist() == [third, 1, one]
    with pytest.raises(TypeError, match="^x must be"):
        vx.sort([sympy.I, 1])
    with pytest.raises(ValueError, match="^sort: element 1 is missing"):
        vx.sort(table[1], nan_policy="raise")


def test_results_print_draw_and_unpack(tmp_path):
    import matplotlib

    matplotlib.use("Agg")
    x = np.random.default_rng(1).normal(size=200)
    for result in (vx.tally([1, 2, 2]), vx.histogram(x), vx.frequency_table(x, 5), vx.describe(x)):
        assert "<table" in result._repr_html_() and len(str(result).splitlines()) > 1
    for thing in (vx.tally([1, 2, 2]), vx.histogram(x), vx.frequency_table(x, 5), vx.kde(x), vx.moving(x, 5), vx.normal_plot(x),
                  vx.bootstrap(x, rng=1, replicates=99), vx.Normal(), vx.Poisson(3), vx.Empirical([1, 2, 2.5]),
                  vx.Density(lambda t: 1 - abs(t), support=(-1, 1)), vx.Cauchy(), vx.Beta(0.5, 0.5)):
        ax = thing.plot()
        assert thing.plot(ax=ax) is ax
        matplotlib.pyplot.close(ax.figure)
    estimate, error, (low, high), replicates = vx.bootstrap(x, "median", rng=3, replicates=199)
    assert low <= estimate <= high and len(replicates) == 199
    w, p = vx.shapiro(x)
    assert 0.9 < w < 1 and 0 < p <= 1
