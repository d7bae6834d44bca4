"""Root finders: their procedures, arguments and random problems, for the models of each family.

The procedures write down where they are called and under which Digits; every call is followed by a
statement that shows this record, and Digits as the call left it.
"""

import itertools
import math
from decimal import Context, Decimal
from fractions import Fraction

from host import INFINITY, NAN, Name, Raised, Sequence, Table, boolean, call, expected, real
from libm import floor

NOT_LESS = "the specified initial point must be less than the right barrier."
NOT_GREATER = "the specified initial point must be greater than the left barrier."
OUT_OF_RANGE = "the specified approximation point must be between function bounds."
FALLING = "specified function is not a nondecreasing function."
DISTINCT = "%s requires distinct initial points (InitPoint1 != InitPoint2)."


def function_of(body):
    """A procedure's body in Python, whose expressions are the host's but for the conditional."""
    names = {"undefined": NAN, "infinity": INFINITY, "floor": floor,
             "choose": lambda condition, x, y: x if condition else y}
    return eval(f"lambda x: float({body.replace('if(', 'choose(')})", names)


# What a procedure may do once instead of giving a float of the hardware.
FAILURE = 'error("stop %1", x)'
ODD_VALUES = [FAILURE, FAILURE, "1/3", "sqrt(2)", "10.0^400", "2^60", "y", "[x]"]


class Calls:
    """The two procedures: makes their definitions and evaluates them; keeps the record.

    The call of the number odd_at, from 1, gives the odd value.
    """

    def __init__(self, f, df, digits, odd_at, odd=FAILURE):
        self.bodies = {"f": f, "df": df}
        self.digits = digits
        self.odd_at = odd_at
        self.odd = odd
        self.record = Table()

    def definitions(self):
        return "n := 0: T := table(): " + "".join(
            f'{name} := proc(x) n := n + 1; T[n] := ["{name}", x, Digits]; '
            f'if n = {self.odd_at} then {self.odd} else evalhf({body}) end end: '
            for name, body in self.bodies.items())

    def procedure(self, name):
        function = function_of(self.bodies[name])

        def recorded(x):
            count = len(self.record.entries) + 1
            self.record[count] = [name, float(x), self.digits]
            return self._odd_value(float(x)) if count == self.odd_at else function(float(x))
        return recorded

    def _odd_value(self, x):
        """A value of the odd kind as the library takes it, in software floats."""
        if self.odd == FAILURE:
            raise Raised("stop %1", x)
        if self.odd in ("y", "[x]"):
            value = Name("y") if self.odd == "y" else [rounded(x, self.digits)]
            raise Raised("a number expected, received %1", value)
        if self.odd == "sqrt(2)":
            return float(Decimal(2).sqrt(Context(prec=self.digits)))
        return {"1/3": 1 / 3, "10.0^400": INFINITY, "2^60": 2.0**60}[self.odd]


class Finder:
    """An entry point: its worker here, the kinds of its arguments, and the names in its messages.

    Kinds are conversions, "f", "df", and "barrier" for a flag and a number.  Continuous finders
    evaluate their procedures with three digits more than Digits, which an error leaves so.
    """

    def __init__(self, name, worker, kinds, counted=None, called=None, continuous=True,
                 rounds=True):
        self.name = name
        self.worker = worker
        self.kinds = kinds
        self.counted = counted or name
        self.called = called or name
        self.continuous = continuous
        self.rounds = rounds

    def size(self):
        return len(self.kinds) + self.kinds.count("barrier")

    def _converted(self, arguments, calls):
        place = {"f": "second", "df": "third"}
        rest = iter(arguments)
        for kind in self.kinds:
            value = next(rest)
            if kind == "barrier":
                flag, value = boolean(value), next(rest)
                yield real(value) if flag else None
            elif kind in place:
                if value != kind:
                    raise Raised(f"Vexel{self.called} expects a procedure as its {place[kind]} "
                                 "parameter, received: %1", value)
                yield calls.procedure(kind)
            else:
                yield kind(value)

    def result(self, arguments, calls, digits):
        """The result of a call; calls.digits becomes the Digits that it leaves."""
        if len(arguments) != self.size():
            raise Raised(f"Vexel{self.counted} expects {self.size()} arguments, received: %1",
                         Sequence(arguments))
        values = list(self._converted(arguments, calls))
        if not self.continuous:
            return self.worker(*values)
        values[-2] *= 10.0**-digits
        calls.digits = digits + 3
        root = self.worker(*values)
        calls.digits = digits
        return rounded(root, digits) if self.rounds else root


def rounded(x, digits):
    """x by evalf; a double is its shortest decimal to the host."""
    return float(Context(prec=digits).create_decimal(repr(x))) if math.isfinite(x) else x


