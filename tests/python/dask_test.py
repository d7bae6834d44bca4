"""vexel.dask: the bits of one machine for every chunking, and on a cluster that loses a worker."""

import os
import threading
import time

import numpy as np
import pytest

import vexel as vx

da = pytest.importorskip("dask.array")
dd = pytest.importorskip("dask.dataframe")
dask = pytest.importorskip("dask")
vd = pytest.importorskip("vexel.dask")

X = vx.Random(1).normal(20011) * 3 + 100
X[9000] = 1e17
WHOLE = vx.Random(2).integers(0, 4, len(X)).astype(float)
REAL = vx.Random(3).uniform(len(X))

# Where sums of powers are rounded once by the states and more often by the function, the last bits
# may differ: then `near`.
SAME = {
    "mean": {}, "std": {"ddof": 0}, "var": {}, "quantile": {"q": [0, 0.1, 0.5, 1], "method": "hazen"},
    "median": {}, "trimmed_mean": {"cut": (0.1, 0.25)}, "winsorized_mean": {"cut": 0.07}, "mode": {},
    "histogram": {"bins": "auto"}}
NEAR = {
    "skewness": {"bias": False}, "kurtosis": {}, "moment": {"order": [1, 2, 3, 9]}, "describe": {}}


def bits(result):
    return [np.asarray(part, dtype=float).tobytes() for part in
            (result if isinstance(result, tuple) else (result,))]


@pytest.fixture(autouse=True)
def threads():
    with dask.config.set(scheduler="threads", num_workers=2):
        yield


@pytest.mark.parametrize("name", [*SAME, *NEAR])
@pytest.mark.parametrize("weights", [None, WHOLE, REAL], ids=["plain", "whole", "real"])
def test_bits_do_not_depend_on_chunks(name, weights):
    options = {**SAME, **NEAR}[name]
    tame = X < 1e3 if name in ("mode", "moment", "skewness", "kurtosis", "histogram") else X == X
    x = np.floor(X[tame]) if name == "mode" else X[tame]
    w = weights if weights is None else weights[tame]
    one = getattr(vx, name)(x, weights=w, **options)
    found = [bits(getattr(vd, name)(da.from_array(x, chunks=c), weights=w, **options).compute())
             for c in (len(x), 7001, (1, 0, 9000, len(x) - 9001))]
    assert found[1] == found[0] and found[2] == found[0]
    if name in SAME:
        assert found[0] == bits(one)
    else:
        for a, b in zip(found[0], bits(one)):
            np.testing.assert_allclose(np.frombuffer(a), np.frombuffer(b), rtol=1e-12, atol=1e-12)


@pytest.mark.parametrize("name", ["trimmed_mean", "winsorized_mean"])
def test_means_of_the_middle_have_the_bits_of_the_function(name):
    for seed in range(4):
        rng = np.random.default_rng(seed)
        x = rng.normal(size=1000)
        for values, w in ((x, rng.random(1000)), (x, rng.integers(0, 9, 1000) * 0.3), (x.round(1), rng.random(1000)),
                          (x * 1e307, None), (x * 1e-300, rng.random(1000))):
            cut = (0.05, 0.3)[seed % 2]
            assert getattr(vd, name)(da.from_array(values, chunks=250), cut, weights=w).compute() == \
                getattr(vx, name)(values, cut, weights=w)


def test_missing_values_go_as_told():
    x = X[:1000].copy()
    x[5] = np.nan
    lazy = da.from_array(x, chunks=300)
    assert np.isnan(vd.mean(lazy).compute()) and np.isnan(vd.trimmed_mean(lazy, 0.1).compute())
    for f in (vd.var, vd.median):
        assert f(lazy, nan_policy="omit").compute() == getattr(vx, f.__name__)(x, nan_policy="omit")
    with pytest.raises(ValueError, match=r"chunk \(0,\)"):
        vd.mean(lazy, nan_policy="raise").compute()
    assert np.isnan(vd.mean(lazy[:0]).compute()) and np.isnan(vd.quantile(lazy[:0], 0.5).compute())


