// What the formats of plain sequences have in common: an alignment made from labels and pieces of
// lines, and the checks that follow.
#ifndef ZORVEK_WIDE_FORMATS_SEQUENCE_BUILDER_H
#define ZORVEK_WIDE_FORMATS_SEQUENCE_BUILDER_H

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "zorvek/alignment.h"
#include "zorvek/error.h"

namespace zorvek::wide {

// The letters of amino acids that stand for no nucleotide, and the mark of a stop.
constexpr std::string_view kAminoAcidsOnly = "EFIJLOPQZefijlopqz*";

class SequenceBuilder {
 public:
  explicit SequenceBuilder(const std::string& file);

  // Begins the next sequence, whose label stands in this line. `cut` tells whether the label ended
  // at a blank and more text follows it.
  void Begin(std::string_view label, long line, bool cut = false);

  // Appends the sites in `part`, which begins in this line and column, to a sequence.
  void Append(std::size_t taxon, std::string_view part, long line, long column);

  const std::string& File() const { return file_; }
  std::size_t Taxa() const { return alignment_.Taxa(); }
  std::size_t Sites(std::size_t taxon) const { return alignment_.cells[taxon].size(); }
  const std::string& Label(std::size_t taxon) const { return alignment_.labels[taxon]; }
  long Line(std::size_t taxon) const { return lines_[taxon]; }

  // Whether there is no fault so far, and `taxa` sequences of `sites` sites.
  bool Fits(std::size_t taxa, std::size_t sites) const;

  // Throws Error if the letters are those of protein.
  void ThrowIfProtein() const;

  // The alignment. Throws Error with all faults of the first kind that there is: protein, missing
  // labels, symbols that stand for no nucleotide, labels that are the same, sequences that are not
  // `sites` sites long. `whose` tells where that length comes from (" of a").
  Alignment Finish(std::size_t sites, const std::string& whose);

 private:
  void AppendChecked(std::string_view part, long line, long column, std::vector<StateSet>& cells);
  void CheckLabels() const;
  void CheckLengths(std::size_t sites, const std::string& whose) const;

  std::string file_;
  std::array<std::uint8_t, 256> kinds_;  // of each symbol: its states, and what else is to be known
  Alignment alignment_;
  std::vector<long> lines_;  // of the labels
  std::vector<bool> cut_;
  FaultList symbol_faults_;
  FaultList shape_faults_;
  unsigned seen_ = 0;            // kinds of symbols
  std::size_t amino_acids_ = 0;  // letters that only protein has
  long amino_line_ = 0;          // of the first of them
  long amino_column_ = 0;
};

}  // namespace zorvek::wide

#endif
