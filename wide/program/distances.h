// The distances of a run: estimated, and complete.
#ifndef ZORVEK_WIDE_PROGRAM_DISTANCES_H
#define ZORVEK_WIDE_PROGRAM_DISTANCES_H

#include <array>
#include <vector>

#include "wide/distance/pair_distances.h"
#include "wide/program/input.h"
#include "wide/program/options.h"
#include "wide/program/progress_line.h"

namespace zorvek::wide {

// What is told about estimated distances.
struct DistanceNotes {
  PairKinds kinds;
  std::array<long, kModels>
      saturated{};  // pairs under each model, if there are any under the run's
  UncountedCells uncounted;
};

// Estimates the distances of `input`, unless they were given, and leaves out taxa where that is
// wanted, so that every pair has one. Throws Error if a pair without a distance is left, or if all pairs
// are too far apart for the model.
DistanceNotes EstimateDistances(const Options& options, Input& input, ProgressLine& line);

// The order in which the search is given the taxa, so that its tree does not depend on that of the file:
// by sequence, then by label. That of the file where the distances depend on it, or were given.
// Cost: n log n comparisons of sequences.
std::vector<int> SearchOrder(const Options& options, const Input& input);

// The order that undoes another one.
std::vector<int> Inverse(const std::vector<int>& order);

// Puts taxon order[k] in place k of all that `input` holds.
void Reorder(const std::vector<int>& order, Input& input);

}  // namespace zorvek::wide

#endif