def test_tables_frames_and_levels():
    table = X[:20000].reshape(-1, 4)
    table = np.where(table > 1e3, 0, table)
    lazy = da.from_array(table, chunks=(700, 3))
    assert bits(vd.quantile(lazy, [0.1, 0.7], axis=0).compute()) == bits(vx.quantile(table, [0.1, 0.7], axis=0))
    assert bits(vd.mean(lazy, weights=REAL[:5000], axis=0).compute()) == \
        bits(vx.mean(table, weights=REAL[:5000], axis=0))
    np.testing.assert_allclose(vd.cov(lazy).compute(), vx.cov(table), rtol=1e-14)
    np.testing.assert_allclose(vd.corr(lazy, method="spearman").compute(), vx.corr(table, method="spearman"),
                               atol=1e-15)
    for method in ("average", "min", "max", "dense", "ordinal"):
        x = np.floor(table[:, 0] * 3)
        x[[7, 2100]] = np.nan, -0.0
        assert bits(vd.rank(da.from_array(x, chunks=700), method=method).compute()) == bits(vx.rank(x, method=method))
    small = np.floor(table[:600, :2])
    assert vd.corr(da.from_array(small[:, 0], chunks=99), small[:, 1], method="kendall").compute() == \
        vx.corr(small[:, 0], small[:, 1], method="kendall")
    import pandas as pd

    frame = pd.DataFrame({"a": table[:, 0], "b": np.arange(5000) % 7, "g": np.array(list("uvw"))[np.arange(5000) % 3]})
    lazy = dd.from_pandas(frame, npartitions=6)
    groups = {k: v for k, v in frame.groupby("g")}
    assert vd.median(lazy["a"], by=lazy["g"]).compute() == {k: vx.median(v["a"]) for k, v in groups.items()}
    assert vd.mean(lazy["a"], weights=lazy["b"], by=lazy["g"]).compute() == \
        {k: vx.mean(v["a"], weights=v["b"]) for k, v in groups.items()}
    assert vd.mean(lazy[["a", "b"]]).compute() == {c: vx.mean(frame[c]) for c in ("a", "b")}
    values, counts = vd.tally(lazy["b"]).compute()
    assert values.dtype == np.int64 and counts.sum() == 5000
    assert (vd.rank(lazy["b"]).compute() == vx.rank(frame["b"])).all()
    own = pd.DataFrame({"n": pd.array([1, None, 3, 4], dtype="Int64"), "c": pd.Categorical(list("xyxy")),
                        "g": ["u", None, "v", "u"]})
    lazy = dd.from_pandas(own, npartitions=2)
    assert vd.mean(lazy["n"], by=lazy["c"], nan_policy="omit").compute() == {"x": 2.0, "y": 4.0}
    assert vd.mean(lazy["n"], by=lazy["g"]).compute() == {"u": 2.5, "v": 3.0}  # without level: left out
    for bad, text in ((dict(weights=[1, 2]), "weights"), (dict(by=[1]), "by"), (dict(axis=1), "axis")):
        with pytest.raises(ValueError, match=text):
            vd.mean(da.from_array(X), **bad)


def test_nothing_has_a_histogram_and_a_density():
    gone = da.from_array(np.full(5, np.nan), chunks=2)
    for x, policy in ((da.zeros(0), "propagate"), (gone, "omit")):
        for bins in ("auto", "scott", 3):
            one = vx.histogram(np.zeros(0), bins) if bins != "scott" else vx.histogram(np.zeros(0))
            assert bits(vd.histogram(x, bins, nan_policy=policy).compute()) == bits(one)
        assert np.isnan(vd.kde(x, nan_policy=policy).compute().y).all()


def test_kde_of_values_that_no_grid_is_fine_enough_for():
    x, w = np.exp(8 * np.random.default_rng(1).normal(size=1000)), np.random.default_rng(2).random(1000)
    direct = vx.kde(x, weights=w)
    found = [vd.kde(da.from_array(x, chunks=c), weights=w).compute() for c in (1000, 77)]
    assert found[0].y.tobytes() == found[1].y.tobytes()
    np.testing.assert_allclose(found[0].y, direct.y, atol=1e-12 * direct.y.max())
    x[3] = np.nan
    assert np.isnan(vd.kde(da.from_array(x, chunks=300)).compute().y).all()
    with pytest.raises(ValueError, match="missing"):
        vd.kde(da.from_array(x, chunks=300), nan_policy="raise").compute()


def test_kde_is_the_direct_sum_within_its_binning():
    x = X[:3000]
    x = x[x < 1e3]
    found = [vd.kde(da.from_array(x, chunks=c)).compute() for c in (3000, 77)]
    direct = vx.kde(x)
    assert found[0].bandwidth == direct.bandwidth and bits(found[0].y) == bits(found[1].y)
    assert np.max(np.abs(found[0].y - direct(found[0].x))) < 1e-4 * found[0].y.max()


def test_random_arrays_do_not_depend_on_chunks():
    law = vx.Gamma(2.5)
    whole = vd.sample(law, 300_000, chunks=300_000, seed=5).compute()
    assert (whole == vd.sample(law, 300_001, chunks=70_000, seed=5).compute()[:-1]).all()
    assert (whole[65536:65540] == law.sample(4, vx.Random(5, block=1))).all()
    for kind in ("Sobol", "Halton", "Faure"):
        one = getattr(vx, kind)(3, scramble=True, rng=1)
        lazy = getattr(vd, kind)(3, scramble=True, rng=1)
        assert (lazy.points(500, chunks=77).compute() == one.points(500)).all()
        assert (lazy.points(9).compute() == one.points(9)).all()


