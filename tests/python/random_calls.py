"""Random calls of everything in the package, with arguments of every kind: nothing but the documented exceptions comes
out, no warning, no crash, and long calls answer an interrupt.

    PYTHONPATH=build/python python3 tests/python/random_calls.py COUNT SEED
"""

import collections
import inspect
import random
import resource
import signal
import sys
import warnings

import numpy as np

import vexel as vx

DOCUMENTED = (ValueError, TypeError, OverflowError, MemoryError, IndexError, NotImplementedError,
              RuntimeError)  # the last of passes over other data than the first one's
# Of files, programs and kernels; they are not the functions of data that this is about.
LEFT_OUT = {"Kernel", "Expression", "KernelError", "Error", "entry", "plot", "show", "main"}
WORDS = {"nan_policy": ("propagate", "omit", "raise"), "axis": (None, 0, 1, -1, 2, (0, 1)), "keepdims": (True, False),
         "method": ("linear", "hazen", "pearson", "kendall", "spearman", "average", "min", "percentile", "bca", "ordinal"),
         "statistic": ("mean", "median", "std", "iqr"), "kernel": ("gaussian", "biweight"), "kind": ("mean", "geometric"),
         "align": ("center", "left", "right"), "edges": ("shrink", "nan", "reflect", [0, 1, 2.5, 4]), "bins": (5, "auto", "fd", [0, 1, 3]),
         "rng": (1, 2, None), "seed": (1, None), "window": (1, 3, 7), "size": (0, 3, (2, 2), None), "n": (0, 1, 5, 20),
         "q": (0.5, [0.1, 0.9], 1, 0), "p": (0.5, 0.1, 1), "cut": (0.1, (0.1, 0.2)), "ddof": (0, 1, 0.5), "order": (1, 2, 4),
         "replicates": (10, 30), "dimension": (1, 2, 3), "confidence": (0.9, 0.5), "support": ((0, 1), (-1, 1), (0, None))}
KINDS = (float, float, float, np.float32, np.int8, np.int32, np.int64, np.uint8, np.uint64, bool, ">f8", np.float16, complex,
         object, "U3", "M8[D]", np.longdouble)


class Slow(Exception):
    pass


def too_slow(*_):
    raise Slow


