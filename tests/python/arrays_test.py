"""The array door: what numbers come in as, without a copy where there is one, and what is refused."""

import ctypes
import importlib.util
from functools import partial

import numpy as np
import pandas as pd
import pytest

import vexel as vx
from vexel import _arrays


@pytest.mark.parametrize("given, expected", [
    ([1, None, 2.5], [1, np.nan, 2.5]),
    (np.ma.array([1.0, 2.0, 3.0], mask=[False, True, False]), [1, np.nan, 3]),
    (np.array([1, 2], "uint8"), [1, 2]),
    (np.array([True, False]), [1, 0]),
    (np.array([1.5, 2], ">f8"), [1.5, 2]),
    (np.array([1.5, 2], "f2"), [1.5, 2]),
    (np.array([1.5, 2], "g"), [1.5, 2]),
    (np.array([2**63, 1], "u8"), [2.0**63, 1]),
    (range(3), [0, 1, 2]),
    ({"a": 1, "b": 2.5}.values(), [1, 2.5]),
    ((i / 2 for i in range(3)), [0, 0.5, 1]),
    (memoryview(np.arange(3.0)), [0, 1, 2]),
    ((ctypes.c_double * 2)(1, 2), [1, 2]),
    (pd.Series([1.0, None, 2]), [1, np.nan, 2]),
    (pd.Series([1, None, 2], dtype="Int64"), [1, np.nan, 2]),
    (pd.Series([True, None], dtype="boolean"), [1, np.nan]),
    (pd.Series([1.5, None], dtype="Float32"), [1.5, np.nan]),
    (pd.DataFrame({"a": [1, 2], "b": [3.5, None]}), [[1, 3.5], [2, np.nan]]),
    (pd.Index([1, 2]), [1, 2]),
    (np.float64(3), 3),
    (np.array(4), 4),
    (np.zeros(3, [("a", "i1"), ("b", "f8")])["b"], [0, 0, 0]),
])
def test_conversions(given, expected):
    np.testing.assert_array_equal(_arrays.convert(given, "x"), expected)


@pytest.mark.parametrize("given", ["text", np.array([1j]), np.array(["a"]), {1: 2}, object(),
                                   np.array(["2020-01-01"], "M8[D]"), [1, "a"], pd.Series(["a"]),
                                   pd.Series(["a", "b"], dtype="category")])
def test_refusals(given):
    with pytest.raises(TypeError, match="^x must be numbers"):
        _arrays.convert(given, "x")


def test_functions_take_what_numpy_takes():
    x = [4.0, 1, 3]
    for given in (x, tuple(x), np.array(x), np.array(x)[::-1], np.array([x, x])[0], np.array([x, x]).T[:, 1], pd.Series(x),
                  np.ma.array(x), np.array(x, "f4"), memoryview(np.array(x)), iter(x)):
        assert vx.mean(given) == 8 / 3
    assert vx.mean(5) == vx.mean(np.array(5)) == vx.median(np.float32(5)) == 5
    assert vx.Normal().cdf(np.array(0.0)) == 0.5 and type(vx.Normal().cdf(np.float64(0))) is float


def test_out_may_overlap_the_data():
    rng = np.random.default_rng(1)
    functions = {"moving": lambda x, **k: vx.moving(x, 3, "median", **k), "cumulative": vx.cumulative, "sort": vx.sort,
                 "filter": lambda x, **k: vx.filter(x, [0.5, 0.25], **k), "winsorize": lambda x, **k: vx.winsorize(x, 0.2, **k),
                 "rank": vx.rank, "cdf": vx.Normal().cdf, "moving weights": None}
    functions["moving weights"] = lambda x, **k: vx.moving(np.arange(len(x)) * 1.0, 2, weights=x, **k)
    for name, f in functions.items():
        axes = [None] if name == "moving weights" else [None, 0, 1]
        for axis in axes:
            whole = rng.random((7, 6) if axis is not None else 42)
            given = {} if axis is None or name == "cdf" else {"axis": axis}
            for x, out in ((np.s_[:], np.s_[:]), (np.s_[:-1], np.s_[1:]), (np.s_[1:], np.s_[:-1]), (np.s_[::-1], np.s_[:])):
                memory = whole.copy()
                expected = f(whole[x], **given)
                assert f(memory[x], out=memory[out], **given) is not None
                np.testing.assert_array_equal(memory[out], expected, err_msg=f"{name}, axis {axis}")
    z = np.arange(6.0).reshape(2, 3)
    vx.sort(z[:, ::-1], axis=0, out=z)
    assert z.tolist() == [[2, 1, 0], [5, 4, 3]]


