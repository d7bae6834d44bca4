#include "choices.hpp"

#include <algorithm>
#include <iterator>

namespace fuzz {
namespace {

constexpr double kMax = std::numeric_limits<double>::max();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

constexpr double kSpecial[] = {0.0,
                               -0.0,
                               1.0,
                               -1.0,
                               0.5,
                               2.0,
                               3.0,
                               1e-300,
                               1e300,
                               -1e300,
                               5e-324,
                               -5e-324,
                               0x1p-53,
                               0x1p-1022,
                               kMax,
                               -kMax,
                               kInfinity,
                               -kInfinity,
                               kNan,
                               1e-8,
                               1e-16,
                               1e8,
                               1e16,
                               0x1p53,
                               -1e-8,
                               0x1p31,
                               -0x1p31,
                               0x1p63,
                               -0x1p63,
                               100.0,
                               1000.0,
                               1e6,
                               0.1,
                               0.9,
                               1e-150,
                               1e150,
                               1e-3,
                               1e3,
                               1e5,
                               1e-5,
                               0x1p-30,
                               0x1p30,
                               1e12,
                               1e-12,
                               170.0,
                               1e-100,
                               1e100,
                               0x1p-1000,
                               0x1p1000,
                               0.25,
                               0x1.fffffffffffffp-1,
                               0x1.0000000000001p0};
constexpr std::int64_t kWhole[] = {0,
                                   1,
                                   -1,
                                   2,
                                   3,
                                   10,
                                   100,
                                   1000,
                                   1'000'000,
                                   2147483647,
                                   -2147483648,
                                   std::int64_t{1} << 53,
                                   (std::int64_t{1} << 53) + 1,
                                   std::numeric_limits<std::int64_t>::max(),
                                   std::numeric_limits<std::int64_t>::min(),
                                   -5};

// Saturating, NaN to 0.
template <typename T>
T integer(double x) {
  constexpr double high = -static_cast<double>(std::numeric_limits<T>::min());
  return x >= high    ? std::numeric_limits<T>::max()
         : x <= -high ? std::numeric_limits<T>::min()
         : x == x     ? static_cast<T>(x)
                      : T{0};
}

template <typename T>
T converted(double x) {
  if constexpr (std::is_same_v<T, double>) {
    return x;
  } else if constexpr (std::is_same_v<T, float>) {
    constexpr double most = std::numeric_limits<float>::max();
    return std::abs(x) <= most || std::isnan(x) ? static_cast<float>(x)
                                                : std::copysign(INFINITY, x > 0 ? 1.0F : -1.0F);
  } else {
    return integer<T>(x);
  }
}

// In memory of exactly that size, so that a sanitizer sees the first step beyond it.
template <typename T>
vexel::Data stored(std::vector<unsigned char>& memory, const std::vector<double>& values,
                   std::size_t stride, bool backwards) {
  const std::size_t room = values.empty() ? 0 : (values.size() - 1) * stride + 1;
  memory.assign(room * sizeof(T), 0);
  memory.shrink_to_fit();
  T* const first = reinterpret_cast<T*>(memory.data());
  for (std::size_t i = 0; i < values.size(); ++i) {
    const T value = converted<T>(values[i]);
    std::memcpy(first + (backwards ? values.size() - 1 - i : i) * stride, &value, sizeof value);
  }
  const auto step = static_cast<std::ptrdiff_t>(stride);
  return backwards && !values.empty()
             ? vexel::Data(first + (values.size() - 1) * stride, values.size(), -step)
             : vexel::Data(first, values.size(), step);
}

}  // namespace

double Choices::number() {
  switch (below(6)) {
    case 0:
      return kSpecial[below(std::size(kSpecial))];
    case 1:
      return static_cast<double>(byte()) - 8;
    case 2:
      return static_cast<double>(byte()) / 16;
    case 3:
      return raw<double>();
    case 4:
      return (flag() ? 1 : -1) * static_cast<double>(byte() + 1) *
             std::pow(10.0, static_cast<double>(below(640)) - 330);
    default:
      return ordinary();
  }
}

double Choices::ordinary() {
  const double size = std::pow(10.0, static_cast<double>(below(9)) - 3);
  return (static_cast<double>(raw<std::uint16_t>()) / 65536 - 0.25) * size;
}

double Choices::probability() {
  switch (below(4)) {
    case 0:
      return static_cast<double>(byte()) / 255;
    case 1:
      return std::pow(10.0, -static_cast<double>(below(330)));
    case 2:
      return 1 - std::pow(2.0, -static_cast<double>(below(64)));
    default:
      return number();
  }
}

std::int64_t Choices::whole() {
  switch (below(4)) {
    case 0:
      return kWhole[below(std::size(kWhole))];
    case 1:
      return raw<std::int64_t>();
    case 2:
      return raw<std::int16_t>();
    default:
      return byte();
  }
}

std::size_t Choices::count(std::size_t most) {
  return below(16) == 15 ? static_cast<std::size_t>(whole()) : below(most + 1);
}

Elements::Elements(Choices& choices, std::size_t most) {
  std::vector<double> values(choices.below(8) == 7
                                 ? choices.below(most + 1)
                                 : choices.below(std::min<std::size_t>(most, 16) + 1));
  const std::size_t kind = choices.below(6);
  // Long data in few bytes: a walk of a generator that the first bytes seed.
  auto state = static_cast<std::uint64_t>(values.size() > 16 ? choices.raw<std::uint16_t>() : 0);
  for (double& x : values) {
    if (values.size() > 16) {
      state = state * 6364136223846793005U + 1442695040888963407U;
      x = static_cast<double>(state >> 40U) / (kind == 1 ? 4e6 : 1e5) - 50;
      x = kind == 1 ? std::floor(x) : kind == 2 && state >> 60U == 0 ? choices.number() : x;
    } else if (kind == 0) {
      x = choices.number();
    } else if (kind == 1) {
      x = static_cast<double>(choices.below(5));  // ties
    } else if (kind == 2) {
      x = choices.probability();
    } else {
      x = choices.ordinary();
    }
  }
  store(choices, values);
}

Elements::Elements(Choices& choices, std::size_t size, bool given) {
  if (!given) {
    return;
  }
  std::vector<double> values(choices.below(32) == 31 ? size + 1 : size);
  const std::size_t kind = choices.below(4);
  for (double& w : values) {
    w = kind == 0   ? static_cast<double>(choices.below(4))
        : kind == 1 ? choices.probability()
        : kind == 2 ? static_cast<double>(choices.byte() + 1) / 16
                    : std::abs(choices.number());
  }
  if (choices.below(32) == 31 && !values.empty()) {
    values[choices.below(values.size())] = choices.number();
  }
  store(choices, values);
}

void Elements::store(Choices& choices, const std::vector<double>& values) {
  const std::size_t stride = choices.below(4) == 3 ? 1 + choices.below(3) : 1;
  const bool backwards = choices.below(8) == 7;
  switch (choices.below(8)) {
    case 5:
      view_ = stored<float>(memory_, values, stride, backwards);
      break;
    case 6:
      view_ = stored<std::int32_t>(memory_, values, stride, backwards);
      break;
    case 7:
      view_ = stored<std::int64_t>(memory_, values, stride, backwards);
      break;
    default:
      view_ = stored<double>(memory_, values, stride, backwards);
  }
}

std::vector<double> Elements::doubles() const {
  std::vector<double> values(size());
  for (std::size_t i = 0; i < values.size(); ++i) {
    values[i] = view_[i];
  }
  return values;
}

void Elements::say(const char* name) const {
  if (talkative()) {
    std::fprintf(stderr, "%s (%d)", name, static_cast<int>(view_.element()));
    for (const double x : doubles()) {
      std::fprintf(stderr, " %.17g", x);
    }
    std::fprintf(stderr, "\n");
  }
}

bool same(const std::vector<double>& a, const std::vector<double>& b) {
  for (std::size_t i = 0; i < a.size() && i < b.size(); ++i) {
    if (!same(a[i], b[i])) {
      return false;
    }
  }
  return a.size() == b.size();
}

bool talkative() {
  static const bool told = std::getenv("VEXEL_FUZZ_SAY") != nullptr;
  return told;
}

void fail(const std::string& what) {
  std::fprintf(stderr, "does not hold: %s\n", what.c_str());
  std::abort();
}

}  // namespace fuzz