class Generator:
    def __init__(self, seed):
        self.r = random.Random(seed)
        self.made = []  # objects that constructors and methods gave

    def number(self):
        r = self.r
        return r.choice((0, 1, -1, 2, 3, 0.5, 1.5, -0.25, 10, 100, 1e-3, 1e3, 1e300, -1e300, 1e-300, 5e-324, float("inf"),
                         float("-inf"), float("nan"), True, np.float32(0.1), np.int64(4), r.uniform(-3, 3),
                         r.expovariate(1), r.randrange(30), 2 ** 31, 2 ** 63, -2 ** 63, 10 ** 30))

    def array(self):
        r = self.r
        shape = r.choice(((), (0,), (1,), (2,), (5,), (17,), (40,), (3, 4), (4, 1), (0, 3), (2, 3, 2)))
        kind = r.choice(KINDS)
        n = int(np.prod(shape)) * 2
        values = [r.choice((0.0, 1.0, 2.0, 3.0)) if r.random() < 0.4 else abs(r.gauss(2, 3)) for _ in range(n)]
        x = np.array(values).clip(0, 100)
        if kind in ("U3", "M8[D]"):
            x = x.astype(int).astype(kind)
        else:
            x = x.astype(kind)
            if r.random() < 0.25 and n and x.dtype.kind == "f":
                x[r.randrange(n)] = r.choice((np.nan, np.inf, -np.inf, -1))
        x = x[::2] if r.random() < 0.5 else x[:n // 2]
        x = x.reshape(shape)
        how = r.randrange(12)
        return (x.T if how == 0 else x[::-1] if how == 1 and x.ndim else np.asfortranarray(x) if how == 2 else
                x.tolist() if how == 3 else np.ma.array(x, mask=False) if how == 4 and x.dtype.kind == "f" else x)

    def anything(self):
        r = self.r
        return r.choice((None, "text", "", b"x", {}, {"a": 1}, set(), object(), [], [[1], [2, 3]], range(5), (), 1j,
                         lambda *a: 0.5, lambda t: t, slice(1), int, [None, 1.0], "linear", np.datetime64("2024-01-01")))

    def argument(self, name):
        r = self.r
        if name in WORDS and r.random() < 0.85:
            return r.choice(WORDS[name])
        if name in ("f", "function", "func", "pdf", "cdf") and r.random() < 0.8:
            return r.choice((lambda t: np.exp(-np.square(t)), lambda t: t, lambda *a: 0.3, np.sin))
        kind = r.random()
        if name in ("x", "y", "data", "a", "weights", "columns", "k") and kind < 0.8 or kind < 0.35:
            return self.array()
        return self.number() if kind < 0.85 else self.r.choice(self.made) if self.made and kind < 0.9 else self.anything()

    def arguments(self, function):
        try:
            parameters = inspect.signature(function).parameters.values()
        except (TypeError, ValueError):
            return [self.argument("x") for _ in range(self.r.randrange(3))], {}
        positional, keywords = [], {}
        for p in parameters:
            if p.kind in (p.VAR_POSITIONAL, p.VAR_KEYWORD):
                continue
            needed = p.default is p.empty
            if p.name == "progress" or not needed and self.r.random() < 0.7:
                continue
            if self.r.random() < 0.01:
                continue
            value = self.argument(p.name)
            if p.kind is p.KEYWORD_ONLY or keywords or not needed:
                keywords[p.name] = value
            else:
                positional.append(value)
        for p in parameters:
            if p.kind is p.POSITIONAL_ONLY:
                keywords.pop(p.name, None)
        return positional, keywords


def callables():
    """The functions and classes of the package, by name."""
    return {name: getattr(vx, name) for name in dir(vx)
            if not name.startswith("_") and name not in LEFT_OUT and callable(getattr(vx, name))
            and not (inspect.isclass(getattr(vx, name)) and issubclass(getattr(vx, name), BaseException))}


def run(count, seed, seconds=2):
    """Makes so many calls; how many of them went through, by what came of them."""
    generator = Generator(seed)
    targets = sorted(callables().items())
    outcomes = collections.Counter()
    signal.signal(signal.SIGALRM, too_slow)
    warnings.simplefilter("error")
    warnings.filterwarnings("ignore", "The truth value of an empty array")  # NumPy's, of a number that is none
    for i in range(count):
        if generator.made and generator.r.random() < 0.6:
            thing = generator.r.choice(generator.made)
            name = generator.r.choice([m for m in dir(thing) if not m.startswith("_") and m not in LEFT_OUT] or ["__repr__"])
        else:
            thing, name = vx, generator.r.choice(targets)[0]
        said = f"call {i} of seed {seed}: {thing!r:.200}.{name}" if thing is not vx else f"call {i} of seed {seed}: {name}"
        positional = keywords = None
        try:
            function = getattr(thing, name)
            if not callable(function):
                outcomes["value"] += 1
                continue
            positional, keywords = generator.arguments(function)
            signal.setitimer(signal.ITIMER_REAL, seconds)
            result = function(*positional, **keywords)
            signal.setitimer(signal.ITIMER_REAL, 0)
            repr(result)
            outcomes["result"] += 1
            if type(result).__module__.startswith("vexel") and not isinstance(result, (tuple, np.ndarray)):
                generator.made.append(result)
                if len(generator.made) > 60:
                    generator.made.pop(generator.r.randrange(60))
        except Slow:  # large sizes; they answer an interrupt
            outcomes["interrupted"] += 1
        except DOCUMENTED as e:
            signal.setitimer(signal.ITIMER_REAL, 0)
            outcomes[type(e).__name__] += 1
        except BaseException as e:
            signal.setitimer(signal.ITIMER_REAL, 0)
            outcomes["FAULT"] += 1
            print(f"{said}(*{positional!r:.600}, **{keywords!r:.400}): {type(e).__name__}: {e}", flush=True)
            if isinstance(e, (KeyboardInterrupt, SystemExit)):
                raise
    return outcomes


if __name__ == "__main__":
    resource.setrlimit(resource.RLIMIT_AS, (4 << 30, 4 << 30))
    print(dict(run(int(sys.argv[1]), int(sys.argv[2]))))
