"""Random variates and samples, from the same draws as the library's."""

import math

import closed_forms_model as closed_forms
import libm
from distributions import (converted, counted, filled, miscounts, random_arguments, random_output,
                           whole)
from host import (NAN, Array, Raised, RandomStream, boolean, call, expected, integer32, main, real)
from libm import divide
from ziggurats import exponential, normal


def gamma(stream, b, c):
    if not c >= 0.0:
        return NAN
    if c == 1.0:
        return exponential(stream, b)
    if c < 1.0:
        g = gamma(stream, b, c + 1.0)
        return libm.power(stream.double01(), divide(1.0, c)) * g
    d = c - 0.3333333333333333
    s = 1.0 / libm.sqrt(9.0 * d)
    while True:
        z = normal(stream, 0.0, 1.0)
        v = 1.0 + s * z
        if v > 0.0:
            v = v * v * v
            u = stream.double01()
            if (1.0 - 0.0331 * (z * z * (z * z)) > u
                    or 0.5 * (z * z) + d * (1.0 - v + libm.log(v)) > libm.log(u)):
                return v * d * b


def chi_square(stream, nu):
    return gamma(stream, 2.0, 0.5 * nu)


def f_ratio(stream, nu1, nu2):
    x = chi_square(stream, nu1)
    y = chi_square(stream, nu2)
    return divide(x * nu2, y * nu1)


def beta(stream, nu1, nu2):
    x = gamma(stream, 1.0, nu1)
    y = gamma(stream, 1.0, nu2)
    return divide(x, y + x)


def standard_cauchy(stream):
    u = stream.double01() - 0.5
    t = 0.2488702280083841 - u * u
    if t > 0.0:
        return u * (0.6366197723675813 / t + 0.5972997593539963)
    while True:
        u = stream.double01() - 0.5
        t = 0.25 - u * u
        x = u * (0.6380631366077802 / t + 0.595948606052907)
        w = stream.double01()
        score = (x * x + 1.0) * (0.0214949004570452 * w + 4.9125013953033205)
        if t * t * (score - 0.9339962957603656) + t <= 0.5:
            return x


def cauchy(stream, a, b):
    return standard_cauchy(stream) * b + a


def moyal(stream, a, b):
    while True:
        theta = stream.double01() * math.pi - 0.5 * math.pi
        w = stream.double01()
        x = libm.tan(theta)
        g = libm.exp(-0.5 * (libm.exp(-x) + x)) * (1.0 / libm.sqrt(2.0 * math.pi))
        if g / (libm.cos(theta) * libm.cos(theta)) >= 0.912 * w:
            return x * b + a


def maxwell(stream, a):
    e = libm.log(stream.double01())
    s = 2.0
    while s > 1.0:
        v = stream.double01()
        w = stream.double01()
        s = v * v + w * w
    y = -e - libm.log(stream.double01()) * (v * v / s)
    return libm.sqrt(2.0 * y) * a


def inverse_gaussian(stream, mu, lambda_):
    m = mu * chi_square(stream, 1.0)
    root = libm.sqrt(m * m + 4.0 * lambda_ * m)
    x = (2.0 * lambda_ + m - root) * divide(0.5 * mu, lambda_)
    return x if stream.double01() * (mu + x) <= mu else divide(mu * mu, x)


def error(stream, a, b, c):
    if c == 2.0:
        return closed_forms.laplace_quantile(stream.double01(), a, 2.0 * b)
    if c == 1.0:
        return normal(stream, a, b)
    if not c >= 0.0:
        return NAN
    u = stream.double01()
    h = 0.5 * c
    y = libm.power(gamma(stream, 1.0, h), h) * (libm.power(2.0, h) * b)
    y = y if u > 0.5 else -y
    return y if a == 0.0 else y + a


def non_central_student_t(stream, nu, delta):
    z = normal(stream, delta, 1.0)
    w = chi_square(stream, nu)
    return divide(z, libm.sqrt(divide(w, nu)))


def non_central_chi_square(stream, nu, delta, by_squares):
    """None for a variate by inversion."""
    if not by_squares:
        return None
    if nu > 2147483647.0:
        raise Raised("too many degrees of freedom for a sum of squares")
    mean = libm.sqrt(divide(delta, nu))
    total = 0.0
    count = 0
    while nu > count:
        z = normal(stream, mean, 1.0)
        total += z * z
        count += 1
    return total


def non_central_beta(stream, nu1, nu2, delta):
    """None where the numerator is drawn by inversion."""
    if not nu1 <= 50.0:
        return None
    x = non_central_chi_square(stream, 2.0 * nu1, delta, True)
    y = chi_square(stream, 2.0 * nu2)
    return divide(x, y + x)


def by_inversion(quantile):
    return lambda stream, *parameters: float(quantile(stream.double01(), *parameters))