def test_graphs_grow_with_the_chunks_and_no_faster():
    sizes = [len(dict(vd.median(vd.sample(vx.Normal(), n * 1000, chunks=1000, seed=1)).dask)) for n in (50, 100, 200)]
    assert sizes[2] - sizes[1] <= 2.1 * (sizes[1] - sizes[0]) and sizes[2] < 11 * 200


def test_poison_names_its_chunk():
    lazy = da.from_array(X, chunks=5000)
    weights = WHOLE.copy()
    weights[12000] = -1
    with pytest.raises(ValueError, match=r"chunk \(2,\).*weights.*-1"):
        vd.median(lazy, weights=weights).compute()
    poisoned = lazy.map_blocks(lambda b, block_id: b.astype("U9") if block_id == (1,) else b, dtype=float)
    with pytest.raises((ValueError, TypeError), match=r"chunk \(1,\)"):
        vd.var(poisoned).compute()
    for f, more in ((vd.mean, {}), (vd.median, {}), (vd.std, {}), (vd.describe, {}), (vd.kde, {"bandwidth": 1.0}),
                    (vd.mean, {"kind": "quadratic"}), (vd.trimmed_mean, {"cut": 0.1}), (vd.cov, {"y": lazy})):
        with pytest.raises(ValueError, match="weights: their total must be positive, it is 0"):
            f(lazy, weights=np.zeros(len(X)), **more).compute()
    with pytest.raises(ValueError, match="1: weights: their total"):
        vd.mean(lazy, weights=np.arange(len(X)) % 2 == 0, by=np.arange(len(X)) % 2).compute()
    assert np.isnan(vd.mean(lazy * np.nan, weights=np.zeros(len(X)), nan_policy="omit").compute())


@pytest.fixture(scope="module")
def cluster():
    distributed = pytest.importorskip("distributed")
    with dask.config.set({"distributed.worker.daemon": True, "distributed.comm.timeouts.connect": "60s"}):
        with distributed.LocalCluster(n_workers=2, threads_per_worker=1, processes=True,
                                      dashboard_address=None) as here, distributed.Client(here) as client:
            yield here, client


def test_a_killed_worker_changes_no_bit(cluster):
    here, client = cluster
    x = vd.sample(vx.Normal(3, 2), 1 << 22, chunks=1 << 18, seed=7)
    q = [0.01, 0.5, 0.999]
    expected = vx.quantile(x.compute(), q).tobytes()
    job = client.compute(vd.quantile(x, q))
    time.sleep(0.3)
    pid = next(iter(client.run(os.getpid).values()))
    os.kill(pid, 9)
    assert job.result(timeout=120).tobytes() == expected
    here.scale(3)  # one that joins late
    assert client.compute(vd.quantile(client.persist(x), q)).result(timeout=120).tobytes() == expected
    with pytest.raises(ValueError, match=r"chunk \(3,\)"):
        client.compute(vd.mean(x, weights=da.where(da.arange(1 << 22, chunks=1 << 18) == 3 << 18, -1, 1))).result()


def _poison(block, block_id):
    block = block.astype(object)
    block[0] = threading.Lock() if block_id == (1,) else 1
    return block


def test_a_chunk_that_cannot_be_pickled_is_named(cluster):
    poisoned = da.from_array(X, chunks=5000).map_blocks(_poison, dtype=float)
    with pytest.raises(TypeError, match=r"chunk \(1,\).*lock"):
        cluster[1].compute(vd.median(poisoned)).result(timeout=60)


def _flaky(block, folder, block_info=None):
    mark = os.path.join(folder, str(block_info[0]["chunk-location"]))
    if not os.path.exists(mark):
        open(mark, "w").close()
        raise OSError("the first time fails")
    return block


def test_tasks_that_run_again_and_chunks_on_disk_change_no_bit(cluster, tmp_path):
    here, client = cluster
    x = vd.sample(vx.Normal(3, 2), 1 << 20, chunks=1 << 18, seed=7)
    flaky = x.map_blocks(_flaky, str(tmp_path), dtype=float)
    assert client.compute(vd.var(flaky), retries=3).result(timeout=60) == vx.var(x.compute())
    distributed = pytest.importorskip("distributed")
    with distributed.LocalCluster(n_workers=2, threads_per_worker=1, memory_limit="230MB",
                                  dashboard_address=None) as small, distributed.Client(small) as own:
        x = vd.sample(vx.Normal(3, 2), 1 << 25, chunks=1 << 20, seed=7)
        held = own.persist(x)  # more than the workers' memory
        found = own.compute(vd.mean(held)).result(timeout=100)
        assert sum(own.run(lambda dask_worker: len(dask_worker.data.slow)).values()) > 0
    assert found == vd.mean(x).compute()


def test_states_refuse_other_bytes():
    data = vx.Moments().update([1.0, 2.0]).to_bytes()
    for bad in (data[:-1], data + b"x", b"", vx.Sums().to_bytes()):
        with pytest.raises(ValueError):
            vx.Moments.from_bytes(bad)
