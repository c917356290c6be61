#include "wide/data/alignment_statistics.h"

#include <gtest/gtest.h>

#include <string>

namespace zorvek::wide {
namespace {

Alignment Rows(const std::vector<std::string>& rows) {
  Alignment alignment;
  for (const std::string& row : rows) {
    alignment.labels.push_back("t" + std::to_string(alignment.labels.size()));
    alignment.cells.emplace_back();
    for (const char symbol : row) {
      alignment.cells.back().push_back(symbol == '-' ? kNoState : StatesOf(symbol));
    }
  }
  return alignment;
}

// Sites: the same; one that differs; informative; informative in two of three nucleotides; an
// ambiguity or a gap makes no difference, nor does it repeat one.
TEST(AlignmentStatistics, AreThoseCountedByHand) {
  const AlignmentStatistics found = StatisticsOf(Rows({"-AAARA-",  //
                                                       "ACAAA-N",  //
                                                       "AACCAAT",  //
                                                       "AACCARC",  //
                                                       "AACGAAT",  //
                                                       "AACGAAT"}));
  EXPECT_EQ(found.variable, 4u);
  EXPECT_EQ(found.informative, 2u);
  ASSERT_EQ(found.sequences.size(), 6u);
  EXPECT_EQ(found.sequences[0].gaps, 2u);
  EXPECT_EQ(found.sequences[0].ambiguous, 1u);
  EXPECT_EQ(found.sequences[1].gaps, 1u);
  EXPECT_EQ(found.sequences[1].ambiguous, 1u);
  EXPECT_EQ(found.sequences[4].gaps + found.sequences[4].ambiguous, 0u);
  EXPECT_EQ(found.identical, (std::vector<std::vector<std::size_t>>{{4, 5}}));
}

// What is not definite comes first, and labels tell those apart that are the same.
TEST(AlignmentOrder, DoesNotDependOnTheFile) {
  Alignment alignment = Rows({"AC", "AN", "AC", "A-"});
  alignment.labels = {"z", "y", "b", "x"};
  alignment.rna = true;
  alignment.Reorder(CanonicalOrder(alignment));
  EXPECT_EQ(alignment.labels, (std::vector<std::string>{"x", "y", "b", "z"}));
  EXPECT_EQ(alignment.cells[1][1], kAnyState);
  EXPECT_TRUE(alignment.rna);
}

}  // namespace
}  // namespace zorvek::wide
