#include "wide/data/alignment_statistics.h"

#include <gtest/gtest.h>

#include "zorvek/io.h"

namespace zorvek::wide {
namespace {

using Strings = std::vector<std::string>;

// Sites: the same; one that differs; informative; informative in two of three nucleotides; an
// ambiguity or a gap makes no difference, nor does it repeat one.
TEST(AlignmentStatistics, AreThoseCountedByHand) {
  const AlignmentStatistics found = StatisticsOf(
      MakeAlignment("", {"a", "b", "c", "d", "e", "f"},
                    {"-AAARA-", "ACAAA-N", "AACCAAT", "AACCARC", "AACGAAT", "AACGAAT"}));
  EXPECT_EQ(found.variable, 4u);
  EXPECT_EQ(found.informative, 2u);
  ASSERT_EQ(found.sequences.size(), 6u);
  const std::size_t gaps[] = {2, 1, 0, 0, 0, 0}, ambiguous[] = {1, 1, 0, 1, 0, 0};
  for (std::size_t taxon = 0; taxon < 6; ++taxon) {
    EXPECT_EQ(found.sequences[taxon].gaps, gaps[taxon]);
    EXPECT_EQ(found.sequences[taxon].ambiguous, ambiguous[taxon]);
  }
  EXPECT_EQ(found.identical, (std::vector<std::vector<std::size_t>>{{4, 5}}));
}

// What is not definite comes first, and labels tell those apart that are the same.
TEST(AlignmentOrder, DoesNotDependOnTheFile) {
  Alignment alignment = MakeAlignment("", {"z", "y", "b", "x"}, {"AC", "AN", "AC", "A-"});
  alignment.rna = true;
  alignment.Reorder(CanonicalOrder(alignment));
  EXPECT_EQ(alignment.labels, (Strings{"x", "y", "b", "z"}));
  EXPECT_EQ(alignment.cells[1][1], kAnyState);
  EXPECT_TRUE(alignment.rna);
}

}  // namespace
}  // namespace zorvek::wide
