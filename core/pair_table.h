// From sequences to the distance of a pair of taxa, without any file: bit planes, the pair table,
// and the distance that its eigenvalues give.
#ifndef ZORVEK_CORE_PAIR_TABLE_H
#define ZORVEK_CORE_PAIR_TABLE_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "core/bit_planes.h"

namespace zorvek {

constexpr int kNucleotides = 4;  // A, C, G, T in this order

// The sequences of all taxa, a bit per nucleotide and site. A site with A, C, G or T has one of the
// four bits, a site with any other symbol has all four (it counts as each of them in the second
// taxon of a pair), and a site without a state (gap, missing) has none.
//
//   site      0 1 2 3 4
//   symbol    A G - U T
//   plane A   1 0 0 1 0      A plane is words of 64 sites, the first site in the lowest bit;
//   plane C   0 0 0 1 0      bits beyond the last site are 0.
//   plane G   0 1 0 1 0
//   plane T   0 0 0 1 1
class NucleotidePlanes {
 public:
  using Word = PlaneWord;

  NucleotidePlanes(std::size_t rows, std::size_t sites)
      : sites_(sites), words_(WordsFor(sites)), bits_(rows * kNucleotides * words_) {}

  // Notes the symbol at a site that has none yet.
  void Set(std::size_t taxon, std::size_t site, char symbol);

  // Makes the planes of a taxon, from a byte a site with bit c for plane c.
  void Fill(std::size_t taxon, const std::uint8_t* codes) {
    PackPlanes(codes, sites_, kNucleotides, &bits_[taxon * kNucleotides * words_]);
  }

  // Words per plane.
  std::size_t Words() const { return words_; }

  // The four planes of a taxon, one after the other.
  const Word* Planes(std::size_t taxon) const { return &bits_[taxon * kNucleotides * words_]; }

  // The same without the sites of any other symbol, which do not count in the first taxon of a
  // pair.
  std::vector<Word> NucleotidesOnly(std::size_t taxon) const;

 private:
  std::size_t sites_;
  std::size_t words_;
  std::vector<Word> bits_;
};

// F: counts of site pairings, row = nucleotide of the first taxon, column = that of the second.
using PairTable = double[kNucleotides][kNucleotides];

// Counts the pairings of two taxa, `first` being nucleotides only. Cost: 16 population counts per
// word.
void CountPairs(const NucleotidePlanes::Word* first, const NucleotidePlanes::Word* second,
                std::size_t words, PairTable& table);

// The distance of the pair, 0 when none is defined because its spectrum is unstable. Overwrites the
// table. Formula: -ln(lambda) / 4, lambda the largest eigenvalue strictly between 0 and 1 of
//          P[r][c] = (F[r][c] + F[c][r]) / 2 / (total of column r of F).
double PairDistance(PairTable& table);

}  // namespace zorvek

#endif
