#include "wide/program/distances.h"

#include <numeric>

#include "wide/data/labels.h"
#include "wide/distance/pair_distances.h"
#include "wide/distance/vertex_cover.h"
#include "zorvek/error.h"

namespace zorvek::wide {

namespace {

std::vector<std::string> LabelsOf(const std::vector<int>& taxa, const Input& input) {
  std::vector<std::string> labels;
  for (const int taxon : taxa) labels.push_back(input.Labels()[static_cast<std::size_t>(taxon)]);
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
  throw Error(At(options.file) + ": no distance for " + std::to_string(pairs.size()) +
              (pairs.size() == 1 ? " pair" : " pairs") +
              " of taxa, which share no site or differ too much; give "
              "--drop-undefined or --leave-out '" +
              names + "', which leaves out " +
              (cover.smallest ? "no more taxa than must be" : "the fewest taxa that were found") +
              "\n  " + Listed(lines, "\n  "));
}

void SettleUndefined(const Options& options, Input& input) {
  const std::vector<std::pair<int, int>> pairs = input.distances.Undefined();
  if (pairs.empty()) return;
  const VertexCover cover = FindVertexCover(input.distances.Size(), pairs);
  if (!options.drop_undefined) TellUndefined(options, input, pairs, cover);
  std::vector<bool> left_out(input.Labels().size());
  for (const int taxon : cover.vertices) left_out[static_cast<std::size_t>(taxon)] = true;
  LeaveOut(left_out, input);
  CheckSize(options, input);
}

}  // namespace

void EstimateDistances(const Options& options, Input& input) {
  if (!options.matrix) {
    std::vector<std::size_t> sites(input.alignment->Sites());
    std::iota(sites.begin(), sites.end(), std::size_t{0});
    input.distances = PairDistances(*input.alignment, sites, options.search.threads);
  }
  SettleUndefined(options, input);
}

}  // namespace zorvek::wide
