// The first two rows of a matrix tell its shape; their lines are held until then. The distances of
// row i are those to the taxa begin <= j < end:
//
//   shape            begin            end
//   square           0                n
//   lower triangle   0                i, i + 1 with the diagonal
//   upper triangle   i + 1, or i      n
//
// The places in the text are kept of one row only: a fault between the two halves is found when the
// second of the two numbers is read.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <deque>
#include <limits>
#include <string_view>
#include <utility>

#include "wide/data/labels.h"
#include "wide/formats/matrix_faults.h"
#include "wide/formats/numbers.h"
#include "wide/formats/text.h"
#include "zorvek/error.h"
#include "zorvek/io.h"

namespace zorvek::wide {

namespace {

constexpr std::size_t kStrictLabel = 10;  // columns
constexpr double kMissing = -1;           // as PHYLIP writes it

enum class Half { kBoth, kLower, kUpper };

struct Shape {
  Half half = Half::kBoth;
  bool diagonal = true;

  std::size_t Begin(std::size_t i) const { return half == Half::kUpper ? i + !diagonal : 0; }
  std::size_t End(std::size_t i, std::size_t n) const {
    return half == Half::kLower ? i + diagonal : n;
  }
};

// The columns that a label takes: up to the first blank, or those of a strict one.
std::size_t RelaxedLabel(std::string_view line) {
  const Word word = Words(line).Next();
  return static_cast<std::size_t>(word.column) - 1 + word.text.size();
}

// The number of distances in the line after `begin`; kNone if there is anything else.
constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();

std::size_t CountDistances(std::string_view line, std::size_t begin) {
  Words words(line.substr(std::min(begin, line.size())));
  std::size_t count = 0;
  double value = 0;
  for (Word word = words.Next(); !word.text.empty(); word = words.Next(), ++count) {
    if (!ReadDecimal(word.text, value)) return kNone;
  }
  return count;
}

// The same after a label, which is strict if it cannot be relaxed.
std::size_t CountAfterLabel(std::string_view line, std::size_t most) {
  const std::size_t count = CountDistances(line, RelaxedLabel(line));
  return count <= most ? count : CountDistances(line, kStrictLabel);
}

class MatrixReader {
 public:
  explicit MatrixReader(Source source) : lines_(std::move(source)), faults_(lines_.Name()) {}

  LabelledMatrix Read() {
    ReadSize();
    shape_ = FindShape();
    for (std::size_t i = 0; i < n_; ++i) ReadRow(i);
    if (NextLine()) {
      Stop(1, "text after the last distance; the first line says " + std::to_string(n_) +
                  " taxa, fix it or the rows");
    }
    faults_.ThrowIfAny();
    Complete();
    return std::move(matrix_);
  }

 private:
  struct HeldLine {
    long number;
    std::string text;
  };

  // One reading of a line.
  struct Attempt {
    std::size_t label;  // columns that the label takes
    std::size_t next;   // the taxon whose distance comes next
    Word bad;           // what stands there instead, if anything does
  };

  [[noreturn]] void Stop(long column, const std::string& text, Advice advice = Advice::kNone) {
    faults_.ThrowIfAny();
    throw Error(Fault{lines_.Name(), number_, column, text, advice});
  }

  // Goes to the next line with text, the held ones first, and returns whether there was one.
  bool NextLine() {
    if (!held_.empty()) {
      current_ = std::move(held_.front());
      held_.pop_front();
      line_ = current_.text;
      number_ = current_.number;
      return true;
    }
    if (!lines_.NextWithText(line_)) return false;
    number_ = lines_.Number();
    return true;
  }

  // The text of the line that is `ahead` lines further on, empty if there is none; holds it.
  std::string_view Held(std::size_t ahead) {
    std::string_view line;
    while (held_.size() <= ahead && lines_.NextWithText(line)) {
      held_.push_back({lines_.Number(), std::string(line)});
    }
    return ahead < held_.size() ? std::string_view(held_[ahead].text) : std::string_view();
  }

  void ReadSize() {
    if (!NextLine()) number_ = 1;
    Words words(line_);
    const Word word = words.Next();
    int n = 0;
    const auto [end, error] =
        std::from_chars(word.text.data(), word.text.data() + word.text.size(), n);
    if (error != std::errc() || end != word.text.data() + word.text.size() || n < 1) {
      Stop(1, "no number of taxa; a distance matrix begins with it", Advice::kReadAsAlignment);
    }
    const Word rest = words.Next();
    if (!rest.text.empty()) {
      Stop(rest.column, "text after the number of taxa; begin each row on a line of its own",
           Advice::kReadAsAlignment);
    }
    n_ = static_cast<std::size_t>(n);
  }

