// Branch and bound on a vertex of the highest degree: either it is in the cover, or all its
// neighbours are. The first branch taken all the way down is the greedy cover.
#include "wide/distance/vertex_cover.h"

#include <algorithm>
#include <cstddef>

namespace zorvek::wide {

namespace {

// Edges looked at before the best cover so far has to do: a second or so.
constexpr std::size_t kMostWork = 300000000;

class CoverSearch {
 public:
  CoverSearch(int n, const std::vector<std::pair<int, int>>& edges)
      : neighbours_(static_cast<std::size_t>(n)), covered_(neighbours_.size()) {
    for (const auto& [a, b] : edges) {
      neighbours_[static_cast<std::size_t>(a)].push_back(static_cast<std::size_t>(b));
      neighbours_[static_cast<std::size_t>(b)].push_back(static_cast<std::size_t>(a));
    }
    best_.assign(neighbours_.size(), true);
    best_size_ = neighbours_.size();
    step_work_ = neighbours_.size() + 4 * edges.size();
  }

  VertexCover Find() {
    Branch();
    VertexCover cover;
    for (std::size_t v = 0; v < best_.size(); ++v) {
      if (best_[v]) cover.vertices.push_back(static_cast<int>(v));
    }
    cover.smallest = work_ <= kMostWork;
    return cover;
  }

 private:
  // The neighbours over edges that are not covered yet; none of a vertex that is in the cover.
  std::vector<std::size_t> Open(std::size_t v) const {
    std::vector<std::size_t> open;
    if (covered_[v]) return open;
    for (const std::size_t w : neighbours_[v]) {
      if (!covered_[w]) open.push_back(w);
    }
    return open;
  }

  // Edges without a common end, found greedily: each needs a vertex of its own.
  std::size_t Matching() const {
    std::vector<bool> used = covered_;
    std::size_t count = 0;
    for (std::size_t v = 0; v < used.size(); ++v) {
      if (used[v]) continue;
      for (const std::size_t w : neighbours_[v]) {
        if (used[w]) continue;
        used[v] = used[w] = true;
        ++count;
        break;
      }
    }
    return count;
  }

  void Branch() {
    if (size_ + Matching() >= best_size_) return;
    const bool first_descent = best_size_ == neighbours_.size();
    if (!first_descent && work_ > kMostWork) return;
    work_ += step_work_;
    std::size_t top = 0;
    std::vector<std::size_t> open;
    for (std::size_t v = 0; v < neighbours_.size(); ++v) {
      std::vector<std::size_t> candidate = Open(v);
      if (candidate.size() <= open.size()) continue;
      top = v;
      open = std::move(candidate);
    }
    if (open.empty()) {
      best_ = covered_;
      best_size_ = size_;
      return;
    }
    Try({top});
    // Of a lone edge either end will do.
    if (open.size() > 1) Try(open);
  }

  void Try(const std::vector<std::size_t>& chosen) {
    for (const std::size_t v : chosen) covered_[v] = true;
    size_ += chosen.size();
    Branch();
    size_ -= chosen.size();
    for (const std::size_t v : chosen) covered_[v] = false;
  }

  std::vector<std::vector<std::size_t>> neighbours_;
  std::vector<bool> covered_;
  std::size_t size_ = 0;
  std::vector<bool> best_;
  std::size_t best_size_;
  std::size_t work_ = 0;
  std::size_t step_work_;
};

}  // namespace

VertexCover FindVertexCover(int n, const std::vector<std::pair<int, int>>& edges) {
  return CoverSearch(n, edges).Find();
}

}  // namespace zorvek::wide
