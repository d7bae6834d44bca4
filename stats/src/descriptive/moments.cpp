// Moments, mean absolute deviation and expected values, and their entry points.

#include "descriptive/moments.hpp"

#include <cmath>
#include <vector>

#include "descriptive/one_or_list.hpp"
#include "descriptive/sample_view.hpp"
#include "kernel/callback_adapters.hpp"
#include "kernel/entry_frame.hpp"

namespace {

// sum of term(x) over n, first to last.
template <typename Term>
double simpleAverage(const double* x, int n, Term term) {
  double sum = 0.0;
  for (int i = 0; i < n; ++i) {
    sum += term(x[i]);
  }
  return sum / n;
}

// sum of w term(x) over the sum of w, first to last.
template <typename Term>
double weightedAverage(const double* x, const double* w, int n, Term term) {
  double sum = 0.0;
  double total = 0.0;
  for (int i = 0; i < n; ++i) {
    sum += w[i] * term(x[i]);
    total += w[i];
  }
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

void STATS_SimpleMoment_HW(double* result, const double* x, int n, const int* orders, int m,
                           double origin) {
  for (int j = 0; j < m; ++j) {
    result[j] = simpleAverage(x, n, powerAbout(origin, orders[j]));
  }
}

void STATS_WeightedMoment_HW(double* result, const double* x, const double* w, int n,
                             const int* orders, int m, double origin) {
  for (int j = 0; j < m; ++j) {
    result[j] = weightedAverage(x, w, n, powerAbout(origin, orders[j]));
  }
}

void STATS_Moment_HW(double* result, const double* x, const double* w, int n, const int* orders,
                     int m, double origin) {
  if (w != nullptr) {
    STATS_WeightedMoment_HW(result, x, w, n, orders, m, origin);
  } else {
    STATS_SimpleMoment_HW(result, x, n, orders, m, origin);
  }
}

double STATS_SimpleAbsoluteDeviation_HW(const double* x, int n, double origin) {
  return simpleAverage(x, n, distanceFrom(origin));
}

double STATS_WeightedAbsoluteDeviation_HW(const double* x, const double* w, int n, double origin) {
  return weightedAverage(x, w, n, distanceFrom(origin));
}

double STATS_AbsoluteDeviation_HW(const double* x, const double* w, int n, double origin) {
  return w != nullptr ? STATS_WeightedAbsoluteDeviation_HW(x, w, n, origin)
                      : STATS_SimpleAbsoluteDeviation_HW(x, n, origin);
}

double STATS_SimpleExpectedValue_HW(double (*f)(double), const double* x, int n) {
  return simpleAverage(x, n, f);
}

double STATS_WeightedExpectedValue_HW(double (*f)(double), const double* x, const double* w,
                                      int n) {
  return weightedAverage(x, w, n, f);
}

double STATS_ExpectedValue_HW(double (*f)(double), const double* x, const double* w, int n) {
  return w != nullptr ? STATS_WeightedExpectedValue_HW(f, x, w, n)
                      : STATS_SimpleExpectedValue_HW(f, x, n);
}

namespace {

// One positive integer, or a list of them.
std::vector<int> momentOrders(VKernelVector kv, ALGEB given) {
  std::vector<int> orders;
  STATS_ForEachGiven_HW(kv, given, [&](ALGEB order) {
    if (!IsVexelInteger32(kv, order) || VexelToInteger32(kv, order) < 1) {
      VexelRaiseError1(kv, "expected: list of positive integers, received %1", given);
    }
    orders.push_back(VexelToInteger32(kv, order));
  });
  return orders;
}

}  // namespace

// STATS_VexelMoment_HW(data, weights, orders, origin, ignore): moments about the origin.
//
// orders is a positive integer, which gives a float, or a list of them, which gives a list of
// floats.
STATS_ENTRY(STATS_VexelMoment_HW) {
  const Arguments arg(kv, args, 5, "VexelMoment expects 5 arguments, received: %1");
  const STATS_VexelDataSample_HW sample(kv, arg[1], arg[2]);
  const std::vector<int> orders = momentOrders(kv, arg[3]);
  const double origin = arg.real(4);
  const SampleView view = SampleView::forReading(kv, sample, arg.boolean(5));

  std::vector<double> moments(orders.size());
  STATS_Moment_HW(moments.data(), view.points, view.weights, view.size, orders.data(),
                  static_cast<int>(orders.size()), origin);
  return STATS_InFormOf_HW(kv, arg[3], moments);
}

// STATS_VexelAbsoluteDeviation_HW(data, weights, origin, ignore): mean absolute deviation about the
// origin.
STATS_ENTRY(STATS_VexelAbsoluteDeviation_HW) {
  const Arguments arg(kv, args, 4, "VexelAbsoluteDeviation expects 4 arguments, received: %1");
  const STATS_VexelDataSample_HW sample(kv, arg[1], arg[2]);
  const double origin = arg.real(3);
  const SampleView view = SampleView::forReading(kv, sample, arg.boolean(4));
  return STATS_DoubleToVexelFloat_HW(
      kv, STATS_AbsoluteDeviation_HW(view.points, view.weights, view.size, origin));
}

// STATS_VexelExpectedValue_HW(data, weights, procedure, ignore): the mean of the procedure's values
// at the points.  An error of the procedure passes to the caller unchanged.
STATS_ENTRY(STATS_VexelExpectedValue_HW) {
  const Arguments arg(kv, args, 4, "VexelExpectedValue expects 4 arguments, received: %1");
  const STATS_VexelDataSample_HW sample(kv, arg[1], arg[2]);
  const SampleView view = SampleView::forReading(kv, sample, arg.boolean(4));
  const STATS_StaticProcScope_HW scope(kv, arg[3]);
  return STATS_DoubleToVexelFloat_HW(
      kv, STATS_ExpectedValue_HW(STATS_VexelStaticProcAdapter_HW::Call, view.points, view.weights,
                                 view.size));
}
