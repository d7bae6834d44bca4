// The fixture of the array operations' tests: vectors of any element type, order, storage and lower
// bound, made from doubles and read back as such.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "kernel_test.hpp"

// The element types whose elements are ordered.
inline constexpr int kRealTypes[] = {RTABLE_DAG,       RTABLE_INTEGER8,  RTABLE_INTEGER16,
                                     RTABLE_INTEGER32, RTABLE_INTEGER64, RTABLE_FLOAT64,
                                     RTABLE_FLOAT32};

class ArraysTest : public KernelTest {
 protected:
  // A vector of small values in any element type; complex types get no imaginary part.
  vexel::Value make(int type, const std::vector<double>& x, V_INT lower = 1,
                    int storage = RTABLE_RECTANGULAR, int order = RTABLE_COLUMN_MAJOR) {
    RTableSettings s;
    RTableGetDefaults(kernel.vector(), &s);
    s.data_type = type;
    s.storage = storage;
    s.order = order;
    s.num_dimensions = 1;
    const V_INT bounds[] = {lower, lower + static_cast<V_INT>(x.size()) - 1};
    const vexel::Value result = kernel.array(s, nullptr, bounds);
    for (std::size_t i = 0; i < x.size(); ++i) {
      const V_INT index = lower + static_cast<V_INT>(i);
      RTableAssign(kernel.vector(), result.handle(), &index, element(type, x[i]));
    }
    return result;
  }
  vexel::Value objects(const std::vector<vexel::Value>& x) {
    const vexel::Value result = make(RTABLE_DAG, std::vector<double>(x.size(), 0.0));
    for (std::size_t i = 0; i < x.size(); ++i) {
      const V_INT index = static_cast<V_INT>(i) + 1;
      RTableData e{};
      e.dag = x[i].handle();
      RTableAssign(kernel.vector(), result.handle(), &index, e);
    }
    return result;
  }
  RTableData element(int type, double x) {
    RTableData e{};
    switch (type) {
      case RTABLE_INTEGER8:
        e.int8 = static_cast<std::int8_t>(x);
        break;
      case RTABLE_INTEGER16:
        e.int16 = static_cast<std::int16_t>(x);
        break;
      case RTABLE_INTEGER32:
        e.int32 = static_cast<std::int32_t>(x);
        break;
      case RTABLE_INTEGER64:
        e.int64 = static_cast<std::int64_t>(x);
        break;
      case RTABLE_FLOAT64:
        e.float64 = x;
        break;
      case RTABLE_FLOAT32:
        e.float32 = static_cast<float>(x);
        break;
      case RTABLE_COMPLEX:
        e.complexf64.re = x;
        break;
      case RTABLE_COMPLEX_DAG:
        e.complexdag.re = ToVexelFloat(kernel.vector(), x);
        e.complexdag.im = ToVexelInteger(kernel.vector(), 0);
        break;
      default:
        e.dag = ToVexelFloat(kernel.vector(), x);
        break;
    }
    return e;
  }
  static double value(VKernelVector kv, const RTableData& e, int type) {
    switch (type) {
      case RTABLE_INTEGER8:
        return e.int8;
      case RTABLE_INTEGER16:
        return e.int16;
      case RTABLE_INTEGER32:
        return e.int32;
      case RTABLE_INTEGER64:
        return static_cast<double>(e.int64);
      case RTABLE_FLOAT64:
        return e.float64;
      case RTABLE_FLOAT32:
        return static_cast<double>(e.float32);
      case RTABLE_COMPLEX:
        return e.complexf64.re;
      case RTABLE_COMPLEX_DAG:
        return VexelToFloat64(kv, e.complexdag.re);
      default:
        return VexelToFloat64(kv, e.dag);
    }
  }

  // Elements, and the type and lower bound that a result must have.
  std::vector<double> elements(const vexel::Value& x, int type, V_INT lower = 1) {
    RTableSettings s;
    RTableGetSettings(kernel.vector(), &s, x.handle());
    EXPECT_EQ(s.data_type, type);
    EXPECT_EQ(RTableLowerBound(kernel.vector(), x.handle(), 1), lower);
    std::vector<double> result;
    const V_INT n = RTableNumElements(kernel.vector(), x.handle());
    for (V_INT i = lower; i < lower + n; ++i) {
      result.push_back(value(kernel.vector(), RTableSelect(kernel.vector(), x.handle(), &i), type));
    }
    return result;
  }
  vexel::Value entry(const vexel::Value& table, const vexel::Value& key) {
    if (VexelTableHasEntry(kernel.vector(), table.handle(), key.handle()) == 0) {
      return kernel.null();
    }
    return {kernel, VexelTableSelect(kernel.vector(), table.handle(), key.handle())};
  }
  vexel::Value integers(const std::vector<double>& x) { return make(RTABLE_INTEGER32, x); }
};

// NaNs in the same places count as equal.
inline bool same(const std::vector<double>& a, const std::vector<double>& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](double x, double y) { return x == y || (std::isnan(x) && std::isnan(y)); });
}
