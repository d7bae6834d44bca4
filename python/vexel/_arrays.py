"""What becomes an array of numbers, beyond what the extension reads itself."""

from __future__ import annotations

import sys
from math import prod
from typing import Any

import numpy as np

from ._progress import reporter

__all__ = ["convert", "join_axes", "place", "ravel", "reporter", "whole"]  # what the extension calls

_VIEWED = frozenset(np.dtype(t) for t in ("float64", "float32", "int32", "int64"))


def ravel(array: np.ndarray) -> np.ndarray:
    """All elements in C order, as one dimension."""
    return np.ascontiguousarray(array).reshape(-1)


def join_axes(x: np.ndarray, weights: np.ndarray | None, axis: tuple[int, ...]) -> tuple[Any, Any, Any]:
    """The axes joined as the last one, of weights too, and the shape that keepdims gives."""
    if not all(hasattr(a, "__index__") and not isinstance(a, bool) for a in axis):
        raise TypeError(f"axis must be whole numbers, got {axis}")
    axes = {a + x.ndim if a < 0 else a for a in axis}
    if len(axes) < len(axis) or not all(0 <= a < x.ndim for a in axes):
        raise ValueError(f"axis must be different axes of an array of {x.ndim} dimensions, got {axis}")
    kept = [a for a in range(x.ndim) if a not in axes]
    order = kept + sorted(axes)

    def joined(array: np.ndarray) -> np.ndarray:
        return array.transpose(order).reshape([x.shape[a] for a in kept] + [prod(x.shape[a] for a in axes)])

    if weights is not None and len(axes) == 1 and weights.shape == (x.shape[order[-1]],):
        weights = np.broadcast_to(weights.reshape([-1 if a in axes else 1 for a in range(x.ndim)]), x.shape)
    if weights is not None and weights.shape != x.shape:
        raise ValueError(f"weights must be of the shape of the data, {x.shape}, got {weights.shape}")
    shape = tuple(1 if a in axes else n for a, n in enumerate(x.shape))
    return joined(x), None if weights is None else joined(weights), shape


def place(values: Any, shape: tuple[int, ...] | None, leading: int, out: Any) -> Any:
    """Values in the shape that keepdims gives, and in `out`."""
    if shape is not None:
        values = np.asarray(values)
        values = values.reshape(values.shape[:leading] + shape)
    if out is None:
        return values
    from ._core import checked_out

    checked_out(out, np.shape(values))[...] = values
    return out


def convert(x: Any, name: str) -> np.ndarray:
    """`x` as a float64, float32, int32 or int64 array; missing values become NaN."""
    if isinstance(x, np.ndarray):
        return _of_ndarray(x, name)
    module = type(x).__module__.partition(".")[0]
    if module == "pandas":
        return _of_pandas(x, name)
    if hasattr(x, "__arrow_c_array__") or hasattr(x, "__arrow_c_stream__"):
        array = _of_arrow(x, name)
        return _of_ndarray(array, name) if array.dtype == np.uint64 else array
    if not hasattr(x, "__array__") and hasattr(x, "__dlpack__"):
        return _of_ndarray(np.from_dlpack(x), name)
    if isinstance(x, (str, bytes, dict, set, frozenset)):
        raise _refusal(x, name)
    if not hasattr(x, "__getitem__") and not hasattr(x, "__array__") and hasattr(x, "__iter__"):
        x = list(x)  # generators, the values of a dict
    try:
        array = np.asarray(x)
    except ValueError as e:
        raise ValueError(f"{name}: {e}") from None
    return _of_ndarray(array, name)


def _refusal(x: Any, name: str) -> TypeError:
    what = f"an array of {x.dtype}" if isinstance(x, np.ndarray) else f"a {type(x).__name__}"
    return TypeError(f"{name} must be numbers, got {what}")


