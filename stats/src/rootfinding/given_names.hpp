// The given names of the root finders, with refusals as host errors and their ends as user
// information; kernels/rootfinding says what each does.
#pragma once

#include <vexelc/vexelc.h>

#include <cstdint>

#include "kernel/refusals.hpp"
#include "kernels/rootfinding/brent.hpp"
#include "kernels/rootfinding/discrete_interpolation.hpp"
#include "kernels/rootfinding/newton_raphson.hpp"

using STATS_RealFunction_HW = vexel::kernels::RealFunction;

inline double STATS_BrentMethod_HW(VKernelVector kv, double target, STATS_RealFunction_HW f,
                                   double a, double b, double tol, int maxIter) {
  return STATS_RaisingRefusals_HW(
      kv, [=] { return vexel::kernels::brent(target, f, a, b, tol, maxIter); });
}

inline double STATS_BrentMethodHybridRight_HW(VKernelVector kv, double target,
                                              STATS_RealFunction_HW f, double lowerValue,
                                              double upperValue, double x0, double right,
                                              double tol, int maxIter) {
  return STATS_RaisingRefusals_HW(kv, [=] {
    return vexel::kernels::brentLeftOf(target, f, lowerValue, upperValue, x0, right, tol, maxIter);
  });
}

inline double STATS_BrentMethodHybridLeft_HW(VKernelVector kv, double target,
                                             STATS_RealFunction_HW f, double lowerValue,
                                             double upperValue, double left, double x0, double tol,
                                             int maxIter) {
  return STATS_RaisingRefusals_HW(kv, [=] {
    return vexel::kernels::brentRightOf(target, f, lowerValue, upperValue, left, x0, tol, maxIter);
  });
}

inline double STATS_BrentMethodHybridUnbound_HW(VKernelVector kv, double target,
                                                STATS_RealFunction_HW f, double lowerValue,
                                                double upperValue, double initPoint1,
                                                double initPoint2, double tol, int maxIter) {
  return STATS_RaisingRefusals_HW(kv, [=] {
    return vexel::kernels::brentFromTwo(target, f, lowerValue, upperValue, initPoint1, initPoint2,
                                        tol, maxIter);
  });
}

// An exhausted budget and a barrier reached are told as user information, channel "hints", level 2,
// with the name that the message has always had.
inline double STATS_ToldRoot_HW(VKernelVector kv, vexel::kernels::FoundRoot root,
                                const char* exhausted) {
  constexpr int kLevel = 2;
  if (root.end == vexel::kernels::RootEnd::exhausted) {
    VexelUserInfo(kv, kLevel, "hints", exhausted);
  } else if (root.end == vexel::kernels::RootEnd::atBarrier) {
    VexelUserInfo(kv, kLevel, "hints", "NewtonRaphson has converged to a barrier point");
  }
  return root.x;
}

inline constexpr const char* STATS_SafeExhausted_HW =
    "NewtonRaphsonSafe completed the maximum number of iterations without converging";

inline double STATS_NewtonRaphson_HW(VKernelVector kv, double target, STATS_RealFunction_HW f,
                                     STATS_RealFunction_HW df, double x0, bool hasLeft, double left,
                                     bool hasRight, double right, double tol, int maxIter) {
  const auto root = STATS_RaisingRefusals_HW(kv, [=] {
    return vexel::kernels::newtonRaphson(target, f, df, x0, hasLeft, left, hasRight, right, tol,
                                         maxIter);
  });
  return STATS_ToldRoot_HW(
      kv, root, "NewtonRaphson completed the maximum number of iterations without converging");
}

inline double STATS_NewtonRaphsonSafe_HW(VKernelVector kv, double target, STATS_RealFunction_HW f,
                                         STATS_RealFunction_HW df, double x0, double lower,
                                         double upper, double tol, int maxIter) {
  const auto root = STATS_RaisingRefusals_HW(kv, [=] {
    return vexel::kernels::newtonRaphsonSafe(target, f, df, x0, lower, upper, tol, maxIter);
  });
  return STATS_ToldRoot_HW(kv, root, STATS_SafeExhausted_HW);
}

// Says that the safe method is exhausted: its iteration is what ends the search.
inline double STATS_NewtonRaphsonHybrid_HW(VKernelVector kv, double target, STATS_RealFunction_HW f,
                                           STATS_RealFunction_HW df, double x0, double lowerValue,
                                           double upperValue, bool hasLeft, double left,
                                           bool hasRight, double right, double tol, int maxIter) {
  const auto root = STATS_RaisingRefusals_HW(kv, [=] {
    return vexel::kernels::newtonRaphsonHybrid(target, f, df, x0, lowerValue, upperValue, hasLeft,
                                               left, hasRight, right, tol, maxIter);
  });
  return STATS_ToldRoot_HW(kv, root, STATS_SafeExhausted_HW);
}

inline std::int32_t STATS_DiscreteInterpolation_HW(VKernelVector kv, double p,
                                                   STATS_RealFunction_HW F, std::int32_t lo,
                                                   std::int32_t hi, int maxIter) {
  return STATS_RaisingRefusals_HW(
      kv, [=] { return vexel::kernels::interpolate(p, F, lo, hi, maxIter); });
}

inline std::int32_t STATS_DiscreteInterpolationHybridLeft_HW(VKernelVector kv, double p,
                                                             STATS_RealFunction_HW F,
                                                             double lowerValue, double upperValue,
                                                             std::int32_t left, std::int32_t x0,
                                                             int maxIter) {
  return STATS_RaisingRefusals_HW(kv, [=] {
    return vexel::kernels::interpolateRightOf(p, F, lowerValue, upperValue, left, x0, maxIter);
  });
}

inline std::int32_t STATS_DiscreteInterpolationHybridRight_HW(VKernelVector kv, double p,
                                                              STATS_RealFunction_HW F,
                                                              double lowerValue, double upperValue,
                                                              std::int32_t x0, std::int32_t right,
                                                              int maxIter) {
  return STATS_RaisingRefusals_HW(kv, [=] {
    return vexel::kernels::interpolateLeftOf(p, F, lowerValue, upperValue, x0, right, maxIter);
  });
}

inline std::int32_t STATS_DiscreteInterpolationHybridUnbound_HW(
    VKernelVector kv, double p, STATS_RealFunction_HW F, double lowerValue, double upperValue,
    std::int32_t initPoint1, std::int32_t initPoint2, int maxIter) {
  return STATS_RaisingRefusals_HW(kv, [=] {
    return vexel::kernels::interpolateFromTwo(p, F, lowerValue, upperValue, initPoint1, initPoint2,
                                              maxIter);
  });
}
