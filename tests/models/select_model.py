"""Taking elements out of arrays: by a predicate, a range, a percentile, or as no numbers."""

from math import isinf, isnan

from arrays import INTEGER_BITS, NO_NUMBERS, NUMBERS, Source, like, require_vector, to_double
from host import (INFINITY, NAN, Array, Name, Procedure, Raised, Sequence, Table, boolean, call,
                  expected, integer64, main, real, to_text)
from kernels import select
from samples import calls_of, check_count, random_boolean, random_integer, vector


def groups(data, passing, mode, lower):
    """The elements that pass (mode 1), the others (2), or both groups."""
    result = [like(data, [e for e, passes in zip(data.elements, passing) if passes == wanted],
                   lower) for wanted in (True, False)]
    return Sequence(result) if mode not in (1, 2) else result[mode - 1]


def parts(element):
    """The real and the imaginary part."""
    if isinstance(element, complex):
        return element.real, element.imag
    return element if isinstance(element, tuple) else (element, 0)


def select_remove(arguments, answers, seen):
    """answers is what the predicate returns in turn; its arguments go into the table seen."""
    check_count(arguments, len(arguments) >= 3,
                Raised("VexelSelectRemove expects at least 3 arguments", None))
    data, predicate, mode, *extras = arguments
    mode = integer64(mode)
    if not isinstance(predicate, Procedure):
        raise Raised("invalid selecting function, expected a procedure that always returns true "
                     "or false, received: %1", predicate)
    require_vector(data)
    passing = []
    for i, element in enumerate(data.elements):
        seen[i + 1] = [element, *extras]
        passing.append(boolean(answers[i]) != 0)
    return groups(data, passing, mode, data.bounds[0][0])


def in_range(data, low, high, mode):
    low, high, mode = real(low), real(high), integer64(mode)
    require_vector(data)

    def passes(element):
        value, imaginary = parts(element)
        value = real(value) if data.datatype == "anything" else to_double(value)
        return imaginary == 0 and low <= value < high
    return groups(data, [passes(e) for e in data.elements], mode, data.bounds[0][0])


def non_numeric(data, infinite, missing, mode):
    infinite, missing, mode = boolean(infinite), boolean(missing), boolean(mode)
    require_vector(data)
    if data.datatype in INTEGER_BITS:  # all of them, with their indices, as if none were a number
        all_of_it = [like(data, data.elements, data.bounds[0][0]), like(data, [])]
        return Sequence(all_of_it) if mode not in (1, 2) else all_of_it[mode - 1]

    def passes(element):
        value, imaginary = parts(element)
        value = to_double(value)
        return (imaginary != 0 or value is None or missing and isnan(value)
                or infinite and isinf(value))
    return groups(data, [bool(passes(e)) for e in data.elements], mode, 1)


def remove_null(data):
    require_vector(data)
    if data.datatype != "anything":
        return data
    return like(data, [e for e in data.elements if e is not None])


class Keyed(float):
    """What an element is ranked by, and the element."""

    def __new__(cls, key, element):
        keyed = super().__new__(cls, key)
        keyed.element = element
        return keyed


def cut(data, lower, upper):
    """The elements apart at two percentiles, and where those are."""
    low, high = real(lower), real(upper)
    for value, given, name in [(low, lower, "second argument (lower"),
                               (high, upper, "third argument (upper")]:
        if not 0.0 <= value <= 100.0:
            raise Raised(f"expected {name} percentile) to be a numeric constant between 0 and 100, "
                         "received: %1", given)
    if low > high:
        raise Raised("the value of lower percentile is expected to be smaller than the value of "
                     "upper percentile, received: %1, %2", lower, upper)
    require_vector(data)
    x = [Keyed(*pair) for pair in zip(vector(data), data.elements)]
    n = len(x)
    first, last = int(low * n * 0.01), int(high * n * 0.01)
    select(x, 0, n, min(first, n - 1))
    select(x, first, n - first, min(last - first, n - first - 1))
    return [e.element for e in x], first, last


