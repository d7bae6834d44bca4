"""What Python adds to the functions in C++: the same jobs on the same arrays, in turn, in one run.

    PYTHONPATH=build/python python3 bench/python_against_cpp.py [folder of libvexel.so, build/lib otherwise]

Times are the least processor time of many calls of either door, taken in turn, so that a busy machine
troubles both alike.
"""

import pathlib
import subprocess
import sys
import tempfile
import time

import numpy as np

import vexel as vx

ROOT = pathlib.Path(__file__).resolve().parent.parent
PROGRAM = r"""
#include <chrono>
#include <cstdio>
#include <ctime>
#include <functional>
#include <iostream>
#include <map>
#include <vexel/distributions.hpp>
#include <vexel/statistics.hpp>
namespace vx = vexel;
int main(int, char** argv) {
  std::vector<double> x(std::strtoul(argv[1], nullptr, 10)), p(x.size());
  vx::Random(1).normal(x);
  vx::Random(2).uniform(p);
  const vx::Normal normal;
  const vx::Gamma gamma({.shape = 2.5, .scale = 2});
  const vx::StudentT student({.df = 3.5});
  vx::Random rng(3);
  std::vector<double> out(x.size());
  volatile double sink = 0;
  const std::map<std::string, std::function<void()>> jobs = {
%s  };
  for (std::string name; std::getline(std::cin, name);) {
    timespec a, b;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &a);
    jobs.at(name)();
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &b);
    std::printf("%%.9f\n", double(b.tv_sec - a.tv_sec) + 1e-9 * double(b.tv_nsec - a.tv_nsec));
    std::fflush(stdout);
  }
}
"""

# The call in C++, whose last value is used; the call in Python.
JOBS = {
    "mean": ("vx::mean(x)", lambda: vx.mean(x)),
    "std": ("vx::std(x)", lambda: vx.std(x)),
    "kurtosis": ("vx::kurtosis(x)", lambda: vx.kurtosis(x)),
    "median": ("vx::median(x)", lambda: vx.median(x)),
    "quantiles": ("vx::quantile(x, {0.25, 0.5, 0.75})[0]", lambda: vx.quantile(x, [0.25, 0.5, 0.75])),
    "describe": ("vx::describe(x).mean", lambda: vx.describe(x)),
    "sort": ("vx::sort(x)[0]", lambda: vx.sort(x)),
    "rank": ("vx::rank(x)[0]", lambda: vx.rank(x)),
    "histogram": ("vx::histogram(x, 50).counts[0]", lambda: vx.histogram(x, 50)),
    "moving median 101": ("vx::moving(x, 101, vx::Statistic::median)[0]", lambda: vx.moving(x, 101, "median")),
    "Normal cdf": ("normal.cdf(x)[0]", lambda: normal.cdf(x)),
    "Gamma cdf": ("gamma.cdf(p)[0]", lambda: gamma.cdf(p)),
    "StudentT quantile": ("student.quantile(p)[0]", lambda: student.quantile(p)),
    "normal variates": ("(rng.normal(out), out[0])", lambda: rng.normal(out=out)),
}


def times(size, cpp):
    """The least times of each job in C++ and in Python."""
    least = {name: [1e9, 1e9] for name in JOBS}
    with subprocess.Popen([cpp, str(size)], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True) as there:
        for name, (_, here) in JOBS.items():
            end = time.monotonic() + 1.5
            while time.monotonic() < end:
                print(name, file=there.stdin, flush=True)
                one = float(there.stdout.readline())
                begin = time.process_time()
                here()
                two = time.process_time() - begin
                least[name] = [min(least[name][0], one), min(least[name][1], two)]
        there.stdin.close()
    return least


if __name__ == "__main__":
    lib = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else ROOT / "build" / "lib").resolve()
    normal, gamma, student, rng = vx.Normal(), vx.Gamma(2.5, 2), vx.StudentT(3.5), vx.Random(3)
    lines = "".join(f'    {{"{name}", [&] {{ sink = {call}; }}}},\n' for name, (call, _) in JOBS.items())
    with tempfile.TemporaryDirectory() as folder:
        source, program = pathlib.Path(folder) / "jobs.cpp", pathlib.Path(folder) / "jobs"
        source.write_text(PROGRAM % lines)
        subprocess.run(["c++", "-std=c++20", "-O2", f"-I{ROOT / 'include'}", source, "-o", program, f"-L{lib}",
                        "-lvexel", f"-Wl,-rpath,{lib}"], check=True)
        for size in (100_000, 1_000_000):
            x, p, out = vx.Random(1).normal(size), vx.Random(2).uniform(size), np.empty(size)
            for name, (one, two) in times(size, program).items():
                print(f"{size:8} {name:20} C++ {one * 1e3:9.3f} ms   Python {two * 1e3:9.3f} ms   {two / one:5.2f}",
                      flush=True)
