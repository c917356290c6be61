#include "tree/candidate_lists.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

#include "driver/run_state.h"
#include "tests/reference_input.h"

namespace zorvek {
namespace {

// Sorts one taxon's list, from the order given.
std::vector<int> Sorted(std::vector<int> list, std::vector<double> distance) {
  std::vector<double*> distances(distance.size(), distance.data());
  std::vector<std::vector<int>> others(distance.size(), list);
  std::vector<int*> rows;
  for (auto& row : others) rows.push_back(row.data());
  n = static_cast<int>(distance.size());
  DM1 = distances.data();
  CL = rows.data();
  BuildCL();
  n = 0;
  DM1 = nullptr;
  CL = nullptr;
  return others[0];
}

TEST(CandidateLists, TiesComeAsTheExchangeSortLeavesThem) {
  EXPECT_EQ(Sorted({1, 2, 3}, {0, 2, 2, 1}), (std::vector<int>{3, 2, 1}));
  std::mt19937 random(5);
  for (int trial = 0; trial < 4000; ++trial) {
    const std::size_t taxa_count = trial < 3990 ? 2 + random() % 40 : 400;
    const unsigned values = 1 + static_cast<unsigned>(random() % (trial % 2 == 0 ? 4 : 40));
    std::vector<double> distance(taxa_count);
    for (double& d : distance) d = static_cast<double>(random() % values);
    std::vector<int> list(taxa_count - 1);
    std::iota(list.begin(), list.end(), 1);
    if (trial % 3 == 0) std::shuffle(list.begin(), list.end(), random);
    std::vector<int> expected = list;
    reference::ExchangeSort(expected, distance);
    ASSERT_EQ(Sorted(list, distance), expected) << "trial " << trial;
  }
}

}  // namespace
}  // namespace zorvek
