// What the NEXUS library tells about the cells of a matrix.
#ifndef ZORVEK_INPUT_CELL_SYMBOLS_H
#define ZORVEK_INPUT_CELL_SYMBOLS_H

#include <ncl/ncl.h>

#include <cstddef>
#include <vector>

namespace zorvek {

// The symbol of a cell's first state. All that a cell holds is its state code, so the library is asked
// once for each code, and a cell costs one look.
class CellSymbols {
 public:
  static constexpr char kNone = '\0';  // gap, missing, or no state of the data type

  explicit CellSymbols(const NxsCharactersBlock& matrix) : matrix_(matrix) {}

  // Of the cell of a taxon at a site, whose state code is known.
  char At(unsigned taxon, unsigned site, NxsDiscreteStateCell code) {
    if (code < 0) return kNone;
    const auto index = static_cast<std::size_t>(code);
    if (index >= symbols_.size()) symbols_.resize(index + 1, kUnknown);
    if (symbols_[index] == kUnknown) {
      const bool none = matrix_.GetInternalRepresentation(taxon, site, 0) < 0;
      symbols_[index] = none ? kNone : matrix_.GetState(taxon, site, 0);
    }
    return symbols_[index];
  }

 private:
  static constexpr char kUnknown = '\1';

  const NxsCharactersBlock& matrix_;
  std::vector<char> symbols_;
};

}  // namespace zorvek

#endif
