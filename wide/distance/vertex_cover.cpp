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
      : neighbours_(static_cast<std::size_t>(n)),
        covered_(neighbours_.size()),
        degree_(neighbours_.size()),
        best_(neighbours_.size(), true),
        best_size_(neighbours_.size()) {
    for (const auto& [a, b] : edges) {
      neighbours_[static_cast<std::size_t>(a)].push_back(static_cast<std::size_t>(b));
      neighbours_[static_cast<std::size_t>(b)].push_back(static_cast<std::size_t>(a));
    }
    for (std::size_t v = 0; v < degree_.size(); ++v) degree_[v] = neighbours_[v].size();
  }

  VertexCover Find() {
    while (Descend()) continue;
    work_ = 0;
    bool more = true;
    while (more && work_ <= kMostWork) {
      const bool promising = size_ + Matching() < best_size_;
      more = (promising && Descend()) || TakeOther();
    }
    VertexCover cover;
    for (std::size_t v = 0; v < best_.size(); ++v) {
      if (best_[v]) cover.vertices.push_back(static_cast<int>(v));
    }
    cover.smallest = !more;
    return cover;
  }

 private:
  using Vertices = std::vector<std::size_t>;

  // What is in the cover by a choice, and what would be by the other side of it; that may be none.
  struct Choice {
    Vertices taken, other;
  };

  // Makes the next choice. Returns false when all edges are covered; this is then the best cover.
  bool Descend() {
    work_ += degree_.size();
    const auto top = std::max_element(degree_.begin(), degree_.end());
    if (top == degree_.end() || *top == 0) {
      best_ = covered_;
      best_size_ = size_;
      return false;
    }
    const auto v = static_cast<std::size_t>(top - degree_.begin());
    // Of a lone edge either end will do.
    Take({{v}, *top > 1 ? Open(v) : Vertices()});
    return true;
  }

  // Goes back to the last choice that has another side worth a look, and takes that.
  bool TakeOther() {
    while (!choices_.empty()) {
      Choice last = std::move(choices_.back());
      choices_.pop_back();
      for (const std::size_t v : last.taken) Uncover(v);
      if (last.other.empty() || size_ + last.other.size() >= best_size_) continue;
      Take({std::move(last.other), {}});
      return true;
    }
    return false;
  }

  void Take(Choice choice) {
    for (const std::size_t v : choice.taken) Cover(v);
    choices_.push_back(std::move(choice));
  }

  void Cover(std::size_t v) {
    covered_[v] = true;
    ++size_;
    for (const std::size_t w : Open(v)) --degree_[w];
    degree_[v] = 0;
  }

  void Uncover(std::size_t v) {
    covered_[v] = false;
    --size_;
    const Vertices open = Open(v);
    for (const std::size_t w : open) ++degree_[w];
    degree_[v] = open.size();
  }

  // The neighbours that are not in the cover.
  Vertices Open(std::size_t v) {
    work_ += neighbours_[v].size();
    Vertices open;
    for (const std::size_t w : neighbours_[v]) {
      if (!covered_[w]) open.push_back(w);
    }
    return open;
  }

  // Edges without a common end, found greedily: each needs a vertex of its own.
  std::size_t Matching() {
    std::vector<bool> used = covered_;
    std::size_t count = 0;
    for (std::size_t v = 0; v < used.size(); ++v) {
      if (used[v]) continue;
      for (const std::size_t w : neighbours_[v]) {
        ++work_;
        if (used[w]) continue;
        used[v] = used[w] = true;
        ++count;
        break;
      }
    }
    return count;
  }

  std::vector<Vertices> neighbours_;
  std::vector<bool> covered_;
  std::size_t size_ = 0;             // of the cover
  std::vector<std::size_t> degree_;  // edges of each vertex that are not covered
  std::vector<Choice> choices_;      // that led here
  std::vector<bool> best_;
  std::size_t best_size_;
  std::size_t work_ = 0;
};

}  // namespace

VertexCover FindVertexCover(int n, const std::vector<std::pair<int, int>>& edges) {
  return CoverSearch(n, edges).Find();
}

}  // namespace zorvek::wide
