// Settings by the names that users write.
#ifndef ZORVEK_NAMES_H
#define ZORVEK_NAMES_H

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace zorvek::wide {

template <typename Value>
using Names = std::vector<std::pair<std::string, Value>>;

// "a, b or c"
inline std::string Alternatives(const std::vector<std::string>& words) {
  std::string listed;
  for (std::size_t i = 0; i < words.size(); ++i) {
    listed += (i == 0 ? "" : i + 1 == words.size() ? " or " : ", ") + words[i];
  }
  return listed;
}

template <typename Value>
std::string Alternatives(const Names<Value>& names) {
  std::vector<std::string> words;
  for (const auto& [name, value] : names) words.push_back(name);
  return Alternatives(words);
}

// The name of a value that has one.
template <typename Value>
std::string NameOf(Value value, const Names<Value>& names) {
  for (const auto& [name, named] : names) {
    if (named == value) return name;
  }
  return {};
}

}  // namespace zorvek::wide

#endif
