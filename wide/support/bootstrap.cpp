#include <mutex>
#include <optional>
#include <random>

#include "core/index.h"
#include "core/parallel.h"
#include "wide/distance/pair_distances.h"
#include "wide/support/support_count.h"
#include "zorvek/search.h"
#include "zorvek/support.h"

namespace zorvek::wide {

namespace {

constexpr int kMostDraws = 100;  // of one replicate

// In increasing order, so that they are read from the alignment in the order of its cells.
SiteList DrawSites(std::size_t sites, std::mt19937_64& generator) {
  std::vector<int> times(sites);
  for (std::size_t k = 0; k < sites; ++k) ++times[generator() % sites];
  SiteList drawn;
  drawn.reserve(sites);
  for (std::size_t site = 0; site < sites; ++site) {
    drawn.insert(drawn.end(), static_cast<std::size_t>(times[site]), site);
  }
  return drawn;
}

// The search that a replicate is given: one descent on one thread, all else as for the tree.
SearchSettings OneDescent(SearchSettings search) {
  search.start = nullptr;
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
  Replicates(const Alignment& alignment, const ModelSettings& model,
             const BootstrapSettings& settings, const Tree& tree)
      : alignment_(alignment),
        model_(model),
        settings_(settings),
        count_(tree, settings.measure),
        trees_(settings.keep_trees ? Index(settings.replicates) : 0) {}

  void Run(int index) {
    std::seed_seq seed{
        static_cast<std::uint32_t>(settings_.search.seed),
        static_cast<std::uint32_t>(settings_.search.seed >> 32),
        static_cast<std::uint32_t>(settings_.first) + static_cast<std::uint32_t>(index)};
    std::mt19937_64 generator(seed);
    for (int draw = 0; draw < kMostDraws && !Stopped(); ++draw) {
      DistanceMatrix distances =
          PairDistances(alignment_, DrawSites(alignment_.Sites(), generator), model_, 1).matrix;
      if (distances.Undefined().empty()) return Count(index, distances, draw);
    }
    if (Stopped()) return;
    const std::lock_guard<std::mutex> lock(mutex_);
    result_.redrawn += kMostDraws - 1;
    ++result_.given_up;
  }

  BootstrapResult Finish(Tree& tree) {
    count_.SetSupports(tree);
    for (std::optional<Tree>& kept : trees_) {
      if (kept) result_.trees.push_back(std::move(*kept));
    }
    return std::move(result_);
  }

  bool Stopped() const { return settings_.search.stop != nullptr && *settings_.search.stop; }

 private:
  void Count(int index, DistanceMatrix& distances, int redrawn) {
    SearchResult found = FindShortestTree(distances, OneDescent(settings_.search));
    if (Stopped()) return;  // perhaps no descent was made
    const std::vector<int> misses = count_.Misses(found.tree);
    const std::lock_guard<std::mutex> lock(mutex_);
    count_.Add(misses);
    if (settings_.keep_trees) trees_[Index(index)] = std::move(found.tree);
    result_.redrawn += redrawn;
    ++result_.done;
    if (settings_.on_done) settings_.on_done(result_.done);
  }

  const Alignment& alignment_;
  const ModelSettings& model_;
  const BootstrapSettings& settings_;
  std::mutex mutex_;
  SupportCount count_;
  std::vector<std::optional<Tree>> trees_;  // by replicate, if they are to be kept
  BootstrapResult result_;
};

}  // namespace

BootstrapResult Bootstrap(const Alignment& alignment, const ModelSettings& model,
                          const BootstrapSettings& settings, Tree& tree) {
  Replicates replicates(alignment, model, settings, tree);
  ForEach(settings.replicates, settings.search.threads, [&](int index, int) {
    if (!replicates.Stopped()) replicates.Run(index);
  });
  return replicates.Finish(tree);
}

}  // namespace zorvek::wide
