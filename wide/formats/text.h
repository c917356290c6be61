// Text taken apart into words, each with its place.
#ifndef ZORVEK_WIDE_FORMATS_TEXT_H
#define ZORVEK_WIDE_FORMATS_TEXT_H

#include <string_view>

namespace zorvek::wide {

// A view of part of a text; lines and columns count from 1. Empty at the end of the text.
struct Word {
  std::string_view text;
  long line = 0;
  long column = 0;
};

// Whether there is nothing but blanks.
bool IsBlankLine(std::string_view line);

// The words between blanks, one after the other. The text must outlive them.
class Words {
 public:
  explicit Words(std::string_view text) : text_(text) {}

  Word Next();
  std::size_t TextSize() const { return text_.size(); }

 private:
  void Step();

  std::string_view text_;
  std::size_t at_ = 0;
  long line_ = 1;
  long column_ = 1;
};

// The lines of a text, whether they end in \n, \r\n or \r.
class Lines {
 public:
  explicit Lines(std::string_view text) : text_(text) {}

  // Whether there was another line; it is then in `line`, without its end, and Number() is its
  // number.
  bool Next(std::string_view& line);
  long Number() const { return number_; }

 private:
  std::string_view text_;
  std::size_t at_ = 0;
  long number_ = 0;
};

}  // namespace zorvek::wide

#endif
