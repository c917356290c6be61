#include "wide/criterion/criterion.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "wide/criterion/balanced_neighbourhood.h"
#include "wide/criterion/ols_neighbourhood.h"

namespace zorvek::wide {

double LargestDistance(int n, const double* const* distances) {
  double largest = 0;
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < i; ++j) largest = std::max(largest, std::fabs(distances[i][j]));
  }
  return largest;
}

std::unique_ptr<Neighbourhood> MakeNeighbourhood(Criterion criterion, const Topology& topology,
                                                 const double* const* distances, int threads,
                                                 const std::vector<int>& taxa) {
  switch (criterion) {
    case Criterion::kBalanced:
      return std::make_unique<BalancedNeighbourhood>(topology, distances, threads, taxa);
    case Criterion::kOls:
      return std::make_unique<OlsNeighbourhood>(
          topology, distances,
          topology.taxa < kSinglePrecision ? Precision::kDouble : Precision::kSingle, threads);
  }
  throw std::logic_error("no such criterion");
}

}  // namespace zorvek::wide
