// Numbers as text that reads back as the same number, and back.
#ifndef ZORVEK_WIDE_FORMATS_NUMBERS_H
#define ZORVEK_WIDE_FORMATS_NUMBERS_H

#include <charconv>
#include <string>
#include <string_view>

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

// Whether the word is a decimal number, which is then in `value` as the nearest double, or one of
// NaN, NA, - and ?, which give NaN. Numbers of up to 15 digits take a short way [Clinger1990].
bool ReadDecimal(std::string_view word, double& value);

}  // namespace zorvek::wide

#endif
