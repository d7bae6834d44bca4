"""Everything in the package takes arguments of every kind: random_calls.py, a few thousand of its calls."""

import numpy as np

import random_calls
import vexel as vx


def test_random_calls_raise_what_is_documented():
    outcomes = random_calls.run(3000, 1)
    assert outcomes["FAULT"] == 0 and outcomes["result"] > 500


# Found by these calls.
def test_a_moving_result_is_squeezed():
    assert np.squeeze(vx.moving([[1.0, 2.0]], 1, "mean", axis=1)).tolist() == [1.0, 2.0]
    assert float(vx.moving([3.0], 1, "mean").squeeze()) == 3.0
