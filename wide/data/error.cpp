#include "zorvek/error.h"

#include <utility>

namespace zorvek::wide {

namespace {

constexpr std::size_t kMostListed = 20;

std::string AllOf(const std::vector<Fault>& faults, long more) {
  std::string text;
  for (const Fault& fault : faults) text += (text.empty() ? "" : "\n") + Phrase(fault);
  return more == 0 ? text : text + "\nand " + std::to_string(more) + " more";
}

}  // namespace

std::string At(const std::string& path, long line, long column) {
  std::string place = path;
  if (line > 0) place += ":" + std::to_string(line);
  if (line > 0 && column > 0) place += ":" + std::to_string(column);
  return place;
}

std::string Phrase(const Fault& fault) {
  const std::string place = At(fault.file, fault.line, fault.column);
  return (place.empty() ? "" : place + ": ") + fault.text;
}

Error::Error(std::vector<Fault> faults, long more)
    : std::runtime_error(AllOf(faults, more)), faults_(std::move(faults)), more_(more) {}

void FaultList::Add(long line, long column, const std::string& text) {
  if (faults_.size() < kMostListed) {
    faults_.push_back({file_, line, column, text});
  } else {
    ++more_;
  }
}

void FaultList::ThrowIfAny() const {
  if (Any()) throw Error(faults_, more_);
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

}  // namespace zorvek::wide
