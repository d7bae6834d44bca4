// Moments, mean absolute deviation and expected values.

#include "kernels/descriptive/moments.hpp"

#include <cmath>

#include "kernels/watch.hpp"

namespace vexel::kernels {

namespace {

// sum of term(x) over n, first to last.
template <typename Term>
double simpleAverage(const double* x, int n, Term term) {
  double sum = 0.0;
  forEach(n, [&](int i) { sum += term(x[i]); });
  return sum / n;
}

// sum of w term(x) over the sum of w, first to last.
template <typename Term>
double weightedAverage(const double* x, const double* w, int n, Term term) {
  double sum = 0.0;
  double total = 0.0;
  forEach(n, [&](int i) {
    sum += w[i] * term(x[i]);
    total += w[i];
  });
  return sum / total;
}

auto powerAbout(double origin, int order) {
  return [origin, power = static_cast<double>(order)](double x) {
    return std::pow(x - origin, power);
  };
}

auto distanceFrom(double origin) {
  return [origin](double x) { return std::fabs(x - origin); };
}

}  // namespace

void simpleMoment(double* result, const double* x, int n, const int* orders, int m, double origin) {
  for (int j = 0; j < m; ++j) {
    result[j] = simpleAverage(x, n, powerAbout(origin, orders[j]));
  }
}

void weightedMoment(double* result, const double* x, const double* w, int n, const int* orders,
                    int m, double origin) {
  for (int j = 0; j < m; ++j) {
    result[j] = weightedAverage(x, w, n, powerAbout(origin, orders[j]));
  }
}

void moment(double* result, const double* x, const double* w, int n, const int* orders, int m,
            double origin) {
  if (w != nullptr) {
    weightedMoment(result, x, w, n, orders, m, origin);
  } else {
    simpleMoment(result, x, n, orders, m, origin);
  }
}

double simpleAbsoluteDeviation(const double* x, int n, double origin) {
  return simpleAverage(x, n, distanceFrom(origin));
}

double weightedAbsoluteDeviation(const double* x, const double* w, int n, double origin) {
  return weightedAverage(x, w, n, distanceFrom(origin));
}

double absoluteDeviation(const double* x, const double* w, int n, double origin) {
  return w != nullptr ? weightedAbsoluteDeviation(x, w, n, origin)
                      : simpleAbsoluteDeviation(x, n, origin);
}

double simpleExpectedValue(double (*f)(double), const double* x, int n) {
  return simpleAverage(x, n, f);
}

double weightedExpectedValue(double (*f)(double), const double* x, const double* w, int n) {
  return weightedAverage(x, w, n, f);
}

double expectedValue(double (*f)(double), const double* x, const double* w, int n) {
  return w != nullptr ? weightedExpectedValue(f, x, w, n) : simpleExpectedValue(f, x, n);
}

}  // namespace vexel::kernels
