#include "values/utf8.hpp"

namespace vexel {

std::size_t utf8Length(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned lead = byte(0);
  const std::size_t n = lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 0;
  if (n == 0 || text.size() < n) {
    return 0;
  }
  for (std::size_t i = 1; i < n; ++i) {
    if ((byte(i) & 0xC0U) != 0x80U) {
      return 0;
    }
  }
  const unsigned second = byte(1);
  const bool overlong = (lead == 0xE0 && second < 0xA0) || (lead == 0xF0 && second < 0x90);
  const bool invalid = (lead == 0xED && second >= 0xA0) || (lead == 0xF4 && second >= 0x90);
  return overlong || invalid ? 0 : n;
}

}  // namespace vexel
