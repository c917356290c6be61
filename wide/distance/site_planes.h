// The definite nucleotides of an alignment as bits, and how two taxa differ in them.
//
//   nucleotide            A  C  G  T or U   other      A site is compared where both taxa have bit 0.
//   bit 0  definite       1  1  1  1        0          There bit 1 differs in a transversion, and bit 2
//   bit 1  pyrimidine     0  1  0  1        0          alone in a transition: A-G if neither has bit 1,
//   bit 2  G or T         0  0  1  1        0          C-T if both have it.
#ifndef ZORVEK_WIDE_DISTANCE_SITE_PLANES_H
#define ZORVEK_WIDE_DISTANCE_SITE_PLANES_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "core/bit_planes.h"
#include "core/pair_table.h"
#include "wide/distance/models.h"
#include "zorvek/alignment.h"

namespace zorvek::wide {

// The numbers of columns of an alignment, any of them as often as it counts.
using SiteList = std::vector<std::size_t>;

// 0 up to the number of sites.
SiteList AllSites(const Alignment& alignment);

// What each set of states counts as in bit planes.
using SiteCodes = std::array<std::uint8_t, 16>;

class SitePlanes {
 public:
  // Cost: 1 to 2 ns a taxon and site.
  SitePlanes(const Alignment& alignment, const SiteList& sites, int threads);

  int Taxa() const { return taxa_; }

  // Shares of A, C, G and T among all definite nucleotides of all taxa.
  Frequencies NucleotideShares() const;

  // Counts taxon i with each of from..to-1, into pairs[0] and on (all but the tables).
  // Cost: 4 population counts a pair for every 64 sites.
  void Count(int i, int from, int to, PairCounts* pairs) const;

 private:
  static constexpr std::size_t kPlanes = 3;

  const PlaneWord* Row(int taxon) const {
    return &bits_[static_cast<std::size_t>(taxon) * kPlanes * words_];
  }

  int taxa_;
  std::size_t words_;
  std::vector<PlaneWord> bits_;
};

// The same sites in planes of A, C, G and T, each set of states being coded as bits of the four.
NucleotidePlanes TablePlanes(const Alignment& alignment, const SiteList& sites,
                             const SiteCodes& codes, int threads);

}  // namespace zorvek::wide

#endif