# Distribution: its variate, the conversions of its parameters, and their kinds.
VARIATES = {
    "Uniform": (by_inversion(closed_forms.uniform_quantile), [real] * 2, "xx"),
    "Triangular": (by_inversion(closed_forms.triangular_quantile), [real] * 3, "xxx"),
    "Weibull": (by_inversion(closed_forms.weibull_quantile), [real] * 2, "ss"),
    "Rayleigh": (by_inversion(closed_forms.rayleigh_quantile), [real], "s"),
    "Power": (by_inversion(closed_forms.power_quantile), [real] * 2, "ss"),
    "Pareto": (by_inversion(closed_forms.pareto_quantile), [real] * 2, "ss"),
    "Exponential": (exponential, [real], "s"),
    "Laplace": (by_inversion(closed_forms.laplace_quantile), [real] * 2, "xs"),
    "Logistic": (by_inversion(closed_forms.logistic_quantile), [real] * 2, "xs"),
    "Gumbel": (by_inversion(closed_forms.gumbel_quantile), [real] * 2, "xs"),
    "Cauchy": (cauchy, [real] * 2, "xs"),
    "Normal": (normal, [real] * 2, "xs"),
    "LogNormal": (lambda *parameters: libm.exp(normal(*parameters)), [real] * 2, "xs"),
    "ChiSquare": (chi_square, [real], "s"),
    "FRatio": (f_ratio, [real] * 2, "ss"),
    "Gamma": (gamma, [real] * 2, "ss"),
    "Beta": (beta, [real] * 2, "ss"),
    "Moyal": (moyal, [real] * 2, "xs"),
    "Maxwell": (maxwell, [real], "s"),
    "InverseGaussian": (inverse_gaussian, [real] * 2, "ss"),
    "Error": (error, [real] * 3, "xss"),
    "NonCentralStudentT": (non_central_student_t, [real] * 2, "sx"),
    "NonCentralChiSquare": (non_central_chi_square, [real, real, boolean], "ssb"),
    "NonCentralBeta": (non_central_beta, [real] * 3, "sss"),
    "Geometric": (by_inversion(closed_forms.geometric_quantile), [real], "p"),
    "Bernoulli": (lambda stream, p: 1.0 if p >= stream.double01() else 0.0, [real], "p"),
    "DiscreteUniform": (by_inversion(closed_forms.discrete_uniform_quantile), [whole] * 2, "nn"),
}


def random_variate(stream, name, arguments):
    variate, conversions, _ = VARIATES[name]
    arguments = counted(name + "RandomVariate", arguments, len(conversions))
    return variate(stream, *converted(conversions, arguments))


def normal_sample(stream, output, mu, sigma):
    """Of a size, or into an array; parameters come first."""
    mu, sigma = real(mu), real(sigma)
    if not isinstance(output, Array):
        n = integer32(output)
        output = Array("float[8]", [(1, n)], [0.0] * n)
    if output.storage != "rectangular":
        raise Raised("output array must have rectangular storage, received: %1", output)
    if output.datatype != "float[8]":
        raise Raised("output array must have float[8] or sfloat data type, received: %1", output)
    return filled(output, [normal(stream, mu, sigma) for _ in output.elements])


def random_sample(stream, name, arguments):
    variate, conversions, _ = VARIATES[name]
    arguments = counted(name + "RandomSample", arguments, len(conversions) + 1)
    if name == "Normal":
        return normal_sample(stream, *arguments)
    n = integer32(arguments[0])
    parameters = converted(conversions, arguments[1:])
    if name == "Geometric":
        log_failure = libm.log1p(-parameters[0]) + 0.0
        values = [libm.floor(divide(-exponential(stream, 1.0), log_failure)) for _ in range(n)]
    else:
        values = [variate(stream, *parameters) for _ in range(n)]
    return None if None in values else Array("float[8]", [(1, n)], values)


def calls(random):
    for name, (_, conversions, _) in VARIATES.items():
        yield from miscounts(name + "RandomVariate", len(conversions))
        yield from miscounts(name + "RandomSample", len(conversions) + 1)
    while True:
        for name, (_, _, kinds) in VARIATES.items():
            arguments = random_arguments(random, kinds)
            operation = random.choice(["RandomVariate", "RandomSample"])
            if operation == "RandomSample":
                arguments.insert(0, random.choice([0, -3, 1, 2, 3, 8, 30, 200, 2.0, 2**31]))
                if name == "Normal" and random.random() < 0.7:
                    arguments[0] = random_output(random)
            seed = random.randrange(2**64)
            stream = RandomStream(seed)
            function = random_variate if operation == "RandomVariate" else random_sample
            result = expected(function, stream, name, arguments)
            if result is not None:
                if not isinstance(result, Raised):
                    result = [result, stream.int32()]
                statement = call(f"STATS_Vexel{name}{operation}_HW", *arguments)
                yield f"randomize({seed}): [{statement}, RandomInt32()]", result


if __name__ == "__main__":
    main(calls, count=4000)
