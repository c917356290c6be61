#include "wide/formats/text.h"

#include <algorithm>

#include "wide/data/ascii.h"

namespace zorvek::wide {

bool IsBlankLine(std::string_view line) {
  return std::all_of(line.begin(), line.end(), IsBlank);
}

void Words::Step() {
  const bool pair = text_[at_] == '\r' && at_ + 1 < text_.size() && text_[at_ + 1] == '\n';
  if (!pair && (text_[at_] == '\n' || text_[at_] == '\r')) {
    ++line_;
    column_ = 0;
  }
  ++column_;
  ++at_;
}

Word Words::Next() {
  while (at_ < text_.size() && IsBlank(text_[at_])) Step();
  Word word{{}, line_, column_};
  const std::size_t begin = at_;
  while (at_ < text_.size() && !IsBlank(text_[at_])) Step();
  word.text = text_.substr(begin, at_ - begin);
  return word;
}

bool Lines::Next(std::string_view& line) {
  if (at_ >= text_.size()) return false;
  const std::size_t end = std::min(text_.find_first_of("\r\n", at_), text_.size());
  line = text_.substr(at_, end - at_);
  at_ = end + 1;
  if (end + 1 < text_.size() && text_[end] == '\r' && text_[end + 1] == '\n') ++at_;
  ++number_;
  return true;
}

}  // namespace zorvek::wide
