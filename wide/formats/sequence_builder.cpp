// A piece of a line is read in one pass through a table, which gives the states of a symbol and its
// kind, a bit each; only a piece with something else than sites is looked at again.
#include "wide/formats/sequence_builder.h"

#include <algorithm>
#include <array>
#include <utility>

#include "wide/data/ascii.h"
#include "wide/data/labels.h"

namespace zorvek::wide {

namespace {

constexpr unsigned kStates = 15;
constexpr unsigned kIsU = 16;
constexpr unsigned kIsT = 32;
constexpr unsigned kIsOther = 64;

std::array<std::uint8_t, 256> MakeKinds() {
  std::array<std::uint8_t, 256> kinds{};
  for (unsigned c = 0; c < kinds.size(); ++c) {
    const StateSet states = StatesOf(static_cast<char>(c));
    kinds[c] = states == kNotASite ? std::uint8_t{kIsOther} : states;
  }
  for (const unsigned char c : {'U', 'u'}) kinds[c] |= kIsU;
  for (const unsigned char c : {'T', 't'}) kinds[c] |= kIsT;
  return kinds;
}

std::string Shown(char c) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  const auto byte = static_cast<unsigned char>(c);
  if (byte > ' ' && byte < 0x7F) return std::string("'") + c + "'";
  return std::string("byte 0x") + kDigits[byte >> 4] + kDigits[byte & 15];
}

}  // namespace

SequenceBuilder::SequenceBuilder(const std::string& file)
    : file_(file), kinds_(MakeKinds()), symbol_faults_(file), shape_faults_(file) {}

void SequenceBuilder::Begin(std::string_view label, long line, bool cut) {
  if (label.empty()) shape_faults_.Add(line, 1, "no label; write one");
  alignment_.labels.push_back(CleanLabel(label));
  alignment_.cells.emplace_back();
  alignment_.cells.back().reserve(alignment_.Sites());
  lines_.push_back(line);
  cut_.push_back(cut);
}

void SequenceBuilder::Append(std::size_t taxon, std::string_view part, long line, long column) {
  std::vector<StateSet>& cells = alignment_.cells[taxon];
  const std::size_t before = cells.size();
  cells.resize(before + part.size());
  StateSet* const to = cells.data() + before;
  unsigned seen = 0;
  for (std::size_t i = 0; i < part.size(); ++i) {
    const unsigned kind = kinds_[static_cast<unsigned char>(part[i])];
    to[i] = static_cast<StateSet>(kind & kStates);
    seen |= kind;
  }
  seen_ |= seen;
  if ((seen & kIsOther) == 0) return;
  cells.resize(before);
  AppendChecked(part, line, column, cells);
}

void SequenceBuilder::AppendChecked(std::string_view part, long line, long column,
                                    std::vector<StateSet>& cells) {
  for (const char c : part) {
    const unsigned kind = kinds_[static_cast<unsigned char>(c)];
    if (!IsBlank(c)) cells.push_back(static_cast<StateSet>(kind & kStates));
    if (!IsBlank(c) && kind == kIsOther) {
      symbol_faults_.Add(line, column,
                         Shown(c) + " stands for no nucleotide; write a code, ? or -");
      if (kAminoAcidsOnly.find(c) != kAminoAcidsOnly.npos && amino_acids_++ == 0) {
        amino_line_ = line;
        amino_column_ = column;
      }
    }
    ++column;
  }
}

bool SequenceBuilder::Fits(std::size_t taxa, std::size_t sites) const {
  return !symbol_faults_.Any() && !shape_faults_.Any() && Taxa() == taxa &&
         std::all_of(alignment_.cells.begin(), alignment_.cells.end(),
                     [&](const std::vector<StateSet>& row) { return row.size() == sites; });
}

// Those letters are a third of a common protein. Several, and one in ten, are no slips of the pen.
void SequenceBuilder::ThrowIfProtein() const {
  if (amino_acids_ < 3) return;
  std::size_t letters = amino_acids_;
  for (const std::vector<StateSet>& row : alignment_.cells) {
    letters += static_cast<std::size_t>(
        std::count_if(row.begin(), row.end(), [](StateSet states) { return states != kNoState; }));
  }
  if (amino_acids_ < letters / 10) return;
  throw Error(Fault{file_, amino_line_, amino_column_,
                    "the sequences are protein; give those of the nucleotides"});
}

void SequenceBuilder::CheckLabels() const {
  FaultList faults(file_);
  for (const std::vector<std::size_t>& group : Duplicates(alignment_.labels)) {
    for (const std::size_t i : group) {
      if (i == group[0]) continue;
      faults.Add(lines_[i], 1,
                 "label " + Label(i) + " stands in line " + std::to_string(lines_[group[0]]) +
                     " already; give each taxon its own" +
                     (cut_[i] ? ", with _ for blanks: a label ends at the first blank" : ""));
    }
  }
  faults.ThrowIfAny();
}

void SequenceBuilder::CheckLengths(std::size_t sites, const std::string& whose) const {
  FaultList faults(file_);
  for (std::size_t i = 0; i < Taxa(); ++i) {
    if (Sites(i) == sites) continue;
    faults.Add(lines_[i], 1,
               Label(i) + " has " + std::to_string(Sites(i)) + " sites, not the " +
                   std::to_string(sites) + whose + "; align the sequences to one length");
  }
  faults.ThrowIfAny();
}

Alignment SequenceBuilder::Finish(std::size_t sites, const std::string& whose) {
  ThrowIfProtein();
  shape_faults_.ThrowIfAny();
  symbol_faults_.ThrowIfAny();
  CheckLabels();
  CheckLengths(sites, whose);
  alignment_.rna = (seen_ & kIsU) != 0 && (seen_ & kIsT) == 0;
  return std::move(alignment_);
}

}  // namespace zorvek::wide
