// Numbers as text that reads back as the same number.
#ifndef ZORVEK_WIDE_FORMATS_NUMBERS_H
#define ZORVEK_WIDE_FORMATS_NUMBERS_H

#include <charconv>
#include <string>

namespace zorvek::wide {

// The shortest decimal text that reads back as exactly this double.
inline std::string Shortest(double value) {
  char text[32];
  const auto end = std::to_chars(text, text + sizeof text, value).ptr;
  return std::string(text, end);
}

// With `decimals` digits after the point, for people.
inline std::string Rounded(double value, int decimals) {
  char text[400];
  const auto end =
      std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, decimals).ptr;
  return std::string(text, end);
}

}  // namespace zorvek::wide

#endif