@pytest.mark.parametrize("kind", ["f8", "f4", "i8", "i4"])
def test_columns_have_the_bits_of_columns_alone(kind):
    whole = (np.random.default_rng(1).normal(size=(700, 38)) * 50).astype(kind)
    weights = np.random.default_rng(2).integers(0, 3, whole.shape)
    views = [whole, whole[:, ::2], whole[::-1, 1:36], whole[3:, ::-1], whole[:, :5], np.asfortranarray(whole)]
    if kind[0] == "f":
        views.append(np.where(weights > 0, whole, np.nan))
    functions = [vx.mean, vx.var, vx.std, vx.skewness, vx.median, partial(vx.mean, kind="quadratic"), partial(vx.quantile, q=0.3)]
    for x in views:
        w = weights[:len(x), :x.shape[1]]
        for f in functions:
            assert np.array_equal(f(x, axis=0), [f(x[:, j].copy()) for j in range(x.shape[1])], equal_nan=True)
            assert np.array_equal(f(x, axis=0, weights=w, nan_policy="omit"),
                                  [f(x[:, j].copy(), weights=w[:, j].copy(), nan_policy="omit") for j in range(x.shape[1])], equal_nan=True)
        for f in (vx.sort, vx.rank, partial(vx.cumulative, nan_policy="omit")):
            assert np.array_equal(f(x, axis=0), np.stack([f(x[:, j].copy()) for j in range(x.shape[1])], axis=1), equal_nan=True)
    cube = whole[:, :36].reshape(70, 10, 36)
    for axis in (0, 1, 2):
        lanes = np.moveaxis(cube, axis, -1).reshape(-1, cube.shape[axis])
        assert vx.var(cube, axis=axis).ravel().tolist() == [vx.var(lane.copy()) for lane in lanes]


@pytest.mark.parametrize("kind", ["f8", "f4", "i8", "i4"])
def test_orders_of_lanes_have_the_bits_of_lanes_alone(kind):
    generator = np.random.default_rng(3)
    functions = [vx.median, vx.iqr, partial(vx.quantile, q=0), partial(vx.quantile, q=[1, 0]), partial(vx.median_absolute_deviation, scale=1.5),
                 partial(vx.quantile, q=[0.1, 0.5, np.nan], method="weibull"), partial(vx.order_statistic, k=2), lambda x, **more: np.array(vx.five_number(x, **more))]
    for shape in ((30, 5), (5, 30), (600, 17), (17, 600), (6, 20, 40), (90, 3, 5)):
        x = np.round(3 * generator.normal(size=shape), 1) if kind[0] == "f" else 1e8 * generator.normal(size=shape)
        if kind[0] == "f":
            x[generator.random(shape) < 0.02] = np.nan
            x[generator.random(shape) < 0.3] *= 0.0
            x[generator.random(shape) < 0.1] = -np.inf
        x = (x * 1e9 if kind == "i8" else x).astype(kind)
        for view in (x, x[::-1, ..., ::-1], np.repeat(x, 2, -1)[..., ::2], np.asfortranarray(x)):
            for axis in range(view.ndim):
                lanes = np.moveaxis(view, axis, -1).reshape(-1, view.shape[axis])
                for f in functions:
                    for policy in ("propagate", "omit"):
                        found = f(view, axis=axis, nan_policy=policy)
                        expected = np.array([f(lane.copy(), nan_policy=policy) for lane in lanes]).T
                        assert found.size == expected.size
                        found = found.reshape(expected.shape)
                        np.testing.assert_array_equal(found, expected)
                        np.testing.assert_array_equal(np.signbit(found[found == 0]), np.signbit(expected[found == 0]))
                for f in (vx.sort, vx.argsort, vx.rank, partial(vx.rank, method="dense")):
                    expected = np.array([f(lane.copy()) for lane in lanes])
                    for out in (None, np.asfortranarray(f(view, axis=axis)), np.repeat(f(view, axis=axis), 2, 0)[::2]):
                        found = f(view, axis=axis, out=out)
                        np.testing.assert_array_equal(np.moveaxis(found, axis, -1).reshape(expected.shape), expected)