  // The distances of the row that begins `ahead` lines further on, up to n; `ahead` is then the
  // line after them.
  std::size_t CountRow(std::size_t& ahead) {
    std::size_t count = CountAfterLabel(Held(ahead++), n_);
    while (count < n_ && !Held(ahead).empty()) {
      const std::size_t more = CountDistances(Held(ahead), 0);
      if (more > n_ - count) break;
      count += more;
      ++ahead;
    }
    return count;
  }

  Shape FindShape() {
    std::size_t lines[3];
    for (std::size_t k = 0; k < 3; ++k) lines[k] = CountAfterLabel(Held(k), n_);
    const bool rises = n_ > 2 && lines[1] == lines[0] + 1 && lines[2] == lines[0] + 2;
    if (rises && lines[0] <= 1) return {Half::kLower, lines[0] == 1};
    std::size_t ahead = 0;
    const std::size_t first = CountRow(ahead);
    const std::size_t second = CountRow(ahead);
    const std::size_t third = CountRow(ahead);
    const bool falls = n_ > 2 && second + 1 == first && third + 1 == second;
    if (falls && first == n_) return {Half::kUpper, true};
    if (falls && first + 1 == n_) return {Half::kUpper, false};
    return {};
  }

  // Reads distances of row i from the current line, beginning at `begin`, from the one to taxon
  // `next` on, until the row, the line or what can be read ends.
  Attempt ReadLine(std::size_t i, std::size_t next, std::size_t begin) {
    begin = std::min(begin, line_.size());
    Attempt attempt{begin, next, {}};
    Words words(line_.substr(begin));
    for (Word word = words.Next(); !word.text.empty(); word = words.Next()) {
      word.column += static_cast<long>(begin);
      if (attempt.next >= row_.size()) MakeRoom();
      if (attempt.next == shape_.End(i, n_) || !ReadDecimal(word.text, row_[attempt.next])) {
        attempt.bad = word;
        return attempt;
      }
      columns_[attempt.next++] = static_cast<std::uint32_t>(word.column);
    }
    return attempt;
  }

  // The first line may name any number of taxa: only as many count as there are distances of.
  void MakeRoom() {
    row_.resize(std::min(n_, 2 * row_.size() + kStrictLabel));
    columns_.resize(row_.size());
  }

  // A label is strict if the line makes sense so and not otherwise: when something is no number, or
  // when one distance is missing that a long label may have swallowed.
  Attempt ReadFirstLine(std::size_t i) {
    const std::size_t begin = shape_.Begin(i);
    const std::size_t end = shape_.End(i, n_);
    const Attempt relaxed = ReadLine(i, begin, RelaxedLabel(line_));
    const bool bad = !relaxed.bad.text.empty();
    const bool swallowed = relaxed.label > kStrictLabel && relaxed.next + 1 == end;
    if (!bad && !swallowed) return relaxed;
    const Attempt strict = ReadLine(i, begin, kStrictLabel);
    if (strict.bad.text.empty() && (strict.next == end || (bad && strict.next > begin))) {
      return strict;
    }
    return ReadLine(i, begin, relaxed.label);
  }

  void ReadRow(std::size_t i) {
    if (!NextLine()) {
      Stop(0, "the file ends after " + std::to_string(i) + " of " + std::to_string(n_) +
                  " taxa; fix the first line or add the rest");
    }
    Attempt attempt = ReadFirstLine(i);
    matrix_.labels.push_back(CleanLabel(Trimmed(line_.substr(0, attempt.label))));
    row_lines_ = {{shape_.Begin(i), number_}};
    while (attempt.bad.text.empty() && attempt.next < shape_.End(i, n_)) {
      if (!NextLine()) {
        attempt.bad.text = "the file ends";
        break;
      }
      row_lines_.emplace_back(attempt.next, number_);
      attempt = ReadLine(i, attempt.next, 0);
    }
    if (!attempt.bad.text.empty()) StopAtWord(i, attempt);
    CheckValues(i);
    Store(i);
  }

  [[noreturn]] void StopAtWord(std::size_t i, const Attempt& attempt) {
    const std::size_t begin = shape_.Begin(i);
    const std::size_t end = shape_.End(i, n_);
    const std::string& label = matrix_.labels.back();
    const std::string word(attempt.bad.text);
    if (attempt.next == end) {
      Stop(attempt.bad.column, "\"" + word + "\" after the " + std::to_string(end - begin) +
                                   " distances of " + label +
                                   "; begin the next row on a line of its own");
    }
    Stop(attempt.bad.column, (attempt.bad.column == 0 ? word : "\"" + word + "\"") +
                                 " where distance " + std::to_string(attempt.next - begin + 1) +
                                 " of " + std::to_string(end - begin) + " of " + label +
                                 " should stand; write a number, or NA for none");
  }

