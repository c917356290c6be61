// The search of zorvek-wide: the shortest tree under a criterion over the whole tree space.
#ifndef ZORVEK_SEARCH_H
#define ZORVEK_SEARCH_H

#include <atomic>
#include <cstdint>
#include <functional>

#include "zorvek/criterion.h"
#include "zorvek/distances.h"
#include "zorvek/names.h"
#include "zorvek/tree.h"

namespace zorvek::wide {

// What the search tells while it runs, on the thread that called it.
struct Progress {
  enum Phase { kStart, kDescent, kIterations } phase;
  double fraction;  // of the phase, 0..1
  double length;    // of the best tree so far, in descents of those met on this thread
  bool improved;    // whether that length is new since the last report
};

// As users read it.
inline const char* Name(Progress::Phase phase) {
  if (phase == Progress::kStart) return "starting trees";
  return phase == Progress::kDescent ? "descent" : "iterations";
}

// What improves a starting tree.
enum class Moves {
  kNone,
  kNni,
  kSpr,  // NNI, then SPR
};

inline Names<Moves> MovesNames() {
  return {{"none", Moves::kNone}, {"nni", Moves::kNni}, {"spr", Moves::kSpr}};
}

struct SearchSettings {
  static constexpr long kUnlimited = 1000000000000;  // as iterations: until the clock ends it

  Criterion criterion = Criterion::kBalanced;
  Moves moves = Moves::kSpr;
  std::uint64_t seed = 1;
  const Tree* start =
      nullptr;          // the first starting tree, unrooted; neighbour joining's without one
  int starts = 1;       // starting trees: that, then randomised joinings
  double greedy = 0.5;  // randomised joinings: share of greedy joins, 0..1
  long iterations = 0;  // rounds of annealing after the descents
  int threads = 1;
  double seconds = 0;   // wall-clock limit, 0 for none
  double patience = 0;  // wall-clock seconds without an improvement that end the search, 0 for none
  const std::atomic<bool>* stop = nullptr;           // the search ends soon after this becomes true
  std::function<void(const Progress&)> on_progress;  // may be empty
};

struct SearchResult {
  Tree tree;
  double length = 0;  // under the criterion
};

// The shortest tree found, identical taxa side by side. The result depends on the distances and on the
// settings but for `threads`, unless a time limit or `stop` ends it early.
// Requires: n >= 4, a symmetric matrix, 0 in its diagonal.  Throws Error if a distance is not finite.
// Memory: for each thread that has a tree 32 n^2 bytes, under least squares 16 n^2 or, from 4,000 taxa on, 4 n^2;
// and while one is joined 8 n^2, or then 4 n^2, which is all that Moves::kNone needs.
SearchResult FindShortestTree(int n, const double* const* distances,
                              const SearchSettings& settings);

// The same, in less memory: a single tree that is joined in single precision and not searched needs none
// but that of the matrix, which holds what it held again when the tree is there.
SearchResult FindShortestTree(DistanceMatrix& distances, const SearchSettings& settings);

// The neighbour-joining tree [Saitou1987] with its own edge lengths, some of which may be negative; its
// length is their sum. Number is double or float. The matrix is used up.
// Requires: n >= 4, a symmetric matrix of finite numbers.  Memory: of order n.
template <typename Number>
SearchResult JoinedTree(int n, Number* const* distances);

// A given tree with the edge lengths and the length that the criterion gives it. Nodes of many edges are
// resolved.  Requires: at least 4 taxa, a symmetric matrix of finite numbers.  Cost: n^2.
SearchResult FitTree(const Tree& tree, const double* const* distances, Criterion criterion);

}  // namespace zorvek::wide

#endif
