"""What several models compute: means, the selection and the sort with weights.

Selection and sort go exchange by exchange, for ties: which weight or which zero comes first.
"""

import math

from host import INFINITY, NAN

GEOMETRIC, HARMONIC, QUADRATIC = 1, 2, 3


def quotient(a, b):
    """a / b as the machine has it."""
    if b != 0:
        return a / b
    if a == 0 or math.isnan(a):
        return NAN
    return math.copysign(INFINITY, math.copysign(1.0, a) * math.copysign(1.0, b))


def logarithm(x):
    return -INFINITY if x == 0 else NAN if not x > 0 else math.log(x)


def exponential(x):
    try:
        return math.exp(x)
    except OverflowError:
        return INFINITY


def root(x):
    return NAN if not x >= 0 else math.sqrt(x)


def total(terms):
    """Summed from the first to the last, from 0."""
    result = 0.0
    for term in terms:
        result += term
    return result


def mean_of(x, w, kind, n=None):
    """n may be given where it is not the number of values: below 1 there are none."""
    if w is None:
        weight = len(x) if n is None else n
        terms = {GEOMETRIC: logarithm, HARMONIC: lambda v: quotient(1.0, v),
                 QUADRATIC: lambda v: v * v}.get(kind, lambda v: v)
        summed = total(map(terms, x))
    else:
        weight = total(w)
        terms = {GEOMETRIC: lambda v, u: u * logarithm(v), HARMONIC: lambda v, u: quotient(u, v),
                 QUADRATIC: lambda v, u: u * (v * v)}.get(kind, lambda v, u: u * v)
        summed = total(map(terms, x, w))
    if kind == GEOMETRIC:
        return exponential(quotient(summed, weight))
    if kind == HARMONIC:
        return quotient(weight, summed)
    if kind == QUADRATIC:
        return root(quotient(summed, weight))
    return quotient(summed, weight)


def after(x, y):
    """Whether x sorts after y: NaNs come last."""
    return y == y if x != x else x > y


def in_order(x):
    """Sorted, what is missing last."""
    return sorted(v for v in x if v == v) + [v for v in x if v != v]


def _split(a, p, i, j, exchange):
    while True:
        i += 1
        while after(p, a[i]):
            i += 1
        j -= 1
        while after(a[j], p):
            j -= 1
        if j < i:
            return i, j
        exchange(i, j)


def sort(a, w):
    """Quicksort about the median of three down to runs of five, then insertion, with weights w."""
    def exchange(i, j):
        a[i], a[j] = a[j], a[i]
        w[i], w[j] = w[j], w[i]

    def order(i, j):
        if after(a[i], a[j]):
            exchange(i, j)

    ranges = [(0, len(a) - 1)]
    while ranges:
        lo, hi = ranges.pop()
        if hi - lo <= 4:
            continue
        middle = (lo + hi) // 2
        order(lo, middle)
        order(lo, hi)
        order(middle, hi)
        exchange(middle, hi - 1)
        i, j = _split(a, a[hi - 1], lo, hi - 1, exchange)
        exchange(i, hi - 1)
        ranges += [(lo, j), (i + 1, hi)]
    for j in range(1, len(a)):
        i = j
        while i > 0 and after(a[i - 1], a[i]):
            exchange(i - 1, i)
            i -= 1


def select(a, base, n, k):
    """The k-th smallest of a[base..base+n-1], which is put at its place there, or None."""
    if not 0 <= k < n:
        return None

    def exchange(i, j):
        a[i], a[j] = a[j], a[i]

    def order(i, j):
        if after(a[i], a[j]):
            exchange(i, j)

    left, right, k = base, base + n - 1, base + k
    while right > left + 1:
        exchange((left + right) // 2, left + 1)
        order(left, right)
        order(left + 1, right)
        order(left, left + 1)
        i, j = _split(a, a[left + 1], left + 1, right, exchange)
        exchange(left + 1, j)
        if j >= k:
            right = j - 1
        if j <= k:
            left = i
    if right == left + 1:
        order(left, right)
    return a[k]
