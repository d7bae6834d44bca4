// Counting distinct values into a host table.
//
// Without weights, values of a dense array are counted in a table of the library's own, and the
// host sees each of them once.  Weights are summed by the host's addition, value by
// value in data order, since that is where rounding to the host's precision happens.

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <vector>

#include "kernel/data_argument.hpp"
#include "kernel/data_sample.hpp"
#include "kernel/element_types.hpp"
#include "kernel/entry_frame.hpp"
#include "kernels/lookout.hpp"
#include "kernels/tallies/count_table.hpp"
#include "kernels/watch.hpp"

namespace {

// "ray" is what hosts have always been told.
constexpr char kInvalidSample[] = "invalid data sample, expected: one-dimensional ray, received %1";

constexpr int kEntryCost = 1000;  // operations for an entry of a large host table, near enough

void addToEntry(VKernelVector kv, ALGEB table, ALGEB key, ALGEB increment) {
  if (VexelTableHasEntry(kv, table, key) != 0) {
    increment = VexelNumericAdd(kv, VexelTableSelect(kv, table, key), increment);
  }
  VexelTableAssign(kv, table, key, increment);
}

// Different bits may still be one host object (the NaNs are), so counts are added, not set.
template <typename T>
void storeCount(VKernelVector kv, ALGEB table, T value, std::int64_t count, int dataType) {
  RTableData element{};
  std::memcpy(&element, &value, sizeof value);
  addToEntry(kv, table, STATS_ElementToHost_HW(kv, element, dataType), ToVexelInteger64(kv, count));
}

// Values of any kind, through a hash table of their bits.  In the table as in the next function,
// entries are made in the order of the values' first occurrence.
template <typename T>
void tallyByBits(VKernelVector kv, ALGEB table, const T* x, V_INT n, int dataType) {
  vexel::kernels::CountTable counts;
  vexel::kernels::forEach(n, [&](V_INT i) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &x[i], sizeof(T));
    counts.add(bits);
  });
  vexel::kernels::Lookout lookout;
  for (const std::uint64_t bits : counts.keys()) {
    lookout.done(kEntryCost);
    storeCount(kv, table, bits, counts.count(bits), dataType);
  }
}

// Integers, through a counter for each value from the smallest to the largest.  False, and nothing
// done, if there are many more of these than elements.
template <typename T>
bool tallyByValue(VKernelVector kv, ALGEB table, const T* x, V_INT n, int dataType) {
  T smallest = x[0];
  T largest = x[0];
  vexel::kernels::forEach(n, [&](V_INT i) {
    smallest = std::min(smallest, x[i]);
    largest = std::max(largest, x[i]);
  });
  const std::uint64_t base = static_cast<std::uint64_t>(std::int64_t{smallest});
  const std::uint64_t span = static_cast<std::uint64_t>(std::int64_t{largest}) - base;
  if (span > 2 * static_cast<std::uint64_t>(n)) {
    return false;
  }
  const auto cell = [base](T value) {
    return static_cast<std::size_t>(static_cast<std::uint64_t>(std::int64_t{value}) - base);
  };
  std::vector<std::int64_t> counts(span + 1);
  std::vector<T> values;
  vexel::kernels::forEach(n, [&](V_INT i) {
    if (counts[cell(x[i])]++ == 0) {
      values.push_back(x[i]);
    }
  });
  vexel::kernels::Lookout lookout;
  for (const T value : values) {
    lookout.done(kEntryCost);
    storeCount(kv, table, value, counts[cell(value)], dataType);
  }
  return true;
}

void tallyBlock(VKernelVector kv, ALGEB table, const STATS_ElementReader_HW& data) {
  static_assert(std::endian::native == std::endian::little);  // narrow values come first
  const int type = data.dataType();
  const V_INT n = data.size();
  if (!STATS_IsMachineRealType_HW(type)) {
    tallyByBits(kv, table, reinterpret_cast<const std::uint64_t*>(data.block()), n, type);
    return;
  }
  STATS_WithMachineType_HW(type, [&]<typename T>(T*) {
    const T* const x = reinterpret_cast<const T*>(data.block());
    if constexpr (std::is_integral_v<T>) {
      if (tallyByValue(kv, table, x, n, type)) {
        return;
      }
    }
    tallyByBits(kv, table, x, n, type);
  });
}

