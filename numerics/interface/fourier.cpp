// Real discrete Fourier transforms of any length, with kissfft underneath.
//
// An even length m is done by one complex transform of length m/2 (even elements as real parts, odd
// ones as imaginary parts), an odd one by a complex transform of length m.  A complex length with a
// large prime factor, for which kissfft takes time in proportion to that factor, goes through
// Bluestein's chirp convolution (L. I. Bluestein, 1970, A linear filtering approach to the
// computation of the discrete Fourier transform) of a length without factors beyond five.

#include <nag2/nag2.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <kissfft/kissfft.hh>
#include <limits>
#include <new>
#include <numbers>
#include <vector>

namespace {

using Complex = std::complex<double>;
using ComplexVector = std::vector<Complex>;

// *ifail of the three routines.
enum : int { kDone = 0, kBadLength = 1, kNoMemory = 2 };

// Up to this prime factor kissfft itself is faster than three transforms of twice the length.
constexpr std::size_t kLargestDirectFactor = 61;

std::size_t largestPrimeFactor(std::size_t n) {
  std::size_t largest = 1;
  for (std::size_t p = 2; p * p <= n; ++p) {
    while (n % p == 0) {
      largest = p;
      n /= p;
    }
  }
  return n > 1 ? n : largest;
}

// The least length >= n without prime factors beyond 5, n >= 1.
std::size_t convenientLength(std::size_t n) {
  std::size_t best = std::bit_ceil(n);
  for (std::size_t fives = 1; fives < best; fives *= 5) {
    for (std::size_t odd = fives; odd < best; odd *= 3) {
      best = std::min(best, odd * std::bit_ceil((n + odd - 1) / odd));
    }
  }
  return best;
}

// exp(-2 pi i numerator / denominator), 0 <= numerator <= denominator.
Complex unitRoot(std::size_t numerator, std::size_t denominator) {
  const double angle =
      2.0 * std::numbers::pi * static_cast<double>(numerator) / static_cast<double>(denominator);
  return {std::cos(angle), -std::sin(angle)};
}

// Written out: the operator of std::complex also repairs infinities, at a price.
Complex product(Complex a, Complex b) {
  return {a.real() * b.real() - a.imag() * b.imag(), a.real() * b.imag() + a.imag() * b.real()};
}

// sum_j x_j exp(-2 pi i j k / n) as a convolution with the chirp exp(pi i j^2 / n).
ComplexVector bluestein(const ComplexVector& x) {
  const std::size_t n = x.size();
  const std::size_t length = convenientLength(2 * n - 1);
  // j^2 modulo 2n, by its differences 2j + 1, keeps the angle small and exact.
  ComplexVector chirp(n);
  std::size_t square = 0;
  for (std::size_t j = 0; j < n; ++j) {
    chirp[j] = unitRoot(square, 2 * n);
    square = (square + 2 * j + 1) % (2 * n);
  }

  ComplexVector signal(length);
  ComplexVector filter(length);
  for (std::size_t j = 0; j < n; ++j) {
    signal[j] = product(x[j], chirp[j]);
    filter[j] = std::conj(chirp[j]);
    filter[(length - j) % length] = filter[j];
  }
  const kissfft<double> transform(length, false);
  ComplexVector signalSpectrum(length);
  ComplexVector filterSpectrum(length);
  transform.transform(signal.data(), signalSpectrum.data());
  transform.transform(filter.data(), filterSpectrum.data());
  for (std::size_t k = 0; k < length; ++k) {
    // Conjugating before and after makes the forward transform the inverse one.
    signalSpectrum[k] = std::conj(product(signalSpectrum[k], filterSpectrum[k]));
  }
  transform.transform(signalSpectrum.data(), signal.data());

  ComplexVector result(n);
  const double scale = 1.0 / static_cast<double>(length);
  for (std::size_t k = 0; k < n; ++k) {
    result[k] = product(std::conj(signal[k]), chirp[k]) * scale;
  }
  return result;
}

// The unscaled complex transform, exponent negative.
ComplexVector transform(const ComplexVector& x) {
  if (x.size() < 2) {
    return x;
  }
  if (largestPrimeFactor(x.size()) > kLargestDirectFactor) {
    return bluestein(x);
  }
  ComplexVector result(x.size());
  kissfft<double>(x.size(), false).transform(x.data(), result.data());
  return result;
}

// Term k of a Hermitian sequence of length m in its storage.
Complex hermitianTerm(const double* x, std::size_t m, std::size_t k) {
  if (k == 0 || 2 * k == m) {
    return x[k];
  }
  return 2 * k < m ? Complex(x[k], x[m - k]) : Complex(x[m - k], -x[k]);
}

void storeTerm(double* x, std::size_t m, std::size_t k, Complex z) {
  x[k] = z.real();
  if (k != 0 && 2 * k != m) {
    x[m - k] = z.imag();
  }
}

void realToHermitian(double* x, std::size_t m) {
  const double scale = 1.0 / std::sqrt(static_cast<double>(m));
  if (m % 2 != 0) {
    const ComplexVector z = transform(ComplexVector(x, x + m));
    for (std::size_t k = 0; 2 * k < m; ++k) {
      storeTerm(x, m, k, z[k] * scale);
    }
    return;
  }
  const std::size_t h = m / 2;
  ComplexVector pairs(h);
  for (std::size_t t = 0; t < h; ++t) {
    pairs[t] = {x[2 * t], x[2 * t + 1]};
  }
  const ComplexVector c = transform(pairs);
  for (std::size_t k = 0; k <= h; ++k) {
    const Complex a = c[k == h ? 0 : k];
    const Complex b = std::conj(c[k == 0 ? 0 : h - k]);
    const Complex even = 0.5 * (a + b);
    const Complex difference = 0.5 * (a - b);
    const Complex odd(difference.imag(), -difference.real());  // divided by i
    storeTerm(x, m, k, (even + product(unitRoot(k, m), odd)) * scale);
  }
}

void hermitianToReal(double* x, std::size_t m) {
  const double scale = 1.0 / std::sqrt(static_cast<double>(m));
  if (m % 2 != 0) {
    ComplexVector z(m);
    for (std::size_t k = 0; k < m; ++k) {
      z[k] = hermitianTerm(x, m, k);
    }
    z = transform(z);
    for (std::size_t j = 0; j < m; ++j) {
      x[j] = z[j].real() * scale;
    }
    return;
  }
  // Even results come from Z_k + Z_(k+h), odd ones from the turned difference; both are real, so
  // one complex transform carries both.
  const std::size_t h = m / 2;
  ComplexVector both(h);
  for (std::size_t k = 0; k < h; ++k) {
    const Complex a = hermitianTerm(x, m, k);
    const Complex b = hermitianTerm(x, m, k + h);
    const Complex even = a + b;
    const Complex odd = product(unitRoot(k, m), a - b);
    both[k] = {even.real() - odd.imag(), even.imag() + odd.real()};
  }
  both = transform(both);
  for (std::size_t t = 0; t < h; ++t) {
    x[2 * t] = both[t].real() * scale;
    x[2 * t + 1] = both[t].imag() * scale;
  }
}

// Whether the machine can hold what a transform of m terms takes beside the caller's series and its
// work array.  The system would promise more and end the process when it is used.
bool fitsIntoMemory(std::size_t m) {
  const std::size_t n = m % 2 == 0 ? m / 2 : m;  // terms of the complex transform
  const std::size_t series = largestPrimeFactor(n) > kLargestDirectFactor ? 15 : 4;
  const std::size_t bytes = series * n * sizeof(Complex) + 2 * m * sizeof(double);
  return bytes / static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) <
         static_cast<std::size_t>(sysconf(_SC_PHYS_PAGES));
}

template <typename Transform>
int run(double* x, const int* m, Transform transformInPlace) {
  if (*m < 1) {
    return kBadLength;
  }
  if (!fitsIntoMemory(static_cast<std::size_t>(*m))) {
    return kNoMemory;
  }
  try {
    transformInPlace(x, static_cast<std::size_t>(*m));
    return kDone;
  } catch (const std::bad_alloc&) {
    return kNoMemory;
  }
}

}  // namespace

extern "C" void q64883(double* x, const int* m, double* /*work*/, int* ifail) {
  *ifail = run(x, m, realToHermitian);
}

extern "C" void q33150(double* x, const int* m, int* ifail) {
  for (int k = *m / 2 + 1; k < *m; ++k) {
    x[k] = -x[k];
  }
  *ifail = *m < 1 ? kBadLength : kDone;
}

extern "C" void q42899(double* x, const int* m, double* /*work*/, int* ifail) {
  *ifail = run(x, m, hermitianToReal);
}
