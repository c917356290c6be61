#include "wide/search/neighbour_joining.h"

#include <algorithm>
#include <limits>

namespace zorvek::wide {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// The active nodes and their distances, packed: row i holds the distances of active node i. The
// diagonal is infinite, so that no node is its own partner.
class Agglomeration {
 public:
  Agglomeration(int n, const double* const* distances)
      : stride_(static_cast<std::size_t>(n)),
        active_(stride_),
        distance_(stride_ * stride_),
        sum_(stride_),
        scaled_(stride_) {
    for (std::size_t i = 0; i < stride_; ++i) {
      active_[i] = static_cast<int>(i);
      for (std::size_t j = 0; j < stride_; ++j) {
        Row(i)[j] = i == j ? kInfinity : distances[i][j];
        if (i != j) sum_[i] += Row(i)[j];
      }
    }
  }

  std::size_t Count() const { return active_.size(); }
  int Id(std::size_t i) const { return active_[i]; }

  // To be called before partners are looked for: the row sums over m - 2.
  void Scale() {
    for (std::size_t i = 0; i < Count(); ++i)
      scaled_[i] = sum_[i] / static_cast<double>(Count() - 2);
  }

  // The best partner of i among the active nodes.
  std::size_t Partner(std::size_t i) const {
    const double* row = Row(i);
    std::size_t partner = 0;
    for (std::size_t j = 1; j < Count(); ++j) {
      if (row[j] - scaled_[j] < row[partner] - scaled_[partner]) partner = j;
    }
    return partner;
  }

  std::pair<std::size_t, std::size_t> BestPair() const {
    std::size_t best = 1;
    double least = kInfinity;
    for (std::size_t i = 1; i < Count(); ++i) {
      const double value = Least(i) - scaled_[i];
      if (value < least) {
        least = value;
        best = i;
      }
    }
    return {Partner(best), best};
  }

  // Replaces i < j by their new neighbour: it takes the place of i, and the last active node that
  // of j.
  void Join(std::size_t i, std::size_t j, int id) {
    const double apart = Row(i)[j];
    sum_[i] = 0;
    for (std::size_t k = 0; k < Count(); ++k) {
      if (k == i || k == j) continue;
      const double near = (Row(i)[k] + Row(j)[k] - apart) * 0.5;
      sum_[k] += near - Row(i)[k] - Row(j)[k];
      sum_[i] += near;
      Row(i)[k] = Row(k)[i] = near;
    }
    active_[i] = id;
    const std::size_t last = Count() - 1;
    for (std::size_t k = 0; k < last; ++k) {
      if (k != j) Row(j)[k] = Row(k)[j] = Row(last)[k];
    }
    Row(j)[j] = kInfinity;
    active_[j] = active_[last];
    sum_[j] = sum_[last];
    active_.pop_back();
  }

 private:
  double* Row(std::size_t i) { return &distance_[i * stride_]; }
  const double* Row(std::size_t i) const { return &distance_[i * stride_]; }

  // The least value of row i left of the diagonal, in four strands that do not wait for each other.
  double Least(std::size_t i) const {
    const double* row = Row(i);
    double least[4];
    for (double& strand : least) strand = kInfinity;
    std::size_t j = 0;
    for (; j + 4 <= i; j += 4) {
      for (std::size_t s = 0; s < 4; ++s) {
        const double value = row[j + s] - scaled_[j + s];
        least[s] = value < least[s] ? value : least[s];
      }
    }
    for (; j < i; ++j) least[0] = std::min(least[0], row[j] - scaled_[j]);
    return std::min(std::min(least[0], least[1]), std::min(least[2], least[3]));
  }

  std::size_t stride_;
  std::vector<int> active_;       // node ids
  std::vector<double> distance_;  // square, symmetric, over the active nodes
  std::vector<double> sum_;       // row sums
  std::vector<double> scaled_;    // row sums over m - 2
};

}  // namespace

Topology JoinNeighbours(int n, const double* const* distances, double greedy,
                        std::mt19937_64* generator) {
  Agglomeration nodes(n, distances);
  Topology tree(n);
  const auto link = [&tree](int child, int node, std::size_t place) {
    tree.adjacent[Index(node - tree.taxa)][place] = child;
    tree.Replace(child, -1, node);
  };
  std::uniform_real_distribution<double> unit(0, 1);
  for (int id = n; id < 2 * n - 3; ++id) {
    nodes.Scale();
    std::pair<std::size_t, std::size_t> pair;
    if (generator == nullptr || unit(*generator) < greedy) {
      pair = nodes.BestPair();
    } else {
      pair.second = (*generator)() % nodes.Count();
      pair.first = nodes.Partner(pair.second);
    }
    if (pair.first > pair.second) std::swap(pair.first, pair.second);
    link(nodes.Id(pair.first), id, 0);
    link(nodes.Id(pair.second), id, 1);
    nodes.Join(pair.first, pair.second, id);
  }
  for (std::size_t i = 0; i < 3; ++i) link(nodes.Id(i), 2 * n - 3, i);
  for (const int near : tree.At(2 * n - 3)) {
    if (!tree.IsLeaf(near)) tree.root = {2 * n - 3, near};
  }
  return tree;
}

}  // namespace zorvek::wide
