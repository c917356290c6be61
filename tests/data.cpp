#include "tests/data.h"

#include <numeric>

#include "driver/run_state.h"
#include "tree/starting_tree.h"
#include "zorvek/error.h"

namespace zorvek::test {

Workspace::Workspace(int taxa_count, const std::function<double(int, int)>& distance,
                     std::uint32_t seed)
    : distances_(Matrix(taxa_count, distance)), candidates_(Index(taxa_count)) {
  n = taxa_count;
  for (int i = 0; i < n; ++i) {
    distance_rows_.push_back(distances_.Row(i));
    for (int j = 0; j < n; ++j) {
      if (j != i) candidates_[Index(i)].push_back(j);
    }
    candidate_rows_.push_back(candidates_[Index(i)].data());
  }
  DM1 = distance_rows_.data();
  CL = candidate_rows_.data();
  r = new MTRand;
  r->seedWithValue(seed);
  t = new Timer;
  Init();
  DJT();
}

Workspace::~Workspace() {
  Finalize();
  delete r;
  delete t;
  r = nullptr;
  t = nullptr;
  DM1 = nullptr;
  CL = nullptr;
  n = MAX_TIME = horizon = n_ants = time_val = 0;
  alpha = t2_val = 0;
  opt_val = t1_val = 1e8;
}

Tree::Tree(TreeTable tree) : cells_(Index((n - 1) * kFields)) {
  for (int row = 0; row < n - 1; ++row) rows_.push_back(&cells_[0] + row * kFields);
  CopyTree(tree, data());
}

std::function<double(int, int)> DyadicDistances(std::uint32_t seed) {
  return [generator = std::mt19937(seed)](int, int) mutable {
    return std::ldexp(static_cast<double>(generator() % (1u << 20) + 1), -20);
  };
}

std::function<double(int, int)> RandomDistances(std::uint32_t seed) {
  return [generator = std::mt19937(seed)](int, int) mutable {
    return std::uniform_real_distribution<double>(0.01, 1.0)(generator);
  };
}

std::function<double(int, int)> TreeLikeDistances(int taxa_count, double noise,
                                                  std::uint32_t seed) {
  std::mt19937 generator(seed);
  std::uniform_real_distribution<double> edge(0.01, 0.2);
  const auto count = Index(taxa_count);
  std::vector<std::vector<double>> d(count, std::vector<double>(count));
  for (std::size_t added = 1; added < count; ++added) {
    const std::size_t host = generator() % added;
    for (std::size_t j = 0; j < added; ++j) d[added][j] = d[j][added] = d[host][j];
    for (const std::size_t side : {host, added}) {
      const double length = edge(generator);
      for (std::size_t j = 0; j <= added; ++j) {
        if (j != side) d[side][j] = d[j][side] = d[side][j] + length;
      }
    }
  }
  return [d, generator, noise](int i, int j) mutable {
    return d[Index(i)][Index(j)] *
           (1 + noise * std::uniform_real_distribution<double>(-1, 1)(generator));
  };
}

std::string FaultOf(const std::function<void()>& call) {
  try {
    call();
  } catch (const wide::Error& error) {
    return error.what();
  }
  return "";
}

std::vector<std::pair<int, int>> Pairs(int taxa_count) {
  std::vector<std::pair<int, int>> pairs;
  for (int i = 0; i < taxa_count; ++i) {
    for (int j = i + 1; j < taxa_count; ++j) pairs.emplace_back(i, j);
  }
  return pairs;
}

wide::DistanceMatrix Matrix(int taxa_count, const std::function<double(int, int)>& distance) {
  wide::DistanceMatrix matrix(taxa_count);
  for (const auto& [i, j] : Pairs(taxa_count)) matrix.Set(i, j, distance(i, j));
  return matrix;
}

void Shuffle(TreeTable tree, std::mt19937& generator) {
  std::vector<double> open(Index(n));
  std::iota(open.begin(), open.end(), 0.0);
  for (int row = 0; row < n - 1; ++row) {
    std::shuffle(open.begin(), open.end(), generator);
    const auto take = [&](bool central) {
      auto chosen = open.end() - 1;
      while (!central && *chosen >= 2 * n - 4) --chosen;
      const double id = *chosen;
      open.erase(chosen);
      return id;
    };
    tree[row][kParent] = -1;
    tree[row][kSelf] = n + row;
    tree[row][kLeft] = take(row == n - 2);
    tree[row][kRight] = take(row == n - 2);
    open.push_back(n + row);
  }
  FindAdj(tree);
}

void RandomInterchange(TreeTable tree, std::mt19937& generator) {
  std::vector<std::pair<int, int>> edges;
  for (int row = 0; row < n - 2; ++row) {
    for (const Field side : {kLeft, kRight}) {
      if (tree[row][side] >= n) edges.emplace_back(n + row, Id(tree[row], side));
    }
  }
  if (edges.empty()) return;
  const auto [node, child] = edges[generator() % edges.size()];
  Interchange(tree, node, child);
}

std::vector<double> Ids(TreeTable tree) {
  std::vector<double> ids;
  for (int row = 0; row < n - 1; ++row) ids.insert(ids.end(), tree[row], tree[row] + kLeftLength);
  return ids;
}

std::vector<double> Lengths(TreeTable tree) {
  std::vector<double> lengths;
  for (int row = 0; row < n - 1; ++row) {
    lengths.insert(lengths.end(), tree[row] + kLeftLength, tree[row] + kSpare);
  }
  return lengths;
}

std::string CheckTree(TreeTable tree) {
  std::vector<int> named(Index(2 * n - 1));
  for (int row = 0; row < n - 1; ++row) {
    if (tree[row][kSelf] != n + row) return "self";
    for (const Field side : {kLeft, kRight}) {
      const double child = tree[row][side];
      if (!(child >= 0 && child <= 2 * n - 3)) return "child out of range";
      ++named[static_cast<std::size_t>(child)];
      if (child >= n && row < n - 2 && tree[static_cast<int>(child) - n][kParent] != n + row) {
        return "child with another parent";
      }
    }
  }
  if (std::count(named.begin(), named.end() - 1, 1) != 2 * n - 2) return "an id not named once";
  const double* root = tree[n - 2];
  if (std::min(root[kLeft], root[kRight]) != 2 * n - 4 || root[kParent] != -1) return "root row";
  if (tree[n - 4][kParent] != 2 * n - 3 || tree[n - 3][kParent] != 2 * n - 4) return "central pair";
  FC(2 * n - 4, 2 * n - 3, tree);
  FC(2 * n - 3, 2 * n - 4, tree);
  const std::size_t seen = temp1.size();
  temp1.clear();
  return seen == Index(n) ? "" : "not connected";
}

}  // namespace zorvek::test
