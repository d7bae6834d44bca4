"""The recipe of docs/beyond-one-machine.md for Ray, as it stands there."""

import functools
import pathlib
import re

import numpy as np
import pytest

import vexel as vx

ray = pytest.importorskip("ray")

PAGE = pathlib.Path(__file__).resolve().parents[2] / "docs/beyond-one-machine.md"


def recipe(word):
    blocks = re.findall(r"```python\n(.*?)```", PAGE.read_text(encoding="utf-8"), flags=re.DOTALL)
    return next(block for block in blocks if word in block)


def test_ray(monkeypatch):
    monkeypatch.setenv("RAY_USAGE_STATS_ENABLED", "0")
    try:
        ray.init(num_cpus=2, include_dashboard=False, log_to_driver=False, object_store_memory=80 * 2**20)
    except Exception as error:  # it wants sockets, shared memory and several processes
        pytest.skip(f"Ray does not start here: {error}")
    try:
        x = vx.LogNormal(0, 3).sample(100_003, rng=1)
        found = {"ray": ray, "vx": vx, "functools": functools, "pieces": np.array_split(x, 7), "load": np.asarray}
        exec(compile(recipe("@ray.remote"), str(PAGE), "exec"), found)
        assert found["ranks"].result.tolist() == vx.quantile(x, [0.5, 0.999]).tolist()
    finally:
        ray.shutdown()
