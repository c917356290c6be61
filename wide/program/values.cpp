#include "wide/program/values.h"

namespace zorvek::wide {

namespace {

constexpr double kLongest = 1000 * 365.25 * 24 * 3600;

}  // namespace

bool ReadTime(const std::string& text, double& value) {
  double unit = 1;
  std::string number = text;
  switch (text.empty() ? '\0' : text.back()) {
    case 'h':
      unit = 3600;
      break;
    case 'm':
      unit = 60;
      break;
    case 's':
      break;
    default:
      number += 's';
  }
  number.pop_back();
  double read = 0;
  if (!ReadNumber(number, 0.0, kLongest / unit, read) || read == 0) return false;
  value = read * unit;
  return true;
}

}  // namespace zorvek::wide
