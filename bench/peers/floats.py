#!/usr/bin/env python3
"""Software floats of 50 digits: seconds for the same loop in the command and in mpmath.

usage: floats.py [path of the vexel command]
"""
import subprocess
import sys
import time

import mpmath

COMMAND = sys.argv[1] if len(sys.argv) > 1 else "build/bin/vexel"
TIMES = 5
JOBS = {
    "add and multiply": (200000, "s := s*a + a", lambda s, a: s * a + a),
    "divide": (200000, "s := a/(s + a)", lambda s, a: a / (s + a)),
    "sqrt": (50000, "s := sqrt(s + a)", lambda s, a: mpmath.sqrt(s + a)),
    "exp": (20000, "s := exp(-s*a)", lambda s, a: mpmath.exp(-s * a)),
    "ln": (20000, "s := ln(s + a)", lambda s, a: mpmath.log(s + a)),
    "sin": (20000, "s := sin(s + a)", lambda s, a: mpmath.sin(s + a)),
}


def in_command(n, statement):
    script = (
        f"Digits := 50: f := proc(n) local s, a, i; a := evalf(4/3); s := 1.0;"
        f" for i from 1 to n do {statement} end; s end: f(10): t := time(): f({n}): time() - t;"
    )
    out = subprocess.run([COMMAND, "-e", script], capture_output=True, text=True, check=True)
    return float(out.stdout)


def in_mpmath(n, f):
    mpmath.mp.dps = 50
    a = mpmath.mpf(4) / 3
    s = mpmath.mpf(1)
    start = time.perf_counter()
    for _ in range(n):
        s = f(s, a)
    return time.perf_counter() - start


print(f"{'':18} {'vexel us':>9} {'mpmath us':>10} {'ratio':>7}")
for name, (n, statement, f) in JOBS.items():
    ours = min(in_command(n, statement) for _ in range(TIMES))
    theirs = min(in_mpmath(n, f) for _ in range(TIMES))
    print(f"{name:18} {ours / n * 1e6:9.2f} {theirs / n * 1e6:10.2f} {ours / theirs:7.2f}")
