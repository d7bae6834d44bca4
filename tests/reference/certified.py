"""Certified statistics: rewrites the lines "of doubles" of data/nist/*.txt and checks the certified ones.

The data sets and certified values are those of NIST's Statistical Reference Datasets, univariate summary statistics
(https://www.itl.nist.gov/div898/strd/).  A certified value belongs to the decimal data; what the doubles nearest to
them give is computed here, exactly up to one root, and stands beside it: of numbers like 10000000.1 the doubles do not
hold fifteen digits of the spread.
"""

import glob
import os
from decimal import Decimal, getcontext
from fractions import Fraction

getcontext().prec = 60
NAMES = ("mean", "std", "lag 1")


def statistics(x):
    """Mean, standard deviation and autocorrelation at lag 1, as decimals."""
    mean = sum(x) / len(x)
    d = [v - mean for v in x]
    squares = sum(v * v for v in d)
    numbers = mean, squares / (len(x) - 1), sum(a * b for a, b in zip(d, d[1:])) / squares
    mean, variance, lag = (Decimal(v.numerator) / Decimal(v.denominator) for v in numbers)
    return mean, variance.sqrt(), lag


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    for path in sorted(glob.glob(os.path.join(here, "data", "nist", "*.txt"))):
        with open(path) as file:
            lines = file.read().splitlines()
        head, words = lines[:5], " ".join(lines[5:]).split()
        decimals = statistics([Fraction(w) for w in words])
        doubles = statistics([Fraction(float(w)) for w in words])
        for i, (name, of_decimals, of_doubles) in enumerate(zip(NAMES, decimals, doubles), 1):
            certified = head[i].split(":")[1].split()[0]
            places = Decimal(certified).as_tuple().exponent
            assert abs(of_decimals - Decimal(certified)) <= Decimal(1).scaleb(places), (path, name)
            head[i] = f"{name}: {certified} of doubles: {float(of_doubles)!r}"
        with open(path, "w") as file:
            file.write("\n".join(head + lines[5:]) + "\n")


if __name__ == "__main__":
    main()