def _of_ndarray(x: np.ndarray, name: str) -> np.ndarray:
    masked = sys.modules.get("numpy.ma")
    if masked is not None and isinstance(x, masked.MaskedArray):
        mask = masked.getmask(x)
        data = _of_ndarray(masked.getdata(x), name)
        if mask is masked.nomask or not mask.any():
            return data
        return np.where(mask, np.nan, data)
    x = x.view(np.ndarray)
    kind = x.dtype.kind
    wanted: Any
    if kind == "f" and x.dtype.itemsize == 2:
        return x.astype(np.float32)
    if kind == "f":
        wanted = np.float32 if x.dtype.itemsize == 4 else np.float64
    elif kind == "b" or (kind in "iu" and x.dtype.itemsize < 4):
        return x.astype(np.int32)
    elif kind == "i" or (kind == "u" and x.dtype.itemsize == 4):
        wanted = np.int32 if x.dtype.itemsize == 4 and kind == "i" else np.int64
    elif kind == "u":
        wanted = np.int64 if x.size == 0 or int(x.max()) < 2**63 else np.float64
    elif kind == "O":
        return _of_objects(x, name)
    else:
        raise _refusal(x, name)
    # In the machine's byte order, aligned, with strides that are whole elements.
    return np.require(np.ascontiguousarray(x, wanted) if x.ndim else x.astype(wanted), requirements="A")


def _number(value: Any) -> float:
    if value is None or type(value).__name__ in ("NAType", "NaTType"):
        return np.nan
    if isinstance(value, (str, bytes)):
        raise TypeError
    return float(value)


def _of_objects(x: np.ndarray, name: str) -> np.ndarray:
    """Fractions, decimals, big integers, None: each as the nearest double."""
    result = np.empty(x.shape)
    try:
        result.reshape(-1)[:] = [_number(v) for v in x.reshape(-1)]
    except OverflowError:
        raise ValueError(f"{name} must be of magnitudes below 1.8e308, got a larger one") from None
    except (TypeError, ValueError):
        odd = next(v for v in x.reshape(-1) if not _is_number(v))
        raise TypeError(f"{name} must be numbers, got a {type(odd).__name__} among them") from None
    return result


def _is_number(value: Any) -> bool:
    try:
        _number(value)
    except (TypeError, ValueError):
        return False
    return True


def _of_arrow(x: Any, name: str) -> np.ndarray:
    from ._core import from_arrow

    try:
        return from_arrow(x)
    except TypeError as e:
        text = str(e)
        raise TypeError(f"{name}{' ' if text.startswith('must') else ': '}{text}") from None


def _whole_type(x: Any) -> Any:
    """The NumPy type of a pandas object of whole numbers, none missing; None for others."""
    types = {getattr(t, "numpy_dtype", t) for t in ([x.dtype] if hasattr(x, "dtype") else getattr(x, "dtypes", []))}
    kind = types.pop() if len(types) == 1 else None
    return kind if isinstance(kind, np.dtype) and kind.kind in "iu" and not np.any(x.isna()) else None


def column(x: Any, name: str) -> Any:
    """Whole numbers of pandas and Arrow in an array of their own type; anything else as it is."""
    if isinstance(x, np.ndarray):
        return x
    if type(x).__module__.partition(".")[0] == "pandas":
        whole = _whole_type(x) if hasattr(x, "to_numpy") else None
        return x if whole is None else x.to_numpy(dtype=whole)
    if hasattr(x, "__arrow_c_array__") or hasattr(x, "__arrow_c_stream__"):
        return _of_arrow(x, name)
    return x


def _of_pandas(x: Any, name: str) -> np.ndarray:
    if not hasattr(x, "to_numpy"):
        raise _refusal(x, name)
    dtype = getattr(x, "dtype", None)
    if isinstance(dtype, np.dtype):
        return _of_ndarray(x.to_numpy(), name)
    whole = _whole_type(x)
    if whole is not None:
        return _of_ndarray(x.to_numpy(dtype=whole), name)
    try:
        return _of_ndarray(x.to_numpy(dtype=np.float64, na_value=np.nan), name)
    except (TypeError, ValueError):
        raise TypeError(f"{name} must be numbers, got a pandas {type(x).__name__} of {dtype}") from None


def whole(values: np.ndarray) -> np.ndarray:
    """Variates of a law of whole numbers as int64."""
    if values.size and not np.abs(values).max() < 2.0**63:
        raise OverflowError("a variate exceeds 2^63; sample into a float64 array by out=")
    return values.astype(np.int64)