def test_large_unsigned_numbers_are_ordered_exactly():
    x = np.array([2**63 + 1, 2**63, 2**64 - 1, 5], "uint64")
    assert vx.rank(x).tolist() == [3, 2, 4, 1] and vx.argsort(x).tolist() == [3, 1, 0, 2]
    assert vx.sort(x).tolist() == sorted(x.tolist()) and vx.sort(x).dtype == np.uint64
    assert vx.tally(np.append(x, x[:1])).values.tolist() == sorted(x.tolist())
    assert vx.trim(x, 0.25).tolist() == [2**63 + 1, 2**63]
    assert vx.winsorize(x, 0.25).tolist() == [2**63 + 1, 2**63, 2**63 + 1, 2**63]
    columns = [pd.Series(x), pd.Series(x, dtype="UInt64"), pd.Index(x)]
    if importlib.util.find_spec("pyarrow"):
        import pyarrow as pa

        columns += [pa.array(x), pa.chunked_array([x[:1], x[1:]])]
    for column in columns:
        for f in (vx.sort, vx.rank, vx.argsort, lambda x: vx.tally(x).values, lambda x: vx.winsorize(x, 0.25), vx.mean):
            found, expected = np.asarray(f(column)), np.asarray(f(x))
            assert found.dtype == expected.dtype and np.array_equal(found, expected)
    assert vx.sort(pd.Series([2**53 + 1, 2**53], dtype="Int64")).tolist() == [2**53, 2**53 + 1]
    assert vx.sort([2**63 + 1, -1, 2**63]).tolist() == [-1, 2**63, 2**63 + 1] and vx.rank((2**63 + 1, -1, 2**63)).tolist() == [3, 1, 2]
    vx.sort(x, out=x)
    assert x.tolist() == [5, 2**63, 2**63 + 1, 2**64 - 1]


def test_arrow_columns():
    pa = pytest.importorskip("pyarrow")
    column = pa.array([1.5, None, 4], pa.float64())
    np.testing.assert_array_equal(_arrays.convert(column, "x"), [1.5, np.nan, 4])
    for kind in ("int8", "uint16", "int32", "uint64", "float32", "float16", "bool_"):
        values = np.array([1, 0, 1]).astype(kind.rstrip("_"))
        np.testing.assert_array_equal(_arrays.convert(pa.array(values), "x"), values)
    whole = pa.array(np.arange(10.0))
    view = _arrays.convert(whole[3:7], "x")
    assert view.__array_interface__["data"][0] == whole.buffers()[1].address + 24 and not view.flags.writeable
    chunked = pa.chunked_array([[1, 2], [None], [3]])
    np.testing.assert_array_equal(_arrays.convert(chunked, "x"), [1, 2, np.nan, 3])
    table = pa.table({"a": [1, 2], "b": [0.5, None]})
    np.testing.assert_array_equal(_arrays.convert(table, "x"), [[1, 0.5], [2, np.nan]])
    del whole, column, chunked, table
    assert view.tolist() == [3, 4, 5, 6]
    with pytest.raises(TypeError, match="^x must be numbers"):
        vx.mean(pa.array(["a"]))


def test_polars_columns():
    pl = pytest.importorskip("polars")
    frame = pl.DataFrame({"a": [1, 2, None], "b": [0.5, 1, 1.5]})
    assert vx.mean(frame["a"], nan_policy="omit") == 1.5 and vx.mean(frame["b"]) == 1
    assert vx.mean(frame, axis=0, nan_policy="omit").tolist() == [1.5, 1]
