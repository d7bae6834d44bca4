// What the states write and read: a head, numbers one after the other, a checksum.
//
//   "vexl"  tag (4 letters)  version (u32)  size of the content (u64)  content  FNV-1a (u64)
//
// All numbers are little-endian.  A reader throws std::invalid_argument at anything that a writer
// of the same tag and of a version up to its own would not have written, before it allocates: sizes
// that the content holds are bounded by what is left of it.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace vexel {

using Bytes = std::vector<std::uint8_t>;

namespace bytes {

inline constexpr std::size_t headSize = 20;
inline constexpr std::size_t checksumSize = 8;

template <typename T>
concept Scalar = std::is_arithmetic_v<T> || std::is_enum_v<T>;

template <typename T>
void append(Bytes& to, T value) {
  std::uint8_t raw[sizeof(T)];
  std::memcpy(raw, &value, sizeof(T));
  if constexpr (std::endian::native == std::endian::big) {
    for (std::size_t i = 0; i < sizeof(T) / 2; ++i) {
      std::swap(raw[i], raw[sizeof(T) - 1 - i]);
    }
  }
  to.insert(to.end(), raw, raw + sizeof(T));
}

template <typename T>
T taken(const std::uint8_t* from) {
  std::uint8_t raw[sizeof(T)];
  std::memcpy(raw, from, sizeof(T));
  if constexpr (std::endian::native == std::endian::big) {
    for (std::size_t i = 0; i < sizeof(T) / 2; ++i) {
      std::swap(raw[i], raw[sizeof(T) - 1 - i]);
    }
  }
  T value;
  std::memcpy(&value, raw, sizeof(T));
  return value;
}

inline std::uint64_t checksum(std::span<const std::uint8_t> all) {
  std::uint64_t hash = 0xCBF29CE484222325U;
  for (const std::uint8_t b : all) {
    hash = (hash ^ b) * 0x100000001B3U;
  }
  return hash;
}

}  // namespace bytes

class ByteWriter {
 public:
  // tag has four letters.
  ByteWriter(std::string_view tag, std::uint32_t version) {
    for (const char c : {'v', 'e', 'x', 'l', tag[0], tag[1], tag[2], tag[3]}) {
      out_.push_back(static_cast<std::uint8_t>(c));
    }
    bytes::append(out_, version);
    bytes::append(out_, std::uint64_t{0});
  }

  template <bytes::Scalar T>
  ByteWriter& put(T value) {
    bytes::append(out_, value);
    return *this;
  }
  // The number of elements, then the elements.
  template <bytes::Scalar T>
  ByteWriter& put(const std::vector<T>& values) {
    put(static_cast<std::uint64_t>(values.size()));
    out_.reserve(out_.size() + values.size() * sizeof(T));
    for (const T v : values) {
      bytes::append(out_, v);
    }
    return *this;
  }

  Bytes finish() {
    const std::uint64_t size = out_.size() - bytes::headSize;
    Bytes raw;
    bytes::append(raw, size);
    std::memcpy(out_.data() + 12, raw.data(), raw.size());
    bytes::append(out_, bytes::checksum(out_));
    return std::move(out_);
  }

 private:
  Bytes out_;
};

class ByteReader {
 public:
  // what names the state in messages: "Sums".
  ByteReader(std::span<const std::uint8_t> in, std::string_view tag, std::uint32_t newestVersion,
             const char* what, std::uint32_t oldestVersion = 1)
      : what_(what) {
    const std::string_view head(reinterpret_cast<const char*>(in.data()), in.size());
    if (in.size() < bytes::headSize + bytes::checksumSize || head.substr(0, 4) != "vexl" ||
        head.substr(4, 4) != tag) {
      refuse("these are not its bytes");
    }
    version_ = bytes::taken<std::uint32_t>(in.data() + 8);
    if (version_ < oldestVersion || version_ > newestVersion) {
      refuse("version " + std::to_string(version_) + ", this library reads " +
             std::to_string(oldestVersion) + " to " + std::to_string(newestVersion));
    }
    const auto size = bytes::taken<std::uint64_t>(in.data() + 12);
    if (size != in.size() - bytes::headSize - bytes::checksumSize) {
      refuse("the size is wrong");
    }
    const auto content = in.first(in.size() - bytes::checksumSize);
    if (bytes::checksum(content) !=
        bytes::taken<std::uint64_t>(in.data() + in.size() - bytes::checksumSize)) {
      refuse("the checksum is wrong");
    }
    left_ = content.subspan(bytes::headSize);
  }

  std::uint32_t version() const { return version_; }

  template <bytes::Scalar T>
  T get() {
    const std::uint8_t* const from = left_.data();
    if constexpr (std::is_same_v<T, bool>) {
      const auto value = get<std::uint8_t>();
      check(value <= 1, "a flag is neither 0 nor 1");
      return value == 1;
    } else {
      check(left_.size() >= sizeof(T), "it ends too early");
      left_ = left_.subspan(sizeof(T));
      return bytes::taken<T>(from);
    }
  }
  template <bytes::Scalar T>
  std::vector<T> getVector() {
    const auto size = get<std::uint64_t>();
    check(size <= left_.size() / sizeof(T), "it ends too early");
    std::vector<T> values(static_cast<std::size_t>(size));
    for (T& v : values) {
      v = get<T>();
    }
    return values;
  }

  // What a state requires of its content beyond sizes.
  void check(bool right, const char* complaint) const {
    if (!right) {
      refuse(complaint);
    }
  }
  void finish() const { check(left_.empty(), "there is more than its content"); }

 private:
  [[noreturn]] void refuse(const std::string& why) const {
    throw std::invalid_argument(std::string(what_) + ": " + why);
  }

  const char* what_;
  std::uint32_t version_ = 0;
  std::span<const std::uint8_t> left_;
};

}  // namespace vexel