bool isOneWord(int dataType) {
  return dataType != RTABLE_COMPLEX && dataType != RTABLE_COMPLEX_DAG;
}

// The weights of arguments 2, checked against the data of argument 1.
class Weights {
 public:
  Weights(VKernelVector kv, const Arguments& arg) : sample_(kv, arg[2]) {
    if (given() && sample_.size() != RTableNumElements(kv, arg[1])) {
      VexelRaiseError2(kv,
                       "vector of points and vector of weights are expected to have the same size, "
                       "received %1, %2",
                       arg[1], arg[2]);
    }
  }
  bool given() const { return sample_.size() != 0; }
  double operator[](V_INT i) const { return sample_.points()[i]; }

 private:
  STATS_VexelDataSample_HW sample_;
};

}  // namespace

// STATS_VexelTally_HW(data, weights): a table from each distinct value to how often it occurs, or
// to the sum of its weights.
//
// data is a one-dimensional array of any type, weights an array of the same size or an empty one.
// Values are distinct when they are different host objects: 2 and 2.0 are, NaNs are not.
STATS_ENTRY(STATS_VexelTally_HW) {
  const Arguments arg(kv, args, 2, "expected 2 arguments, received: %1");
  STATS_RequireVector_HW(kv, arg[1], kInvalidSample);
  const Weights weights(kv, arg);
  const STATS_ElementReader_HW data(kv, arg[1]);
  const ALGEB table = VexelTableAlloc(kv);
  if (!weights.given() && data.block() != nullptr && isOneWord(data.dataType())) {
    tallyBlock(kv, table, data);
    return table;
  }
  const ALGEB one = ToVexelInteger(kv, 1);
  vexel::kernels::Lookout lookout;
  for (V_INT i = 0; i < data.size(); ++i) {
    lookout.done(kEntryCost);
    const ALGEB key = STATS_ElementToHost_HW(kv, data[i], data.dataType());
    addToEntry(kv, table, key, weights.given() ? STATS_DoubleToVexelFloat_HW(kv, weights[i]) : one);
  }
  return table;
}

// VexelTallySorted(data, weights): run lengths, or run weights, of sorted data by value.
//
// The last run is missing from the table, so the largest value always is; the few callers there are
// add it themselves.
__attribute__((visibility("default"))) ALGEB VexelTallySorted(VKernelVector kv, ALGEB args);

ALGEB VexelTallySorted(VKernelVector kv, ALGEB args) {
  return STATS_RunEntry_HW(kv, [=] {
    const Arguments arg(kv, args, 2, "expected 2 arguments, received: %1");
    STATS_RequireVector_HW(kv, arg[1], kInvalidSample);
    const Weights weights(kv, arg);
    ALGEB data = arg[1];
    RTableSettings settings = STATS_SettingsOf_HW(kv, data);
    if (!STATS_IsDense_HW(settings, RTABLE_DAG)) {
      settings.data_type = RTABLE_DAG;
      settings.storage = RTABLE_RECTANGULAR;
      data = RTableCopy(kv, &settings, data);
    }
    const V_INT n = RTableNumElements(kv, data);
    const auto* const objects = static_cast<const ALGEB*>(RTableDataBlock(kv, data));
    const ALGEB table = VexelTableAlloc(kv);
    V_INT start = 0;
    double sum = weights.given() && n > 0 ? weights[0] : 0.0;
    vexel::kernels::Lookout lookout;
    for (V_INT i = 1; i < n; ++i) {
      lookout.done(kEntryCost);
      if (objects[i] == objects[start]) {
        sum += weights.given() ? weights[i] : 0.0;
        continue;
      }
      VexelTableAssign(
          kv, table, objects[start],
          weights.given() ? STATS_DoubleToVexelFloat_HW(kv, sum) : ToVexelInteger(kv, i - start));
      start = i;
      sum = weights.given() ? weights[i] : 0.0;
    }
    return table;
  });
}
