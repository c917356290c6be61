// Characters, in no locale's opinion but that of ASCII.
#ifndef ZORVEK_WIDE_DATA_ASCII_H
#define ZORVEK_WIDE_DATA_ASCII_H

namespace zorvek::wide {

// Blank, tab and line ends of every kind.
constexpr bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}

constexpr bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

constexpr char ToUpper(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

constexpr char ToLower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

}  // namespace zorvek::wide

#endif
