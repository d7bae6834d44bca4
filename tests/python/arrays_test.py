"""The array door: what numbers come in as, and what is refused."""

import numpy as np
import pytest

from vexel import _arrays


@pytest.mark.parametrize("given, expected", [
    ([1, None, 2.5], [1, np.nan, 2.5]),
    (np.ma.array([1.0, 2.0, 3.0], mask=[False, True, False]), [1, np.nan, 3]),
    (np.array([1, 2], "uint8"), [1, 2]),
    (np.array([True, False]), [1, 0]),
    (np.array([1.5, 2], ">f8"), [1.5, 2]),
    (np.array([1.5, 2], "f2"), [1.5, 2]),
    (np.array([2**63, 1], "u8"), [2.0**63, 1]),
    (range(3), [0, 1, 2]),
    ((i / 2 for i in range(3)), [0, 0.5, 1]),
])
def test_conversions(given, expected):
    np.testing.assert_array_equal(_arrays.convert(given, "x"), expected)


@pytest.mark.parametrize("given", ["text", np.array([1j]), np.array(["a"]), {1: 2}, object(),
                                   np.array(["2020-01-01"], "M8[D]"), [1, "a"]])
def test_refusals(given):
    with pytest.raises(TypeError, match="^x: numbers are expected"):
        _arrays.convert(given, "x")
