// One execution takes the bytes for distances and searches for the shortest tree under both criteria:
// whatever they are, it ends with a tree of all taxa and a length, or says that a number is none.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>

#include "core/index.h"
#include "zorvek/distances.h"
#include "zorvek/error.h"
#include "zorvek/search.h"

namespace {

using namespace zorvek::wide;

void Require(bool holds) {
  if (!holds) std::abort();
}

// Most bytes are distances themselves, so that some are equal; the last ones are those of other
// magnitudes, and the very last, rare as they ought to be, are none.
double Distance(std::uint8_t byte) {
  constexpr double kOthers[] = {
      -1,    1e-300, 5e-324, 1e-12, 1 + 1e-12, 1.0 / 3,
      1e200, 1e300,  -1e300, -0.0,  HUGE_VAL,  std::numeric_limits<double>::quiet_NaN()};
  constexpr std::size_t kCount = sizeof kOthers / sizeof *kOthers;
  const std::size_t place = 256 - std::size_t{byte};
  return place > kCount ? byte / 16 : kOthers[kCount - place];
}

bool HasAllTaxa(const Tree& tree) {
  std::size_t taxa = 0;
  for (const int node : tree.preorder) taxa += tree.IsTaxon(node) ? 1 : 0;
  return taxa == zorvek::Index(tree.taxa) && tree.preorder.size() == tree.nodes.size() &&
         std::all_of(tree.nodes.begin(), tree.nodes.end(),
                     [](const Tree::Node& node) { return std::isfinite(node.length); });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const int n = 4 + data[0] % 9;
  DistanceMatrix distances(n);
  bool finite = true;
  std::size_t next = 2;
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < i; ++j, ++next) {
      distances.Set(i, j, next < size ? Distance(data[next]) : 1);
      finite = finite && std::isfinite(distances(i, j));
    }
  }
  SearchSettings settings;
  settings.iterations = data[1] % 8;
  settings.starts = 1 + data[1] / 16 % 3;
  for (const Criterion criterion : {Criterion::kBalanced, Criterion::kOls}) {
    settings.criterion = criterion;
    try {
      const SearchResult found = FindShortestTree(n, distances.Rows(), settings);
      Require(finite && std::isfinite(found.length) && found.tree.taxa == n);
      Require(HasAllTaxa(found.tree));
    } catch (const Error&) {
      Require(!finite);
    }
  }
  return 0;
}
