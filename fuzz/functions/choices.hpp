// What the fuzz target of the functions is made of: numbers, data and options from bytes, and what
// a result is held to.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <vector>
#include <vexel/data.hpp>

namespace fuzz {

// Bytes to choices; all choices are 0 when the bytes have run out.
class Choices {
 public:
  Choices(const std::uint8_t* data, std::size_t size) : data_(data), left_(size) {}

  bool empty() const { return left_ == 0; }
  std::uint8_t byte() {
    if (left_ == 0) {
      return 0;
    }
    --left_;
    return *data_++;
  }
  std::size_t below(std::size_t n) {
    std::size_t x = byte();
    if (n > 256) {
      x = x << 8U | byte();
    }
    return x % n;
  }
  bool flag() { return below(2) == 1; }
  template <typename T>
  T raw() {
    std::uint8_t bytes[sizeof(T)];
    for (std::uint8_t& b : bytes) {
      b = byte();
    }
    T value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
  }
  // One of the first n values of an enumeration.
  template <typename E>
  E one(std::size_t n) {
    return static_cast<E>(below(n));
  }

  double number();       // of any kind, special ones often
  double ordinary();     // of moderate size
  double probability();  // mostly in [0, 1]
  std::int64_t whole();
  std::size_t count(std::size_t most);  // mostly up to most, seldom enormous
  vexel::Missing missing() { return one<vexel::Missing>(3); }

 private:
  const std::uint8_t* data_;
  std::size_t left_;
};

// Elements of some type and stride, in memory that ends where they end.
class Elements {
 public:
  Elements(Choices& choices, std::size_t most);
  // As many as size, not negative: weights.  Seldom a wrong number of them, or a negative one.
  Elements(Choices& choices, std::size_t size, bool given);
  operator vexel::Data() const { return view_; }
  const vexel::Data& view() const { return view_; }
  std::size_t size() const { return view_.size(); }
  std::vector<double> doubles() const;
  void say(const char* name) const;  // on stderr, where it is talkative

 private:
  void store(Choices& choices, const std::vector<double>& values);
  std::vector<unsigned char> memory_;
  vexel::Data view_;
};

[[noreturn]] void fail(const std::string& what);
// Whether to tell on stderr what is called: VEXEL_FUZZ_SAY is set.
bool talkative();
// The numbers are told with it.
inline void expect(bool holds, const char* what, double a = 0, double b = 0, double c = 0) {
  if (!holds) {
    char numbers[120];
    std::snprintf(numbers, sizeof numbers, ": %.17g %.17g %.17g", a, b, c);
    fail(std::string(what) + numbers);
  }
}
// a <= b but for rounding; true with a NaN on either side.
inline bool atMost(double a, double b, double relative = 1e-12) {
  return !(a > b + relative * (std::abs(a) + std::abs(b)) + std::numeric_limits<double>::min());
}
inline bool same(double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }
bool same(const std::vector<double>& a, const std::vector<double>& b);

// Each makes one call or a few, and checks what they give.
void callLaw(Choices& choices);
void callStatistic(Choices& choices);
void callOrder(Choices& choices);
void callSeries(Choices& choices);
void callTest(Choices& choices);
void callState(Choices& choices);
void callChance(Choices& choices);
void callSequence(Choices& choices);
void callRoot(Choices& choices);
void callOwnLaw(Choices& choices);

}  // namespace fuzz
