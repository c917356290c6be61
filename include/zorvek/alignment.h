// Aligned sequences as sets of nucleotides, from whatever format they were read.
#ifndef ZORVEK_ALIGNMENT_H
#define ZORVEK_ALIGNMENT_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace zorvek::wide {

// The nucleotides that may stand at a site, a bit each. What an ambiguity code counts is decided
// where sites are counted, not where they are read.
//
//   symbol   A  C  G  T U  R  Y  M  K  S  W  H  B  V  D  N X  - ?
//   states   1  2  4   8   5 10  3 12  6  9 11 14  7 13   15   0
using StateSet = std::uint8_t;

constexpr StateSet kA = 1;
constexpr StateSet kC = 2;
constexpr StateSet kG = 4;
constexpr StateSet kT = 8;
constexpr StateSet kAnyState = 15;
constexpr StateSet kNoState = 0;     // gap or missing
constexpr StateSet kNotASite = 255;  // StatesOf a symbol that stands for no nucleotide

// The states of a one-letter code of nucleotides [NC-IUB1985] in either case, X as N.
StateSet StatesOf(char symbol);

struct Alignment {
  std::vector<std::string> labels;
  std::vector<std::vector<StateSet>> cells;  // cells[taxon][site]; all rows are equally long
  bool rna = false;                          // the file writes U, and nowhere T

  std::size_t Taxa() const { return cells.size(); }
  std::size_t Sites() const { return cells.empty() ? 0 : cells[0].size(); }

  // Takes away the taxa for which `left_out` is true. No cell is copied.
  void LeaveOut(const std::vector<bool>& left_out);

  // Puts taxon order[k] in place k. No cell is copied.
  void Reorder(const std::vector<int>& order);
};

// The taxa by what definite nucleotides they have, then by label: an order for a search whose result is
// not to depend on that of the file.  Cost: n log n comparisons.
std::vector<int> CanonicalOrder(const Alignment& alignment);

// The items for which `left_out` is false, in their order.
template <typename Item>
void RemoveItems(const std::vector<bool>& left_out, std::vector<Item>& items) {
  std::size_t kept = 0;
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (!left_out[i]) std::swap(items[kept++], items[i]);
  }
  items.resize(kept);
}

}  // namespace zorvek::wide

#endif
