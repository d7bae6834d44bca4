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

void appendUtf8(std::string& out, std::uint32_t code) {
  if (code < 0x80) {
    out += static_cast<char>(code);
    return;
  }
  const int more = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
  constexpr unsigned kLead[] = {0, 0xC0, 0xE0, 0xF0};
  out += static_cast<char>(kLead[more] | (code >> (6 * more)));
  for (int i = more - 1; i >= 0; --i) {
    out += static_cast<char>(0x80U | ((code >> (6 * i)) & 0x3FU));
  }
}

}  // namespace vexel
