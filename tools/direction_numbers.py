#!/usr/bin/env python3
"""Writes examples/lds/direction_numbers.csv: what a Sobol stream of up to 1111 dimensions starts from.

Each row: dimension, degree s and coefficient code a of a primitive polynomial
x^s + a_1 x^(s-1) + ... + a_(s-1) x + 1 over GF(2) (a's most significant of s - 1 bits is a_1), and the
initial direction integers m_1 .. m_s.  The first dimension is the van der Corput sequence and has no
polynomial.  Polynomials come in order of degree and value; all of degree 1 to 13 are there.

Initial integers: odd, below 2^k, drawn with a fixed seed.  Among candidates that keep Sobol's property A
(the matrix of the leading bits of the first d direction numbers of d dimensions is nonsingular; Sobol
1976) the one whose two-dimensional projections with the dimensions just before it have the smallest
t-values is taken (Joe and Kuo 2008 argue for two-dimensional projections).  Takes about two minutes.
"""

import random
import sys

HIGHEST_DEGREE = 13
CANDIDATES = 6       # per dimension, of those with property A
NEIGHBOURS = 6       # dimensions before it that projections are looked at with
BITS = 10            # nets of 2^10 points


def multiply(a, b, modulus, degree):
    result = 0
    while b:
        if b & 1:
            result ^= a
        b >>= 1
        a <<= 1
        if a >> degree & 1:
            a ^= modulus
    return result


def power(base, exponent, modulus, degree):
    result = 1
    while exponent:
        if exponent & 1:
            result = multiply(result, base, modulus, degree)
        base = multiply(base, base, modulus, degree)
        exponent >>= 1
    return result


def prime_factors(n):
    factors, p = [], 2
    while p * p <= n:
        if n % p == 0:
            factors.append(p)
            while n % p == 0:
                n //= p
        p += 1
    return factors + ([n] if n > 1 else [])


def is_primitive(polynomial, degree):
    """x has order 2^degree - 1 modulo the polynomial."""
    order = (1 << degree) - 1
    x = 2 if degree > 1 else 1
    if polynomial & 1 == 0 or power(x, order, polynomial, degree) != 1:
        return False
    return all(power(x, order // q, polynomial, degree) != 1 for q in prime_factors(order))


def direction_integers(degree, code, initial, count):
    m = list(initial[:count])
    for k in range(len(m), count):
        value = m[k - degree] << degree ^ m[k - degree]
        for t in range(1, degree):
            if code >> (t - 1) & 1:
                value ^= m[k - degree + t] << (degree - t)
        m.append(value)
    return m


def leading_bits(degree, code, initial, count):
    """Bit k of the result is the leading bit of m_(k+1); the recurrence without its shifts."""
    bits = [m >> k & 1 for k, m in enumerate(initial)][:count]
    for k in range(len(bits), count):
        bit = bits[k - degree]
        for t in range(1, degree):
            if code >> (t - 1) & 1:
                bit ^= bits[k - degree + t]
        bits.append(bit)
    return sum(bit << k for k, bit in enumerate(bits))


def generator_rows(m):
    """Rows of the generator matrix: row i maps digits of the index to digit i of the coordinate."""
    return [sum((m[k] >> (k - i) & 1) << k for k in range(i, BITS)) for i in range(BITS)]


def t_value(rows_a, rows_b):
    """The t of the (t, BITS, 2)-net of two dimensions."""
    best = BITS
    for first in range(BITS + 1):
        basis, independent = [], True
        count = 0
        for row in rows_a[:first] + rows_b:
            for b in basis:
                row = min(row, row ^ b)
            if row == 0:
                independent = False
            if not independent:
                break
            basis.append(row)
            count += 1
        best = min(best, count)
    return BITS - best


def main(path):
    random.seed(20240229)
    polynomials = [(degree, (p - (1 << degree)) >> 1)
                   for degree in range(1, HIGHEST_DEGREE + 1)
                   for p in range(1 << degree, 2 << degree) if is_primitive(p, degree)]
    dimensions = len(polynomials) + 1
    # Dimension 1: all direction integers 1, so its matrix of leading bits is 1, 0, 0, ...
    eliminated = {0: 1}  # column of the pivot to reduced row
    matrices = [generator_rows([1] * BITS)]
    with open(path, "w", encoding="ascii") as out:
        out.write("dimension,degree,code," + ",".join(f"m{k}" for k in range(1, HIGHEST_DEGREE + 1)) + "\n")
        out.write("1,0,0,1" + "," * (HIGHEST_DEGREE - 1) + "\n")
        for j, (degree, code) in enumerate(polynomials, start=1):
            best = None
            found = 0
            for attempt in range(400):
                initial = [random.getrandbits(k) << 1 | 1 for k in range(degree)]
                row = leading_bits(degree, code, initial, dimensions)
                for column in range(j):
                    if row >> column & 1:
                        row ^= eliminated[column]
                property_a = row >> j & 1 == 1
                if not property_a and (found or attempt < 300):
                    continue
                rows = generator_rows(direction_integers(degree, code, initial, BITS))
                score = sum(t_value(rows, other) for other in matrices[-NEIGHBOURS:])
                if best is None or (not property_a, score) < best[:2]:
                    best = (not property_a, score, initial, row, rows)
                found += property_a
                if found == CANDIDATES:
                    break
            without_a, _, initial, row, rows = best
            if without_a:
                print(f"dimension {j + 1}: no property A", file=sys.stderr)
                row |= 1 << j
            eliminated[j] = row
            matrices.append(rows)
            fields = [str(m) for m in initial] + [""] * (HIGHEST_DEGREE - degree)
            out.write(f"{j + 1},{degree},{code}," + ",".join(fields) + "\n")


if __name__ == "__main__":
    main(sys.argv[1] if len(sys.argv) > 1 else "examples/lds/direction_numbers.csv")
