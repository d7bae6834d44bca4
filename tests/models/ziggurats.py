"""Standard normal and exponential variates by the ziggurat method, with the library's draws."""

import libm

SCALE = 2.0**31


class Ziggurat:
    """Tables for a density with right edge r of the base layer and area v of every layer."""

    def __init__(self, r, v, density, next_edge):
        self.r = r
        self.density = density
        self.K = [int(r / (v / density(r)) * SCALE), 0] + [0] * 254
        self.W = [v / density(r) / SCALE] + [0.0] * 254 + [r / SCALE]
        self.F = [0.0] * 255 + [density(r)]
        edge = r
        for i in range(254, 0, -1):
            above = next_edge(edge, density(edge), v)
            self.K[i + 1] = int(above / edge * SCALE)
            self.W[i] = above / SCALE
            self.F[i] = density(above)
            edge = above
        self.F[0] = density(edge) + v / edge

    def draw(self, stream, size, tail):
        """size(integer) is what the quick test compares; tail(stream, integer) ends layer 0."""
        h = stream.int32()
        layer = h & 255
        if size(h) < self.K[layer]:
            return h * self.W[layer]
        if layer == 0:
            return tail(stream, h)
        x = h * self.W[layer]
        while True:
            u = stream.double01()
            if self.density(x) > self.F[layer] + u * (self.F[layer - 1] - self.F[layer]):
                return x
            retry = stream.int32()
            if size(retry) < self.K[retry & 255]:
                return retry * self.W[retry & 255]


NORMAL = Ziggurat(3.654152885361009, 0.00492867323399, lambda x: libm.exp(-0.5 * x * x),
                  lambda x, f, v: libm.sqrt(-2.0 * libm.log(f + v / x)))
EXPONENTIAL = Ziggurat(7.69711747013105, 0.003949659822581557, lambda x: libm.exp(-x),
                       lambda x, f, v: -libm.log(v / x + f))


def normal_tail(stream, h):
    while True:
        x = -libm.log(stream.double01()) / NORMAL.r
        y = -libm.log(stream.double01())
        if x * x <= 2.0 * y:
            return NORMAL.r + x if h > 0 else -NORMAL.r - x


def normal(stream, mu, sigma):
    """The lowest integer has no absolute value of 32 bits, and passes as it is."""
    z = NORMAL.draw(stream, lambda h: h if h == -2**31 else abs(h), normal_tail)
    return z * sigma + mu


def exponential(stream, b):
    """Every negative integer passes the quick test."""
    return abs(EXPONENTIAL.draw(stream, lambda h: h, lambda stream, h:
                                EXPONENTIAL.r - libm.log(stream.double01()))) * b
