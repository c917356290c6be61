#include "wide/formats/numbers.h"

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <string_view>

#include "wide/data/ascii.h"

namespace zorvek::wide {

namespace {

// Powers of ten that are exact, and the largest integer below which all are.
constexpr double kPowers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                              1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                              1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr std::uint64_t kExact = std::uint64_t{1} << 53;
constexpr std::size_t kMostDigits = 18;  // that cannot overflow

bool IsMissing(std::string_view word) {
  if (word == "-" || word == "?") return true;
  std::string folded(word);
  for (char& c : folded) c = ToLower(c);
  return folded == "na" || folded == "nan";
}

}  // namespace

bool ReadDecimal(std::string_view word, double& value) {
  std::uint64_t digits = 0;
  const char* at = word.data();
  const char* const end = at + word.size();
  const auto take_digits = [&] {
    for (; at < end && IsDigit(*at); ++at) digits = digits * 10 + static_cast<unsigned>(*at - '0');
  };
  take_digits();
  const char* const point = at;
  if (at < end && *at == '.') {
    ++at;
    take_digits();
  }
  const bool has_point = at > point;
  if (at == end && word.size() > has_point && word.size() <= kMostDigits && digits < kExact) {
    value = static_cast<double>(digits) / kPowers[has_point ? at - point - 1 : 0];
    return true;
  }
  if (!has_point && digits == 0 && IsMissing(word)) {
    value = std::numeric_limits<double>::quiet_NaN();
    return true;
  }
  if (word.size() > 1 && word[0] == '+') word.remove_prefix(1);
  const auto [rest, error] = std::from_chars(word.data(), end, value);
  if (error == std::errc::result_out_of_range)
    value = std::strtod(std::string(word).c_str(), nullptr);
  return rest == end && error != std::errc::invalid_argument;
}

}  // namespace zorvek::wide
