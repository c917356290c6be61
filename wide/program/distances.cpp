#include "wide/program/distances.h"

#include <numeric>

#include "core/index.h"
#include "zorvek/check.h"

namespace zorvek::wide {

namespace {

// Returns whether taxa were left out.
bool SettleUndefined(const Options& options, Input& input) {
  if (input.distances.Undefined().empty()) return false;
  // The taxa as the search would see them, so that what is left out does not depend on the file's order.
  const UndefinedPairs undefined =
      FindUndefined(input.distances.Rows(), SearchOrder(options, input));
  if (!options.drop_undefined) {
    CheckDefined(options.file, input.Labels(), undefined, "give --drop-undefined or --leave-out",
                 options.matrix ? nullptr : &options.model.model);
  }
  std::vector<bool> left_out(input.Labels().size());
  for (const int taxon : undefined.taxa) left_out[Index(taxon)] = true;
  LeaveOut(left_out, input);
  CheckSize(options, input);
  return true;
}

PairKinds Estimate(const Options& options, Input& input, ProgressLine& line) {
  EstimatedDistances estimated =
      EstimateDistances(*input.alignment, options.model, options.search.threads,
                        [&line](double share) { line.Show("distances", share, ""); });
  input.distances = std::move(estimated.matrix);
  return estimated.kinds;
}

}  // namespace

std::vector<int> Inverse(const std::vector<int>& order) {
  std::vector<int> inverse(order.size());
  for (std::size_t k = 0; k < order.size(); ++k) inverse[Index(order[k])] = static_cast<int>(k);
  return inverse;
}

DistanceNotes EstimateDistances(const Options& options, Input& input, ProgressLine& line) {
  DistanceNotes notes;
  if (options.matrix) {
    SettleUndefined(options, input);
    return notes;
  }
  notes.kinds = Estimate(options, input, line);
  // The nucleotide frequencies are those of the taxa that are kept.
  if (SettleUndefined(options, input)) notes.kinds = Estimate(options, input, line);
  CheckEstimates(options.file, options.model.model, notes.kinds);
  notes.uncounted = CountUncounted(*input.alignment);
  if (notes.kinds.saturated > 0) {
    notes.saturated = SaturatedPairs(*input.alignment, options.search.threads);
  }
  return notes;
}

std::vector<int> SearchOrder(const Options& options, const Input& input) {
  if (!options.matrix && options.model.model != Model::kSpectral) {
    return CanonicalOrder(*input.alignment);
  }
  std::vector<int> order(input.Labels().size());
  std::iota(order.begin(), order.end(), 0);
  return order;
}

void Reorder(const std::vector<int>& order, Input& input) {
  input.distances.Reorder(order);
  if (input.alignment) return input.alignment->Reorder(order);
  std::vector<std::string> before = std::move(input.matrix_labels);
  input.matrix_labels.clear();
  for (const int taxon : order) input.matrix_labels.push_back(std::move(before[Index(taxon)]));
}

}  // namespace zorvek::wide
