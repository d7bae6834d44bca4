"""Statistics of a generated array on a Dask cluster of this machine: seconds, memory, bytes moved.

    dask_bench.py [MILLIONS]       17 by default; Dask's own functions run beside
"""

import pickle
import resource
import sys
import time

import dask
import dask.array as da
import numpy as np
from distributed import Client, LocalCluster

import vexel as vx
import vexel.dask as vd

CHUNK = 1 << 21


def peak():
    return resource.getrusage(resource.RUSAGE_SELF).ru_maxrss / 1024


def jobs(n):
    x = vd.sample(vx.Normal(3, 2), n, chunks=CHUNK, seed=1)
    levels = da.floor(x * 60).clip(0, 999)
    q = np.linspace(0.02, 0.98, 25)
    return {
        "generate (minimum)": (1, lambda: x.min()),
        "mean": (1, lambda: vd.mean(x)), "mean, Dask": (1, lambda: x.mean()),
        "var": (1, lambda: vd.var(x)), "var, Dask": (1, lambda: x.var(ddof=1)),
        "median": (4, lambda: vd.median(x)), "25 quantiles": (4, lambda: vd.quantile(x, q)),
        "25 quantiles, Dask (approximate)": (1, lambda: da.percentile(x, 100 * q)),
        "tally of 1000 levels": (1, lambda: vd.tally(levels)),
        "histogram, 100 bins": (1, lambda: vd.histogram(x, 100, range=(-10, 16))),
        "histogram, Dask": (1, lambda: da.histogram(x, 100, range=(-10, 16))[0])}


def main():
    n = int(float(sys.argv[1]) * 1e6) if len(sys.argv) > 1 else 1 << 24
    print(f"{n} values in chunks of {CHUNK}")
    seconds, results = {}, {}
    for workers in (1, 2):
        for name, (passes, make) in jobs(n).items():
            with LocalCluster(n_workers=workers, threads_per_worker=1, dashboard_address=None) as cluster, \
                    Client(cluster) as client:
                client.run(lambda: __import__("vexel.dask"))
                start = time.perf_counter()
                result = client.compute(make()).result() if hasattr(make(), "key") else dask.compute(make())[0]
                seconds[name, workers] = time.perf_counter() - start
                most = max(client.run(peak).values())
            same = results.setdefault(name, pickle.dumps(result)) == pickle.dumps(result)
            print(f"{name:34} {workers} worker(s) {passes} pass(es) {seconds[name, workers]:7.2f} s "
                  f"{most:6.0f} MB{'' if same else '  OTHER BITS'}", flush=True)
    for name in jobs(CHUNK):
        print(f"{name:34} speed-up {seconds[name, 1] / seconds[name, 2]:.2f}")
    with LocalCluster(n_workers=2, threads_per_worker=1, dashboard_address=None) as cluster, Client(cluster) as client:
        tiny = vd.sample(vx.Normal(), 1000, chunks=1, seed=1)
        for name, made in (("mean", vd.mean(tiny)), ("mean, Dask", tiny.mean())):
            start = time.perf_counter()
            client.compute(made).result()
            print(f"{name}: {(time.perf_counter() - start):.2f} ms for each of 1000 chunks of one value")
    x = vx.Normal(3, 2).sample(CHUNK, vx.Random(1))
    for state in (vx.Sums(), vx.Moments(4), vx.Histogram(np.linspace(-10, 16, 101))):
        print(f"{type(state).__name__}: {len(state.update(x).to_bytes())} bytes from a chunk")
    ranks, size = vx.Ranks(np.linspace(0.02, 0.98, 25)), []
    for _ in range(4):
        size.append(len(ranks.update(x).to_bytes()))
        ranks.next_pass()
    print(f"Ranks of 25 quantiles: {size} bytes from a chunk in the four passes")


if __name__ == "__main__":
    main()
