"""Non-central chi-square samples, from an envelope and by inversion, against other entry points."""

import host
from host import Procedure, RandomStream, Raised, Sequence, integer32, real

NAME = "VexelNonCentralChiSquareRandomSample"
# A density without its factor and its first two derivatives; all have the zeros that are needed.
DENSITIES = [
    ("x*exp(-x/{k})", "exp(-x/{k})*(1-x/{k})", "exp(-x/{k})*(x/{k}-2)/{k}"),
    ("x*x*exp(-x/2)", "x*exp(-x/2)*(2-x/2)", "exp(-x/2)*(2-2*x+x*x/4)"),
    ("if(x<{k},0.5,0.25)", "if(x<{k},1,-1)", "if(x<{low},{left},if(x<{k}+4,-1,1))")]


def procedures(random):
    values = {"k": random.choice([3, 4.5, 5]), "low": random.choice([-1, 1.5, 2]),
              "left": random.choice([0.5, 0.5, 0])}
    return [Procedure(f"x -> evalhf({body.format(**values)})")
            for body in random.choice(DENSITIES)]


def check(*arguments):
    """Raises what a call of other than four arguments is refused with."""
    if len(arguments) != 6:
        raise Raised(f"{NAME} expects 4 or 6 arguments, received: %1",
                     Sequence(arguments) if len(arguments) > 1 else (*arguments, None)[0])
    integer32(arguments[0])
    real(arguments[1])
    real(arguments[2])
    for place, argument in zip(["fourth", "fifth", "sixth"], arguments[3:]):
        if not isinstance(argument, Procedure):
            raise Raised(f"procedure expected as {place} parameter to {NAME}, received: %1",
                         argument)


def composed(n, nu, delta, h, h1, h2):
    """Statements that leave the base points in B.

    Brent's entry point has a tolerance in units of the last digit and rounds to Digits; with three
    more and 1000 units it does what the sample does.
    """
    low, high = (min(0.1 / n, 0.001), max(1 - 0.1 / n, 0.999)) if n else (0.001, 0.999)

    def zero(f, a, b):
        return f"STATS_VexelBrentMethod_HW(0.0, {f}, {a}, {b}, 1000, L)"
    deviates = ": ".join(f"{name} := STATS_VexelNonCentralChiSquareDeviate_HW({p!r}, {nu}, {delta})"
                         for name, p in (("a", low), ("b", high)))
    return (f"h2 := {h2}: {deviates}: Digits := 18: m := {zero(h1, 'a', 'b')}: "
            f"q := {zero('h2', 'm', 'b')}: B := if(h2(a)*h2(m) >= 0, [a, q, b], "
            f"[a, {zero('h2', 'a', 'm')}, m, q, b]): Digits := 15")


def calls(random):
    while True:
        n = random.choice([0, 1, 2, 5, 20, 50, 101, 150, 300])
        arguments = [n, random.choice([3.0, 4.0, 6.0]), random.choice([1.0, 2.0, 4.0]),
                     *procedures(random)]
        if random.random() < 0.2:
            wrong = list(arguments)
            wrong[random.randrange(6)] = random.choice([2.5, 7, host.Name("z"), None, [1]])
            wrong = random.choice([wrong, wrong, wrong, arguments + [1], arguments[:5],
                                   arguments[:3], []])
            value = host.expected(check, *wrong)
            if isinstance(value, Raised):
                yield host.call(f"STATS_{NAME}_HW", *wrong), value
            continue
        seed = random.getrandbits(40)
        if random.random() < 0.1:
            nu, delta = arguments[1:3]
            quantile = f"STATS_VexelNonCentralChiSquareDeviate_HW(RandomDouble01(), {nu}, {delta})"
            yield (f"randomize({seed}): S := STATS_{NAME}_HW(2, {nu}, {delta}, false): "
                   f"randomize({seed}): istrue(tolist(S) = [{quantile}, {quantile}])", True)
            continue
        limit = random.choice([100, 200])
        call = host.call(f"STATS_{NAME}_HW", *arguments)
        if random.random() < 0.03:
            yield ("_EnvStatisticsIterations := 1: " + call,
                   Raised("maximum number of iterations exceeded in Brent root finding."))
        limited = "clear(_EnvStatisticsIterations)" if limit == 100 else \
            f"_EnvStatisticsIterations := {limit}"
        yield (f"{limited}: L := {limit}: randomize({seed}): S := {call}: r := RandomInt32(): "
               f"{composed(*arguments)}: randomize({seed}): R := STATS_VexelRandomSample_HW("
               f"Array(1..{n}, datatype = float[8]), NULL, [[1, [{arguments[3]}, {arguments[4]}, "
               "B, 100, false]]], false): "
               "[istrue(tolist(S) = tolist(R)), istrue(r = RandomInt32()), count(tolist(S))]",
               [True, True, n])


if __name__ == "__main__":
    host.main(calls)
