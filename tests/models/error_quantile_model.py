"""The quantile of the error distribution, a Newton-Raphson root of host procedures."""

from distributions import counted, miscounts
from host import Name, Raised, call, expected, main, real
from libm import tan
from newton_model import newton
from root_finding import Calls, Problem, odd_value, rounded


def error_quantile(arguments, calls, digits, limit):
    """The scale and the shape are converted and not used."""
    arguments = counted("ErrorDeviate", arguments, 6)
    p = real(arguments[0])
    for place, name, argument in [("second", "f", arguments[1]), ("third", "df", arguments[2])]:
        if argument != name:
            raise Raised(f"VexelErrorDeviate expects a procedure as its {place} parameter, "
                         "received: %1", argument)
    a, _, _ = map(real, arguments[3:])
    start = tan((2.0 * p - 1.0) * 3.1 * 0.5) + a
    root = newton(p, calls.procedure("f"), calls.procedure("df"), start, None, None,
                  10.0**-digits, limit)
    return rounded(root, digits)


def calls(random):
    yield from miscounts("ErrorDeviate", 6)
    while True:
        problem = Problem(random)
        p = random.choice([0.0, 1.0, 0.5, random.random(), problem.target])
        arguments = [p, Name("f"), Name("df"), random.choice([0.0, random.gauss(0.0, 2.0)]), 1.0, 3]
        if random.random() < 0.1:
            arguments[random.randrange(6)] = odd_value(random)
        elif random.random() < 0.02:
            arguments = arguments[3:]
        digits = random.choice([15, 15, 3, 7, 17])
        limit = random.choice([100, 100, 0, 1, 2, 5])
        setting = ("clear(_EnvStatisticsIterations)" if limit == 100 else
                   f"_EnvStatisticsIterations := {limit}")
        procedures = Calls(problem.f, problem.df, digits, random.choice([0] * 19 + [2]))
        yield (f"{setting}: Digits := {digits}: {procedures.definitions()}"
               + call("STATS_VexelErrorDeviate_HW", *arguments),
               expected(error_quantile, arguments, procedures, digits, limit))
        yield "[T, Digits]", [procedures.record, digits]


if __name__ == "__main__":
    main(calls, count=1000)