def dense(data, elements):
    result = like(data, elements)
    result.storage = "rectangular"
    return result


def trim(data, lower, upper):
    elements, first, last = cut(data, lower, upper)
    return dense(data, elements[first:last])


def winsorize(data, lower, upper):
    elements, first, last = cut(data, lower, upper)
    n = len(elements)
    first = min(first, n - 1)
    low = elements[first:first + 1] * first
    high = elements[last:last + 1] * (n - 1 - last)
    return dense(data, low + elements[first:last + 1] + high if n > 0 else [])


def random_select_remove(source):
    """A call of SelectRemove with a predicate that records its arguments, and what it must give."""
    data = source.data()
    extras = [source.choice(NUMBERS + NO_NUMBERS) for _ in range(source.choice([0, 0, 1, 3]))]
    names = [f"p{i}" for i in range(len(extras) + 1)]
    predicate = Procedure(f"(proc({', '.join(names)}) k := k + 1; seen[k] := [{', '.join(names)}]; "
                          "answers[k] end)")
    if source.chance(0.02):
        predicate = source.choice([3, Name("x"), None])
    arguments = [data, predicate, random_integer(source.random, [0, 1, 2, 3, -1]), *extras]
    if source.chance(0.02):
        arguments = arguments[:2]
    n = len(data.elements) if isinstance(data, Array) else 0
    answers = [source.choice([True, False, True, False, 0, 1, 2]) for _ in range(n)]
    if answers and source.chance(0.05):
        answers[-1] = source.choice([None, Name("x"), 1.0, 2**31])
    seen = Table()
    result = expected(select_remove, arguments, answers, seen)
    if not isinstance(result, Raised):
        result = [result, seen]
    statement = (f"answers := {to_text(answers)}: k := 0: seen := table([]): "
                 f"[{call('STATS_VexelSelectRemove_HW', *arguments)}, seen]")
    return statement, result


def calls(random):
    source = Source(random)

    def flag():
        return random_boolean(random)

    def quantity():
        if source.chance(0.1):
            return source.choice(NUMBERS + NO_NUMBERS)
        return source.choice([0.0, 1.0, 2, -1, 3.0, 2.5, INFINITY, -INFINITY])

    def percentile():
        if source.chance(0.15):
            return source.choice([-0.0, -0.1, 100.5, 101, NAN, INFINITY, *NO_NUMBERS])
        return source.choice([0, 100, 50, source.randint(0, 100), random.uniform(0.0, 100.0)])

    def in_range_arguments():
        return [source.data(), quantity(), quantity(), random_integer(random, [0, 1, 2, 3, -1])]

    def cut_arguments():
        lower, upper = percentile(), percentile()
        if source.chance(0.9) and to_double(lower) is not None and to_double(upper) is not None:
            lower, upper = min(lower, upper), max(lower, upper)
        return [source.data(wrong=source.choice([0.0, 0.0, 0.0, 0.0, 0.1])), lower, upper]

    others = calls_of(random, [
        ("STATS_VexelSelectRemoveInRange_HW", in_range, in_range_arguments,
         Raised("VexelSelectRemoveInRange expects 4 arguments", None)),
        ("STATS_VexelSelectRemoveNonNumeric_HW", non_numeric,
         lambda: [source.data(), flag(), flag(), flag()],
         "VexelSelectRemoveNonNumeric expects 4 arguments, received: %1"),
        ("STATS_VexelRemoveNULL_HW", remove_null,
         lambda: [source.data(datatype=source.choice(["anything", None]), wrong=0.4)],
         "VexelRemoveNULL expects 1 argument, received: %1"),
        ("STATS_VexelTrim_HW", trim, cut_arguments, "VexelTrim expects 3 arguments, received: %1"),
        ("STATS_VexelWinsorize_HW", winsorize, cut_arguments,
         "VexelTrim expects 3 arguments, received: %1")])
    while True:
        yield random_select_remove(source)
        for _ in range(5):
            yield next(others)


if __name__ == "__main__":
    main(calls)
