// Agglomeration over the node-to-node matrix EM. The join of step s makes node n+s, in row s of T2;
// the last of the three nodes that remain in the end, 2n-4, and the node 2n-3 over the other two
// become the central pair:
//
//   active list   0 1 2 3 4     join 1, 3 -> node 5      row 0:  left 1  right 3
//                 0 2 4 5       join 0, 4 -> node 6      row 1:  left 0  right 4
//                 2 5 6         node 7 over 2, 5         row 2:  left 2  right 5
//                                                        root:   left 7  right 6
//
// The list stays in increasing order, since each new id is the largest yet.
#include "search/random_nj.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <vector>

#include "driver/run_state.h"
#include "tree/tree_length.h"

namespace zorvek {

namespace {

constexpr double kUnreached = 100000000.0;  // above every length and criterion that counts

// Positions in the active list, first < second.
struct Pair {
  std::size_t first;
  std::size_t second;
};

// The divergence of each of the m active nodes: the sum of its distances to all of them, over m-2.
// EM is symmetric: adding whole rows adds for each node the same numbers in the same order as its
// own row would, and no sum waits for the last.
std::vector<double> Divergences(const std::vector<int>& active) {
  std::vector<double> sums(active.size(), 0.0);
  for (const int node : active) {
    const double* row = EM[node];
    for (std::size_t a = 0; a < active.size(); ++a) sums[a] += row[active[a]];
  }
  for (double& sum : sums) sum /= static_cast<double>(active.size() - 2);
  return sums;
}

// The pair of least q = EM[x][y] - divergence[x] - divergence[y] [Studier1988], the first of
// equals.
Pair NeighbourPair(const std::vector<int>& active) {
  const std::vector<double> divergence = Divergences(active);
  Pair best{0, 1};
  double least = kUnreached;
  for (std::size_t a = 0; a + 1 < active.size(); ++a) {
    const double* row = EM[active[a]];
    for (std::size_t b = a + 1; b < active.size(); ++b) {
      const double q = row[active[b]] - divergence[a] - divergence[b];
      if (q < least) {
        least = q;
        best = {a, b};
      }
    }
  }
  return best;
}

// A uniform pair of positions that leaves out the last one.
Pair RandomPair(std::size_t active) {
  const auto last = static_cast<std::uint32_t>(active - 2);
  while (true) {
    const std::uint32_t first = r->nextAtMost(last);
    const std::uint32_t second = r->nextAtMost(last);
    if (first < second) return {first, second};
  }
}

// Distances between `node`, made of x and y, and the other active nodes.
void PlaceNode(int node, int x, int y, const std::vector<int>& others) {
  for (const int w : others) {
    EM[w][node] = EM[node][w] = (EM[x][w] + EM[y][w] - EM[x][y]) * 0.5;
  }
}

// Everything in EM but the leaf block becomes 0, the diagonal of the leaf block too.
void ResetInternalDistances() {
  for (int leaf = 0; leaf < n; ++leaf) {
    std::fill_n(EM[leaf] + n, n - 2, 0.0);
    EM[leaf][leaf] = 0;
  }
  Reset(EM + n, n - 2, 2 * n - 2);
}

void SetNode(int row, int parent, int left, int right) {
  T2[row][kParent] = parent;
  T2[row][kSelf] = n + row;
  T2[row][kLeft] = left;
  T2[row][kRight] = right;
}

// Builds one tree in T2.
void Construct() {
  const bool random = alpha < 1.0;  // then no distance matters
  std::vector<int> active(static_cast<std::size_t>(n));
  for (int leaf = 0; leaf < n; ++leaf) active[static_cast<std::size_t>(leaf)] = leaf;
  for (int row = 0; row < n - 3; ++row) {
    const Pair pair = random ? RandomPair(active.size()) : NeighbourPair(active);
    const int x = active[pair.first];
    const int y = active[pair.second];
    active.erase(active.begin() + static_cast<std::ptrdiff_t>(pair.second));
    active.erase(active.begin() + static_cast<std::ptrdiff_t>(pair.first));
    if (!random) PlaceNode(n + row, x, y, active);
    active.push_back(n + row);
    SetNode(row, 0, x, y);
  }
  SetNode(n - 3, 0, active[0], active[1]);
  SetNode(n - 2, -1, 2 * n - 3, 2 * n - 4);
  FindAdj(T2);
  ResetInternalDistances();
}

}  // namespace

void RandomNJ() {
  for (int construction = 0; construction < n_ants; ++construction) {
    t2_val = kUnreached;
    Construct();
    const double length = Evaluate(T2);
    if (length < t2_val) {
      t1_val = t2_val = length;
      CopyTree(T2, T1);
    }
    if (t1_val < opt_val) {
      std::cout << "RandomNJ improved primal bound:" << t1_val
                << " at:" << t->elapsedTime(Timer::CPU) << std::endl;
      opt_val = t1_val;
      CopyTree(T1, OPT);
    }
  }
}

}  // namespace zorvek
