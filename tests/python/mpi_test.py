"""The MPI examples, in Python and C++: the same bits for 1 to 4 ranks and in both languages."""

import os
import pathlib
import shutil
import subprocess
import sys

import pytest

import vexel as vx

FOLDER = pathlib.Path(__file__).resolve().parents[2]
LIBRARIES = pathlib.Path(vx.__file__).parents[2] / "lib"

pytestmark = pytest.mark.skipif(not shutil.which("mpirun"), reason="no mpirun")


def run(ranks, *command):
    return subprocess.run(
        ["mpirun", "-n", str(ranks), "--oversubscribe", *(["--allow-run-as-root"] if os.getuid() == 0 else []),
         *map(str, command)], env={**os.environ, "LD_LIBRARY_PATH": str(LIBRARIES)}, capture_output=True, text=True,
        timeout=120, check=True).stdout.splitlines()[-1]


def expected():
    moments = vx.Moments(2)
    blocks = [vx.Normal(3, 2).sample(65536, vx.Random(1, block=b)) for b in range(16)]
    for x in blocks:
        moments.update(x)
    return moments, blocks


def test_python_ranks():
    pytest.importorskip("mpi4py")
    import numpy as np

    moments, blocks = expected()
    line = f"mean {moments.mean.hex()} sd {moments.std.hex()} median {vx.median(np.concatenate(blocks)).hex()}"
    assert {run(n, sys.executable, FOLDER / "examples/mpi/mean.py") for n in (1, 2, 3, 4)} == {line}


def test_cpp_ranks(tmp_path):
    library = next(LIBRARIES.glob("libvexel.so"), None)
    if not shutil.which("mpicxx") or library is None:
        pytest.skip("no mpicxx, or no library beside the package")
    program = tmp_path / "mean"
    subprocess.run(["mpicxx", "-std=c++20", "-O1", f"-I{FOLDER / 'include'}", FOLDER / "examples/mpi/mean.cpp",
                    library, "-o", program], check=True, timeout=120)
    found = {tuple(run(n, program).split()) for n in (1, 2, 3, 4)}
    assert len(found) == 1
    words = found.pop()
    moments, _ = expected()
    assert [float.fromhex(words[i]) for i in (1, 3)] == [moments.mean, moments.std]
