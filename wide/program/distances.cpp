#include "wide/program/distances.h"

#include <algorithm>
#include <numeric>
#include <tuple>

#include "core/index.h"
#include "wide/data/labels.h"
#include "wide/distance/vertex_cover.h"
#include "zorvek/error.h"

namespace zorvek::wide {

namespace {

std::vector<std::string> LabelsOf(const std::vector<int>& taxa, const Input& input) {
  std::vector<std::string> labels;
  for (const int taxon : taxa) labels.push_back(input.Labels()[Index(taxon)]);
  return labels;
}

[[noreturn]] void TellUndefined(const Options& options, const Input& input,
                                const std::vector<std::pair<int, int>>& pairs,
                                const VertexCover& cover) {
  std::vector<std::string> lines;
  for (const auto& [a, b] : pairs) {
    const std::vector<std::string> labels = LabelsOf({a, b}, input);
    lines.push_back(labels[0] + " and " + labels[1]);
  }
  std::string names;
  for (const std::string& label : LabelsOf(cover.vertices, input)) {
    names += (names.empty() ? "" : ",") + WithoutBlanks(label);
  }
  const bool spectral = options.model.model == Model::kSpectral && !options.matrix;
  throw Error(At(options.file) + ": no distance for " + std::to_string(pairs.size()) +
              (pairs.size() == 1 ? " pair" : " pairs") + " of taxa" +
              (options.matrix ? "" : ", which have no site in common") +
              (spectral ? " or differ too much" : "") + "; give --drop-undefined or --leave-out '" +
              names +
              (cover.smallest ? "', which leaves out no more taxa than must be"
                              : "', which leaves out the fewest taxa that were found") +
              "\n  " + Listed(lines, "\n  "));
}

// The cover of the graph as the search would see it, so that it does not depend on the file's order.
VertexCover CoverOf(std::vector<std::pair<int, int>> pairs, const std::vector<int>& order) {
  const std::vector<int> place = Inverse(order);
  for (auto& [a, b] : pairs) std::tie(a, b) = std::minmax({place[Index(a)], place[Index(b)]});
  std::sort(pairs.begin(), pairs.end());
  VertexCover cover = FindVertexCover(static_cast<int>(order.size()), pairs);
  for (int& vertex : cover.vertices) vertex = order[Index(vertex)];
  std::sort(cover.vertices.begin(), cover.vertices.end());
  return cover;
}

// Returns whether taxa were left out.
bool SettleUndefined(const Options& options, Input& input) {
  const std::vector<std::pair<int, int>> pairs = input.distances.Undefined();
  if (pairs.empty()) return false;
  const VertexCover cover = CoverOf(pairs, SearchOrder(options, input));
  if (!options.drop_undefined) TellUndefined(options, input, pairs, cover);
  std::vector<bool> left_out(input.Labels().size());
  for (const int taxon : cover.vertices) left_out[Index(taxon)] = true;
  LeaveOut(left_out, input);
  CheckSize(options, input);
  return true;
}

PairKinds Estimate(const Options& options, Input& input) {
  EstimatedDistances estimated =
      EstimateDistances(*input.alignment, options.model, options.search.threads);
  input.distances = std::move(estimated.matrix);
  return estimated.kinds;
}

}  // namespace

std::vector<int> Inverse(const std::vector<int>& order) {
  std::vector<int> inverse(order.size());
  for (std::size_t k = 0; k < order.size(); ++k) inverse[Index(order[k])] = static_cast<int>(k);
  return inverse;
}

DistanceNotes EstimateDistances(const Options& options, Input& input) {
  DistanceNotes notes;
  if (options.matrix) {
    SettleUndefined(options, input);
    return notes;
  }
  notes.kinds = Estimate(options, input);
  // The nucleotide frequencies are those of the taxa that are kept.
  if (SettleUndefined(options, input)) notes.kinds = Estimate(options, input);
  if (notes.kinds.finite == 0) {
    throw Error(At(options.file) + ": all pairs of taxa are too far apart for " +
                RowOf(options.model.model).name + "; check that the sequences are aligned");
  }
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
