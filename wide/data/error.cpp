#include "zorvek/error.h"

namespace zorvek::wide {

namespace {

constexpr std::size_t kMostListed = 20;

}  // namespace

std::string At(const std::string& path, long line, long column) {
  std::string place = path;
  if (line > 0) place += ":" + std::to_string(line);
  if (line > 0 && column > 0) place += ":" + std::to_string(column);
  return place;
}

std::string Listed(const std::vector<std::string>& items, const std::string& separator) {
  std::string text;
  for (std::size_t i = 0; i < items.size() && i < kMostListed; ++i) {
    if (i > 0) text += separator;
    text += items[i];
  }
  if (items.size() > kMostListed) {
    text += separator + "and " + std::to_string(items.size() - kMostListed) + " more";
  }
  return text;
}

void Faults::ThrowIfAny() const {
  if (Any()) throw Error(Listed(faults_, "\n"));
}

}  // namespace zorvek::wide
