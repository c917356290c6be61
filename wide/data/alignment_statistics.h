// What an alignment holds, in numbers.
#ifndef ZORVEK_WIDE_DATA_ALIGNMENT_STATISTICS_H
#define ZORVEK_WIDE_DATA_ALIGNMENT_STATISTICS_H

#include <cstddef>
#include <vector>

#include "zorvek/alignment.h"

namespace zorvek::wide {

struct AlignmentStatistics {
  struct Sequence {
    std::size_t gaps = 0;       // sites without any nucleotide, those that are missing included
    std::size_t ambiguous = 0;  // sites with a code of several nucleotides
  };

  std::size_t variable = 0;     // sites at which two sequences have different nucleotides
  std::size_t informative = 0;  // sites at which two nucleotides stand in two sequences each, at
                                // least: those that tell trees apart under parsimony
  std::vector<Sequence> sequences;
  std::vector<std::vector<std::size_t>> identical;  // taxa with the same symbols at all sites, by
                                                    // first taxon; none of fewer than two
};

// An ambiguity code counts as no nucleotide. Cost: n x sites.
AlignmentStatistics StatisticsOf(const Alignment& alignment);

}  // namespace zorvek::wide

#endif
