"""The system's mathematics library with C's special values, which Python's math raises for."""

import ctypes
import math

_LIBRARY = ctypes.CDLL(None)


def _function(name, arguments=1):
    function = _LIBRARY[name]
    function.restype = ctypes.c_double
    function.argtypes = [ctypes.c_double] * arguments
    return function


exp = _function("exp")
expm1 = _function("expm1")
log = _function("log")
log1p = _function("log1p")
sqrt = _function("sqrt")
tan = _function("tan")
cos = _function("cos")
floor = _function("floor")
ceil = _function("ceil")
power = _function("pow", 2)
atan2 = _function("atan2", 2)
fma = _function("fma", 3)


def divide(a, b):
    if b != 0.0:
        return a / b
    if a == 0.0 or math.isnan(a):
        return math.nan
    return math.copysign(math.inf, a) * math.copysign(1.0, b)


def truncated(x):
    """x as a 32-bit integer; the least one for what has none."""
    return int(x) if -2147483649.0 < x < 2147483648.0 else -2147483648
