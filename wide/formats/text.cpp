#include "wide/formats/text.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "wide/data/ascii.h"

namespace zorvek::wide {

namespace {

constexpr std::size_t kBlock = std::size_t{1} << 18;
constexpr std::string_view kMark = "\xEF\xBB\xBF";

}  // namespace

bool IsBlankLine(std::string_view line) {
  return std::all_of(line.begin(), line.end(), IsBlank);
}

std::string_view Trimmed(std::string_view text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  return text;
}

Place PlaceIn(std::string_view text, std::size_t byte) {
  Place place;
  for (std::size_t i = 0; i < byte; ++i) {
    const bool ends = text[i] == '\n' || text[i] == '\r';
    const bool first_of_two = text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n';
    place.line += ends && !first_of_two;
    place.column = ends ? 1 : place.column + 1;
  }
  return place;
}

Word Words::Next() {
  while (at_ < line_.size() && IsBlank(line_[at_])) ++at_;
  const std::size_t begin = at_;
  while (at_ < line_.size() && !IsBlank(line_[at_])) ++at_;
  return {line_.substr(begin, at_ - begin), static_cast<long>(begin) + 1};
}

LineReader::LineReader(Source source) : source_(std::move(source)), buffer_(kBlock) {
  while (end_ < kMark.size() && Refill()) continue;
  if (Head().substr(0, kMark.size()) == kMark) at_ = kMark.size();
}

bool LineReader::Refill() {
  std::memmove(buffer_.data(), buffer_.data() + at_, end_ - at_);
  end_ -= at_;
  at_ = feed_ = 0;
  if (end_ == buffer_.size()) buffer_.resize(2 * end_);
  const std::size_t count = source_.Read(buffer_.data() + end_, buffer_.size() - end_);
  end_ += count;
  return count > 0;
}

std::string_view LineReader::Take(std::size_t end) {
  ++number_;
  const std::string_view line(buffer_.data() + at_, end - at_);
  at_ = std::min(end + 1, end_);
  return line;
}

bool LineReader::Next(std::string_view& line) {
  for (;;) {
    if (after_return_ && at_ < end_) {
      if (buffer_[at_] == '\n') ++at_;
      after_return_ = false;
    }
    const char* const text = buffer_.data();
    const auto find = [&](char c, std::size_t end) {
      const void* const found = end > at_ ? std::memchr(text + at_, c, end - at_) : nullptr;
      return found ? static_cast<std::size_t>(static_cast<const char*>(found) - text) : end;
    };
    if (feed_ <= at_) feed_ = find('\n', end_);
    const std::size_t end = find('\r', feed_);
    if (end < end_) {
      after_return_ = text[end] == '\r';
      line = Take(end);
      return true;
    }
    if (Refill()) continue;
    if (at_ == end_) return false;
    line = Take(end_);
    return true;
  }
}

bool LineReader::NextWithText(std::string_view& line) {
  while (Next(line)) {
    if (!IsBlankLine(line)) return true;
  }
  return false;
}

std::string LineReader::Rest() {
  std::string rest;
  do {
    rest.append(buffer_.data() + at_, end_ - at_);
    at_ = end_;
  } while (Refill());
  return rest;
}

}  // namespace zorvek::wide