  void AddFault(std::size_t j, const std::string& text) {
    auto line = row_lines_.rbegin();
    while (line->first > j) ++line;
    faults_.Add(line->second, columns_[j], text);
  }

  // Leaves NaN where a distance is missing, and infinity where it is at fault.
  void CheckValues(std::size_t i) {
    for (std::size_t j = shape_.Begin(i); j < shape_.End(i, n_); ++j) {
      double& value = row_[j];
      if (i == j) {
        if (!std::isnan(value) && value != 0 && value != kMissing) {
          AddFault(j, NotToItself(value, matrix_.labels[i]));
        }
        value = 0;
      } else if (value == kMissing) {
        value = std::numeric_limits<double>::quiet_NaN();
      } else if (!IsDistance(value)) {
        AddFault(j, NotADistance(value, ""));
        value = std::numeric_limits<double>::infinity();
      }
    }
  }

  void Store(std::size_t i) {
    if (shape_.half == Half::kLower) {
      lower_.insert(lower_.end(), row_.begin(), row_.begin() + static_cast<std::ptrdiff_t>(i));
      return;
    }
    if (i == 0) matrix_.distances = DistanceMatrix(static_cast<int>(n_));
    if (shape_.half == Half::kBoth) MeetOtherHalf(i);
    const auto begin = static_cast<std::ptrdiff_t>(std::min(shape_.Begin(i), n_));
    std::copy(row_.begin() + begin, row_.end(), matrix_.distances.Row(static_cast<int>(i)) + begin);
  }

  // Compares the distances of row i to earlier taxa with theirs to it, and takes the means.
  void MeetOtherHalf(std::size_t i) {
    for (std::size_t j = 0; j < i; ++j) {
      double& other = matrix_.distances.Row(static_cast<int>(j))[i];
      if (std::isinf(row_[j]) || std::isinf(other)) continue;
      if (!SameButForRounding(row_[j], other)) {
        const std::string of = " of " + matrix_.labels[i] + " to " + matrix_.labels[j];
        AddFault(j, NotTheSame(row_[j], of, other));
      }
      row_[j] = other = (row_[j] + other) / 2;
    }
  }

  // Gives a triangle its other half.
  void Complete() {
    if (shape_.half == Half::kBoth) return;
    if (shape_.half == Half::kLower) matrix_.distances = DistanceMatrix(static_cast<int>(n_));
    auto next = lower_.begin();
    for (std::size_t i = 0; i < n_ && !lower_.empty(); ++i) {
      std::copy(next, next + static_cast<std::ptrdiff_t>(i),
                matrix_.distances.Row(static_cast<int>(i)));
      next += static_cast<std::ptrdiff_t>(i);
    }
    matrix_.distances.Mirror(shape_.half == Half::kLower);
  }

  LineReader lines_;
  FaultList faults_;
  std::deque<HeldLine> held_;
  HeldLine current_;       // the line itself if it was held
  std::string_view line_;  // the current one
  long number_ = 0;        // of the current line
  std::size_t n_ = 0;
  Shape shape_;
  std::vector<double> row_;                              // distances of the row that is read
  std::vector<std::uint32_t> columns_;                   // of each in its line
  std::vector<std::pair<std::size_t, long>> row_lines_;  // first distance and number of its lines
  std::vector<double> lower_;  // rows of a lower triangle, one after the other
  LabelledMatrix matrix_;
};

}  // namespace

LabelledMatrix ReadMatrix(Source source) {
  return MatrixReader(std::move(source)).Read();
}

std::string FormatSquareMatrix(const std::vector<std::string>& labels,
                               const DistanceMatrix& distances) {
  std::string text;
  FormatSquareMatrix(labels, distances, [&text](const std::string& piece) { text += piece; });
  return text;
}

void FormatSquareMatrix(const std::vector<std::string>& labels, const DistanceMatrix& distances,
                        const std::function<void(const std::string&)>& put) {
  put(std::to_string(distances.Size()) + "\n");
  for (int i = 0; i < distances.Size(); ++i) {
    std::string row = WithoutBlanks(labels[static_cast<std::size_t>(i)]);
    row.resize(std::max(row.size(), kStrictLabel), ' ');
    for (int j = 0; j < distances.Size(); ++j) row += " " + Shortest(distances(i, j));
    put(row + "\n");
  }
}

}  // namespace zorvek::wide
