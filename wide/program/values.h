// The values of options, read from what the user typed.
#ifndef ZORVEK_WIDE_PROGRAM_VALUES_H
#define ZORVEK_WIDE_PROGRAM_VALUES_H

#include <charconv>
#include <string>

namespace zorvek::wide {

// Each of these reads the whole text into `value`, and gives whether that went well; if not, `value`
// stays as it was.

// A number, of the type of `value`, from `least` to `most`.
template <typename Number>
bool ReadNumber(const std::string& text, Number least, Number most, Number& value) {
  Number read{};
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, read);
  if (result.ec != std::errc() || result.ptr != end) return false;
  if (!(read >= least && read <= most)) return false;  // also when it is no number at all
  value = read;
  return true;
}

// A time above 0 and up to a thousand years, in seconds: 90, 90s, 10m, 1.5h.
bool ReadTime(const std::string& text, double& value);

}  // namespace zorvek::wide

#endif