# f, its derivative, and bounds of its values for x from -4 to 4.
FUNCTIONS = [
    ("{a}*x + {b}", "{a}", -20.0, 20.0), ("-x", "-1", -9.0, 9.0), ("{b}", "0", -9.0, 9.0),
    ("x/(1 + abs(x))", "1/((1 + abs(x))*(1 + abs(x)))", -1.0, 1.0),
    ("{a}*x/(1 + abs({a}*x))/2 + 0.5", "{a}/((1 + abs({a}*x))*(1 + abs({a}*x)))/2", 0.0, 1.0),
    ("x*x*x", "3*x*x", -1000.0, 1000.0), ("x*x*x + {b}*x", "3*x*x + {b}", -1000.0, 1000.0),
    ("x*x*x*x*x + x/10", "5*x*x*x*x + 0.1", -5000.0, 5000.0), ("x*abs(x)", "2*abs(x)", -99.0, 99.0),
    ("x*x + {b}", "2*x", -10.0, 100.0), ("1/(1 + x*x)", "0 - 2*x/((1 + x*x)*(1 + x*x))", 0.0, 1.0),
    ("if(x < 1, x/2, x - 0.5)", "if(x < 1, 0.5, 1)", -50.0, 50.0),
    ("if(x < {b}, x - 1, x + 1)", "1", -10.0, 10.0), ("floor(4*x)/4", "1", -40.0, 40.0),
    ("if(x < -1, 0, if(x > 2, 1, (x + 1)/3))", "if(x < -1, 0, if(x > 2, 0, 1/3))", 0.0, 1.0),
    ("if(x < -1, 0, if(x > 2, 1, (x + 1)/3))", "1/3", 0.0, 1.0), ("floor(x)", "0", -40.0, 40.0),
    ("if(x < {b}, x - 1, x)", "1", -10.0, 10.0), ("if(x > {b}, x + 1, x)", "1", -10.0, 10.0),
    ("if(x < {b}, x + 1, x)", "1", -10.0, 10.0), ("if(x > {b}, x - 1, x)", "1", -10.0, 10.0),
    ("if(abs(x - {b}) < {a}, undefined, x)", "if(abs(x - {b}) < {a}, 0, 1)", -9.0, 9.0),
    ("if(x < {b}, 0, x*1e-20)", "if(x < {b}, 0, 1e-20)", 0.0, 1.0),
    ("if(x > {a}, undefined, x)", "1", -9.0, 9.0), ("if(x < {b}, undefined, x)", "1", -9.0, 9.0),
    ("if(x > {a}, infinity, x)", "1", -9.0, 9.0), ("if(x < {b}, -infinity, x)", "1", -9.0, 9.0),
    ("if(x < {b}, x*x*x, 9*x)", "if(x < {b}, 3*x*x, 9)", -1000.0, 1000.0)]


class Problem:
    """A function, two points, one between them, a target, a tolerance factor and a limit."""

    def __init__(self, random):
        a, b = random.choice([0.5, 1.0, 2.0, 3.0]), random.choice([-2.0, -0.5, 0.0, 0.3, 1.5])
        f, df, least, greatest = random.choice(FUNCTIONS)
        self.f, self.df = f.format(a=a, b=b), df.format(a=a, b=b)
        if random.random() < 0.15:
            self.df = random.choice(["0", "-1", "x", "if(abs(x) < 1, 0, 2)", "if(x > 0, 0, 1)",
                                     "undefined", "infinity"])
        points = [round(random.uniform(-4, 4), random.choice([0, 1, 1, 2, 17])) for _ in range(5)]
        self.left, self.right = sorted(points[:2])
        if self.left == self.right:
            self.right += random.choice([0.0, 1.0, 1.0])
        self.between = random.choice([self.left, self.right, points[2],
                                      self.left + (self.right - self.left) * random.random(),
                                      self.left + (self.right - self.left) * 0.5])
        root = random.choice([points[3], self.left + (self.right - self.left) * random.random(),
                              (self.left + self.right) * 0.5])
        self.target = function_of(self.f)(root)
        if random.random() < 0.3 and math.isfinite(self.target):
            self.target = round(self.target, 1)
        if random.random() < 0.15:
            at = random.choice([self.left, self.right, self.between])
            self.target = random.choice([least, greatest, at, function_of(self.f)(at)])
        self.values = random.choice([(least, greatest)] * 5 + [
            (-INFINITY, INFINITY), (least, INFINITY), (-INFINITY, greatest), (0.0, 1.0)])
        self.factor = random.choice([1, 1, 10, 100, 10**7, 10**9, 2 * 10**9, 0, -1])
        self.limit = random.choice([100, 100, 100, 1000, random.randint(-1, 12)])


def odd_value(random):
    return random.choice([Name("y"), "text", True, None, [1, 2], Fraction(1, 3), 2.5, 3 * 10**9, -1,
                          Name("Pi"), 1e308, INFINITY, NAN])


def root_calls(random, finders, problem):
    """Calls of the finders on problem(random, name): procedures' bodies and all the arguments."""
    for finder in itertools.cycle(finders):
        bodies, arguments = problem(random, finder)
        for _ in range(random.choice([0] * 12 + [1, 2])):
            arguments[random.randrange(len(arguments))] = odd_value(random)
        if random.random() < 0.02:
            arguments = [1.5, "text"] * random.randint(1, 6)
            arguments = arguments[:-1] if len(arguments) == finder.size() else arguments
        digits = random.choice([15, 15, 15, 15, 3, 5, 10, 17, 20])
        calls = Calls(*bodies, digits, random.randint(1, 9) if random.random() < 0.1 else 0,
                      random.choice(ODD_VALUES))
        value = expected(finder.result, arguments, calls, digits)
        yield (f"Digits := {digits}: {calls.definitions()}"
               + call(f"STATS_Vexel{finder.name}_HW", *arguments)), value
        yield "[T, Digits]", [calls.record, calls.digits]
