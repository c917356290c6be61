// Text taken apart into lines and words, each with its place.
#ifndef ZORVEK_WIDE_FORMATS_TEXT_H
#define ZORVEK_WIDE_FORMATS_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "zorvek/io.h"

namespace zorvek::wide {

// Whether there is nothing but blanks.
bool IsBlankLine(std::string_view line);

// Without the blanks at both ends.
std::string_view Trimmed(std::string_view text);

// Of a byte in a text; both count from 1.
struct Place {
  long line = 1;
  long column = 1;
};

Place PlaceIn(std::string_view text, std::size_t byte);

// A view of part of a line; columns count from 1. Empty at the end of the line.
struct Word {
  std::string_view text;
  long column = 0;
};

// The words of a line between blanks, one after the other. The line must outlive them.
class Words {
 public:
  explicit Words(std::string_view line) : line_(line) {}

  Word Next();

 private:
  std::string_view line_;
  std::size_t at_ = 0;
};

// The lines of a text, whether they end in \n, \r\n or \r, without the mark that some editors put
// before UTF-8. Holds a block of the text, and the whole of a line.
class LineReader {
 public:
  explicit LineReader(Source source);

  const std::string& Name() const { return source_.Name(); }

  // The beginning of what is not read yet: some thousand bytes, or all that there is.
  std::string_view Head() const { return {buffer_.data() + at_, end_ - at_}; }

  // Whether there was another line; it is then in `line`, without its end, until the next call, and
  // Number() is its number.
  bool Next(std::string_view& line);
  long Number() const { return number_; }

  // The same for the next line that is not blank.
  bool NextWithText(std::string_view& line);

  // All that is not read yet.
  std::string Rest();

 private:
  // Whether more text came.
  bool Refill();
  std::string_view Take(std::size_t end);

  Source source_;
  std::vector<char> buffer_;
  std::size_t at_ = 0;         // of the text in the buffer that is not read yet
  std::size_t end_ = 0;        // of the text in the buffer
  std::size_t feed_ = 0;       // of the next \n in the buffer, or its end, when it was found
  bool after_return_ = false;  // whether a \n at `at_` belongs to the line before
  long number_ = 0;
};

}  // namespace zorvek::wide

#endif
