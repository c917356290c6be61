#include "wide/drawing/text.h"

#include <cstddef>
#include <string_view>

namespace zorvek::wide {

namespace {

// The bytes of the UTF-8 character that begins there, 0 if none does. It may be one that XML refuses.
std::size_t CharacterSize(const std::string& text, std::size_t at) {
  const auto byte = [&](std::size_t k) {
    return at + k < text.size() ? static_cast<unsigned char>(text[at + k]) : 0u;
  };
  const unsigned first = byte(0);
  if (first < 0x80) return 1;
  const std::size_t size = first < 0xC2   ? 0
                           : first < 0xE0 ? 2
                           : first < 0xF0 ? 3
                           : first < 0xF5 ? 4
                                          : 0;
  for (std::size_t k = 1; k < size; ++k) {
    if ((byte(k) & 0xC0) != 0x80) return 0;
  }
  const unsigned second = byte(1);
  const bool overlong = (first == 0xE0 && second < 0xA0) || (first == 0xF0 && second < 0x90);
  const bool beyond = (first == 0xED && second > 0x9F) || (first == 0xF4 && second > 0x8F);
  return overlong || beyond ? 0 : size;
}

bool IsControl(std::string_view character) {
  const auto first = static_cast<unsigned char>(character[0]);
  if (character.size() == 1) return first < ' ' || first == 0x7F;
  return (first == 0xC2 && static_cast<unsigned char>(character[1]) < 0xA0) ||
         character == "\xEF\xBF\xBE" || character == "\xEF\xBF\xBF";
}

std::string FromLatin1(const std::string& text) {
  std::string utf8;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x80) utf8 += static_cast<char>(0xC0 | byte >> 6);
    utf8 += byte >= 0x80 ? static_cast<char>(0x80 | (byte & 0x3F)) : c;
  }
  return utf8;
}

}  // namespace

std::string Drawable(const std::string& text) {
  std::string drawable;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t size = CharacterSize(text, at);
    if (size == 0) return Drawable(FromLatin1(text));
    const std::string_view character = std::string_view(text).substr(at, size);
    if (!IsControl(character)) drawable += character;
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
