#include "wide/drawing/text.h"

#include <cstddef>
#include <string_view>

#include "wide/data/labels.h"

namespace zorvek::wide {

std::string Drawable(const std::string& text) {
  const std::string clean = CleanLabel(text);
  std::string drawable;
  for (std::size_t at = 0; at < clean.size();) {
    const auto first = static_cast<unsigned char>(clean[at]);
    const std::size_t size = first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    const std::string_view character = std::string_view(clean).substr(at, size);
    const bool control = first == 0xC2 && static_cast<unsigned char>(character[1]) < 0xA0;
    const bool none = character == "\xEF\xBF\xBE" || character == "\xEF\xBF\xBF";
    if (!control && !none) drawable += character;
    at += size;
  }
  return drawable;
}

std::string Escaped(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    switch (c) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      default:
        escaped += c;
    }
  }
  return escaped;
}

double TextWidth(const std::string& text) {
  constexpr std::string_view kNarrow = "!'(),-./:;I[\\]`fijlrt| ";
  constexpr std::string_view kWide = "%@MWmw";
  double width = 0;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if ((byte & 0xC0) == 0x80) continue;  // no first byte
    const bool capital = c >= 'A' && c <= 'Z';
    width += byte >= 0xE1                      ? 1
             : kNarrow.find(c) != kNarrow.npos ? .42
             : kWide.find(c) != kWide.npos     ? 1
             : capital                         ? .76
                                               : .64;
  }
  return width;
}

}  // namespace zorvek::wide
