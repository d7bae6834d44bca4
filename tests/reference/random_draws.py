"""Known draws of Random: writes tests/reference/data/random_draws.inc.

A second computation: the step of a lane as a 256 x 256 matrix over the field of two elements, kept as
256 integers, its powers by squaring, and the outputs by stepping.
"""
import os

MASK = (1 << 64) - 1


def rotl(x, k):
    return (x << k | x >> (64 - k)) & MASK


def step(s):
    t = s[1] << 17 & MASK
    s[2] ^= s[0]
    s[3] ^= s[1]
    s[1] ^= s[2]
    s[0] ^= s[3]
    s[2] ^= t
    s[3] = rotl(s[3], 45)


def stepped(v):
    s = [v >> 64 * w & MASK for w in range(4)]
    step(s)
    return sum(word << 64 * w for w, word in enumerate(s))


def apply(matrix, v):
    result = 0
    while v:
        low = v & -v
        result ^= matrix[low.bit_length() - 1]
        v ^= low
    return result


def splitmix(seed):
    words = []
    for _ in range(4):
        seed = (seed + 0x9E3779B97F4A7C15) & MASK
        z = (seed ^ seed >> 30) * 0xBF58476D1CE4E5B9 & MASK
        z = (z ^ z >> 27) * 0x94D049BB133111EB & MASK
        words.append(z ^ z >> 31)
    return sum(word << 64 * w for w, word in enumerate(words))


squares = [[stepped(1 << i) for i in range(256)]]  # [k]: 2^k steps
while len(squares) < 256:
    squares.append([apply(squares[-1], column) for column in squares[-1]])


def draws(seed, block, n):
    lane = splitmix(seed)
    for bit in range(64):
        if block >> bit & 1:
            lane = apply(squares[192 + bit], lane)
    lanes = []
    for _ in range(8):
        lanes.append([lane >> 64 * w & MASK for w in range(4)])
        lane = apply(squares[128], lane)
    out = []
    for i in range(n):
        s = lanes[i % 8]
        out.append(rotl((s[0] + s[3]) & MASK, 23) + s[0] & MASK)
        step(s)
    return out


with open(os.path.join(os.path.dirname(__file__), "data/random_draws.inc"), "w") as file:
    for seed, block in ((0, 0), (42, 0), (42, 1), (MASK, 0), (12345, 0xFEDCBA9876543210)):
        words = draws(seed, block, 1000)
        rows = ",\n      ".join(", ".join("0x%016X" % w for w in words[i:i + 4]) for i in (0, 4, 8))
        print("{%dU, 0x%XU,\n     {%s},\n     0x%016X}," % (seed, block, rows, words[999]), file=file)
