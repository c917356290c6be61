// Aligned sequences in PHYLIP's format [Felsenstein1989]: numbers of taxa and sites, then the
// sequences, each after its label, one after the other (over as many lines as it takes) or
// interleaved in blocks. In the relaxed form a label ends at a blank; in the strict one it is the
// first 10 columns, which may hold blanks, and the sites may follow without one.
//
// The text, which is held, is taken as the first of relaxed and strict, interleaved and not, in which
// the numbers of the first line come out; if there is none, the faults are those of the relaxed form.
#include <algorithm>
#include <charconv>
#include <string>
#include <string_view>
#include <vector>

#include "wide/data/ascii.h"
#include "wide/data/labels.h"
#include "wide/formats/alignment_formats.h"
#include "wide/formats/sequence_builder.h"
#include "zorvek/error.h"

namespace zorvek::wide {

namespace {

constexpr std::size_t kStrictLabel = 10;  // columns

enum class LabelForm { kRelaxed, kStrict };

// A line that is not blank.
struct Line {
  long number;
  std::string_view text;
};

// A line that begins with a label, taken apart.
struct LabelledLine {
  std::string_view label;
  std::string_view sites;
  long column;  // of the sites
};

LabelledLine TakeLabel(std::string_view line, LabelForm form) {
  const Word word = Words(line).Next();
  std::string_view label = word.text;
  auto end = static_cast<std::size_t>(word.column) - 1 + label.size();
  if (form == LabelForm::kStrict) {
    end = std::min(kStrictLabel, line.size());
    label = Trimmed(line.substr(0, end));
  }
  return {label, line.substr(end), static_cast<long>(end) + 1};
}

class PhylipText {
 public:
  explicit PhylipText(LineReader& lines) : name_(lines.Name()) {
    ReadHeader(lines);
    std::vector<std::size_t> ends;
    for (std::string_view line; lines.NextWithText(line);) {
      text_ += line;
      ends.push_back(text_.size());
      lines_.push_back({lines.Number(), {}});
    }
    std::size_t begin = 0;
    for (std::size_t k = 0; k < ends.size(); ++k) {
      lines_[k].text = std::string_view(text_).substr(begin, ends[k] - begin);
      begin = ends[k];
    }
  }

  Alignment Read() const {
    for (const LabelForm form : {LabelForm::kRelaxed, LabelForm::kStrict}) {
      for (const bool blocks : {true, false}) {
        if (blocks && !LooksInterleaved(form)) continue;
        SequenceBuilder builder = blocks ? InBlocks(form) : InTurn(form);
        if (builder.Fits(taxa_, sites_)) return builder.Finish(sites_, "");
      }
    }
    return Refuse();
  }

 private:
  void ReadHeader(LineReader& lines) {
    std::string_view header;
    lines.NextWithText(header);
    Words words(header);
    for (std::size_t* number : {&taxa_, &sites_}) {
      const std::string_view word = words.Next().text;
      const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), *number);
      if (error == std::errc() && end == word.data() + word.size() && *number > 0) continue;
      throw Error(Fault{name_, lines.Number(), 1,
                        "no numbers of taxa and sites; begin a PHYLIP file with them",
                        Advice::kReadAsMatrix});
    }
  }

  // Whether the lines are blocks of one line a taxon, labels in the first block: its lines then
  // hold equally many sites, and not all.
  bool LooksInterleaved(LabelForm form) const {
    if (lines_.size() <= taxa_) return false;
    SequenceBuilder block(name_);
    for (std::size_t k = 0; k < taxa_; ++k) {
      Begin(lines_[k], form, block);
      if (block.Sites(k) != block.Sites(0)) return false;
    }
    return block.Sites(0) > 0 && block.Sites(0) < sites_;
  }

  static void Begin(const Line& line, LabelForm form, SequenceBuilder& builder) {
    const LabelledLine parts = TakeLabel(line.text, form);
    builder.Begin(parts.label, line.number);
    builder.Append(builder.Taxa() - 1, parts.sites, line.number, parts.column);
  }

  // The later blocks may have the labels too, or not.
  SequenceBuilder InBlocks(LabelForm form) const {
    SequenceBuilder builder(name_);
    for (std::size_t k = 0; k < lines_.size(); ++k) {
      const Line& line = lines_[k];
      if (k < taxa_) {
        Begin(line, form, builder);
        continue;
      }
      // NOLINTNEXTLINE(clang-analyzer-core.DivideZero): the header has at least one taxon.
      const std::size_t taxon = k % taxa_;
      const LabelledLine parts = TakeLabel(line.text, form);
      if (CleanLabel(parts.label) == builder.Label(taxon)) {
        builder.Append(taxon, parts.sites, line.number, parts.column);
      } else {
        builder.Append(taxon, line.text, line.number, 1);
      }
    }
    return builder;
  }

  // One after the other. A file of one line a taxon is taken line by line, so that one wrong length
  // does not shift all that follows.
  SequenceBuilder InTurn(LabelForm form) const {
    const bool line_each = lines_.size() == taxa_;
    SequenceBuilder builder(name_);
    for (const Line& line : lines_) {
      const std::size_t taxa = builder.Taxa();
      if (line_each || taxa == 0 || builder.Sites(taxa - 1) >= sites_) {
        Begin(line, form, builder);
      } else {
        builder.Append(taxa - 1, line.text, line.number, 1);
      }
    }
    return builder;
  }

  Alignment Refuse() const {
    SequenceBuilder builder = LooksInterleaved(LabelForm::kRelaxed) ? InBlocks(LabelForm::kRelaxed)
                                                                    : InTurn(LabelForm::kRelaxed);
    builder.ThrowIfProtein();
    if (builder.Taxa() != taxa_) {
      throw Error(Fault{name_, lines_.empty() ? 1 : lines_.back().number, 1,
                        std::to_string(builder.Taxa()) + " sequences, not the " +
                            std::to_string(taxa_) +
                            " of the first line; fix that line, or sequences that are not " +
                            std::to_string(sites_) + " sites long"});
    }
    return builder.Finish(sites_, " of the first line");
  }

  std::string name_;
  std::size_t taxa_ = 0;
  std::size_t sites_ = 0;
  std::string text_;  // of all lines
  std::vector<Line> lines_;
};

Alignment ReadPhylip(LineReader& lines) {
  return PhylipText(lines).Read();
}

}  // namespace

const AlignmentFormat kPhylip = {"PHYLIP", [](std::string_view line) { return IsDigit(line[0]); },
                                 ReadPhylip};

}  // namespace zorvek::wide
