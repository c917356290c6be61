// Pairs without a distance, and what to do about them.
#include <algorithm>
#include <cmath>
#include <tuple>

#include "core/index.h"
#include "wide/data/labels.h"
#include "wide/distance/models.h"
#include "wide/distance/vertex_cover.h"
#include "zorvek/check.h"
#include "zorvek/error.h"

namespace zorvek::wide {

template <typename Number>
UndefinedPairs FindUndefined(const Number* const* distances, const std::vector<int>& order) {
  const int n = static_cast<int>(order.size());
  UndefinedPairs undefined;
  for (int i = 0; i < n; ++i) {
    for (int j = i + 1; j < n; ++j) {
      if (std::isnan(distances[i][j])) undefined.pairs.emplace_back(i, j);
    }
  }
  if (undefined.pairs.empty()) return undefined;
  std::vector<int> place(order.size());
  for (int k = 0; k < n; ++k) place[Index(order[Index(k)])] = k;
  std::vector<std::pair<int, int>> edges = undefined.pairs;
  for (auto& [a, b] : edges) std::tie(a, b) = std::minmax({place[Index(a)], place[Index(b)]});
  std::sort(edges.begin(), edges.end());
  const VertexCover cover = FindVertexCover(n, edges);
  for (const int vertex : cover.vertices) undefined.taxa.push_back(order[Index(vertex)]);
  std::sort(undefined.taxa.begin(), undefined.taxa.end());
  undefined.fewest = cover.smallest;
  return undefined;
}

template UndefinedPairs FindUndefined(const double* const*, const std::vector<int>&);
template UndefinedPairs FindUndefined(const float* const*, const std::vector<int>&);

void CheckDefined(const std::string& file, const std::vector<std::string>& labels,
                  const UndefinedPairs& undefined, const std::string& remedy, const Model* model) {
  const auto& pairs = undefined.pairs;
  if (pairs.empty()) return;
  std::vector<std::string> lines;
  for (const auto& [a, b] : pairs) lines.push_back(labels[Index(a)] + " and " + labels[Index(b)]);
  std::string names;
  for (const int taxon : undefined.taxa) {
    names += (names.empty() ? "" : ",") + WithoutBlanks(labels[Index(taxon)]);
  }
  const bool estimated = model != nullptr;
  const bool spectral = estimated && *model == Model::kSpectral;
  throw Error(Fault{file, 0, 0,
                    "no distance for " + std::to_string(pairs.size()) +
                        (pairs.size() == 1 ? " pair" : " pairs") + " of taxa" +
                        (estimated ? ", which have no site in common" : "") +
                        (spectral ? " or differ too much" : "") + "; " + remedy + " '" + names +
                        (undefined.fewest ? "', which leaves out no more taxa than must be"
                                          : "', which leaves out the fewest taxa that were found") +
                        "\n  " + Listed(lines, "\n  ")});
}

void CheckEstimates(const std::string& file, Model model, const PairKinds& kinds) {
  if (kinds.finite > 0) return;
  throw Error(Fault{file, 0, 0,
                    std::string("all pairs of taxa are too far apart for ") + RowOf(model).name +
                        "; check that the sequences are aligned"});
}

}  // namespace zorvek::wide
