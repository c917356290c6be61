#include "wide/support/bootstrap.h"

#include <mutex>
#include <random>

#include "core/parallel.h"
#include "wide/distance/pair_distances.h"
#include "wide/search/search.h"
#include "wide/support/splits.h"

namespace zorvek::wide {

namespace {

constexpr int kMostDraws = 100;  // of one replicate

std::vector<std::size_t> DrawSites(std::size_t sites, std::mt19937_64& generator) {
  std::vector<std::size_t> drawn(sites);
  for (std::size_t& site : drawn) site = generator() % sites;
  return drawn;
}

// The search that a replicate is given: one descent on one thread, all else as for the tree.
SearchSettings OneDescent(SearchSettings search) {
  search.starts = 1;
  search.iterations = 0;
  search.threads = 1;
  search.seconds = 0;
  search.patience = 0;
  search.on_progress = nullptr;
  return search;
}

class Replicates {
 public:
  Replicates(const Alignment& alignment, const BootstrapSettings& settings, const Tree& tree)
      : alignment_(alignment), settings_(settings), splits_(tree), counts_(tree.nodes.size()) {}

  void Run(int replicate) {
    std::seed_seq seed{static_cast<std::uint32_t>(settings_.search.seed),
                       static_cast<std::uint32_t>(settings_.search.seed >> 32),
                       static_cast<std::uint32_t>(replicate)};
    std::mt19937_64 generator(seed);
    for (int draw = 0; draw < kMostDraws && !Stopped(); ++draw) {
      const DistanceMatrix distances =
          PairDistances(alignment_, DrawSites(alignment_.Sites(), generator), 1);
      if (distances.Undefined().empty()) return Count(distances, draw);
    }
    if (Stopped()) return;
    const std::lock_guard<std::mutex> lock(mutex_);
    result_.redrawn += kMostDraws - 1;
    ++result_.given_up;
  }

  BootstrapResult Finish(Tree& tree) const {
    for (int node = tree.taxa; node < static_cast<int>(counts_.size()); ++node) {
      const auto index = static_cast<std::size_t>(node);
      if (node == tree.root || result_.done == 0) continue;
      tree.nodes[index].support = static_cast<double>(counts_[index]) / result_.done;
    }
    return result_;
  }

  bool Stopped() const { return settings_.search.stop != nullptr && *settings_.search.stop; }

 private:
  void Count(const DistanceMatrix& distances, int redrawn) {
    const SearchResult found =
        FindShortestTree(distances.Size(), distances.Rows(), OneDescent(settings_.search));
    if (Stopped()) return;  // perhaps no descent was made
    const std::vector<int> shared = splits_.Shared(found.tree);
    const std::lock_guard<std::mutex> lock(mutex_);
    for (const int node : shared) ++counts_[static_cast<std::size_t>(node)];
    result_.redrawn += redrawn;
    ++result_.done;
    if (settings_.on_done) settings_.on_done(result_.done);
  }

  const Alignment& alignment_;
  const BootstrapSettings& settings_;
  const SplitIndex splits_;
  std::mutex mutex_;
  std::vector<int> counts_;  // of each node of the tree
  BootstrapResult result_;
};

}  // namespace

BootstrapResult Bootstrap(const Alignment& alignment, const BootstrapSettings& settings,
                          Tree& tree) {
  Replicates replicates(alignment, settings, tree);
  ForEach(settings.replicates, settings.search.threads, [&](int replicate, int) {
    if (!replicates.Stopped()) replicates.Run(replicate);
  });
  return replicates.Finish(tree);
}

}  // namespace zorvek::wide
