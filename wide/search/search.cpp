// Descent by NNI and SPR moves from joined starting trees, then iterations: local perturbation and
// descent.
//
// Iterations come in batches of fixed size that all begin at the best tree so far, each with a
// generator seeded by its own number; the best result of a batch, the earliest of equal ones, is
// the next best tree. So the outcome does not depend on how many threads share the work.
#include "zorvek/search.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <memory>
#include <optional>
#include <random>
#include <string>

#include "core/index.h"
#include "core/parallel.h"
#include "wide/criterion/criterion.h"
#include "wide/criterion/fitted_tree.h"
#include "wide/data/topology.h"
#include "wide/search/descent.h"
#include "wide/search/identical.h"
#include "wide/search/neighbour_joining.h"
#include "zorvek/error.h"

namespace zorvek::wide {

namespace {

constexpr int kBatch = 8;  // iterations that begin at the same tree

using Clock = std::chrono::steady_clock;

void CheckFinite(int n, const double* const* distances) {
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < i; ++j) {
      if (std::isfinite(distances[i][j])) continue;
      throw Error("the distance of taxa " + std::to_string(j + 1) + " and " +
                  std::to_string(i + 1) + " is no finite number; leave one of them out");
    }
  }
}

// The whole search: its clock, its best tree, and the threads.
class Search {
 public:
  Search(int n, const double* const* distances, const SearchSettings& settings)
      : n_(n), distances_(distances), settings_(settings) {}

  SearchResult Run() {
    Report(Progress::kStart, 0, 0);
    const int threads = std::max(1, settings_.threads);
    descents_.resize(Index(threads));
    DescendFromStarts();
    Improve();
    Place(descents_[0], *best_);  // perhaps the other threads have done all the work
    return Result(descents_[0]->Around());
  }

 private:
  struct Outcome {
    double length = 0, margin = 0;
    std::optional<Topology> topology;
  };

  std::mt19937_64 Generator(std::uint64_t stream, std::uint64_t number) const {
    std::seed_seq seed{settings_.seed, settings_.seed >> 32, stream, number, number >> 32};
    return std::mt19937_64(seed);
  }

  bool Stopped() const {
    if (settings_.stop != nullptr && settings_.stop->load(std::memory_order_relaxed)) return true;
    return settings_.seconds > 0 && Seconds(began_) > settings_.seconds;
  }

  static double Seconds(Clock::time_point since) {
    return std::chrono::duration<double>(Clock::now() - since).count();
  }

  void Report(Progress::Phase phase, double fraction, double before) {
    if (settings_.on_progress) {
      settings_.on_progress({phase, fraction, best_length_, best_length_ < before});
    }
  }

  void ReportDescent(double fraction, double length) {
    if (settings_.on_progress) settings_.on_progress({Progress::kDescent, fraction, length, false});
  }

  // Runs task(descent of the thread, number) for numbers 0..count-1 on all threads and gives the
  // outcomes in the order of their numbers.
  template <typename Task>
  std::vector<Outcome> Share(int count, const Task& task) {
    std::vector<Outcome> outcomes(Index(count));
    ForEach(count, static_cast<int>(descents_.size()), [&](int number, int thread) {
      outcomes[Index(number)] = task(descents_[Index(thread)], number);
    });
    return outcomes;
  }

  // Takes the shortest of the outcomes, the earliest of equal ones, if it is strictly shorter.
  bool Adopt(const std::vector<Outcome>& outcomes) {
    bool improved = false;
    for (const Outcome& outcome : outcomes) {
      if (!outcome.topology) continue;
      if (best_ && !(outcome.length < best_length_ - margin_)) continue;
      best_ = outcome.topology;
      best_length_ = outcome.length;
      margin_ = outcome.margin;
      improved = true;
    }
    return improved;
  }

  void Place(std::unique_ptr<Descent>& descent, const Topology& topology) const {
    if (descent == nullptr) {
      descent =
          std::make_unique<Descent>(MakeNeighbourhood(settings_.criterion, topology, distances_));
    } else {
      descent->Around().Set(topology);
    }
  }

  static Outcome Found(Neighbourhood& tree) {
    return {tree.Length(), tree.Margin(), tree.Current()};
  }

  void Descend(Descent& descent, const Descent::Poll& poll) const {
    if (settings_.moves == Moves::kNone) return;
    descent.ByNni(poll);
    if (settings_.moves == Moves::kSpr) descent.BySpr(poll);
  }

  void DescendFromStarts() {
    const auto descend = [this](std::unique_ptr<Descent>& descent, int number) {
      std::mt19937_64 generator = Generator(0, static_cast<std::uint64_t>(number));
      Place(descent, number > 0 ? JoinNeighbours(n_, distances_, settings_.greedy, &generator)
                     : settings_.start != nullptr ? TopologyOf(*settings_.start)
                                                  : JoinNeighbours(n_, distances_));
      const bool reports = &descent == &descents_[0];  // on the thread that called
      Descend(*descent, [&](double fraction) {
        if (reports) ReportDescent(fraction, descent->Around().Length());
        return Stopped();
      });
      return Found(descent->Around());
    };
    const double before = best_length_;
    Adopt(Share(std::max(1, settings_.starts), descend));
    Report(Progress::kDescent, 1, before);
  }

  void Improve() {
    Clock::time_point improved = Clock::now();
    for (long done = 0; done < settings_.iterations && !Stopped(); done += kBatch) {
      if (settings_.patience > 0 && Seconds(improved) > settings_.patience) return;
      const int count = static_cast<int>(std::min<long>(kBatch, settings_.iterations - done));
      const auto iterate = [this, done](std::unique_ptr<Descent>& descent, int number) {
        std::mt19937_64 generator = Generator(1, static_cast<std::uint64_t>(done + number));
        Place(descent, *best_);
        descent->Perturbed(generator, [this](double) { return Stopped(); });
        if (!(descent->Around().Length() < best_length_ - margin_)) return Outcome{};
        return Found(descent->Around());
      };
      const double before = best_length_;
      if (Adopt(Share(count, iterate))) improved = Clock::now();
      Report(Progress::kIterations,
             static_cast<double>(done + count) / static_cast<double>(settings_.iterations), before);
    }
  }

  SearchResult Result(Neighbourhood& found) const {
    const Groups identical = IdenticalTaxa(n_, distances_);
    KeepTogether(identical, found);
    FittedTree fitted = Fitted(found, distances_);
    ClearWithin(identical, fitted.tree);
    return {std::move(fitted.tree), fitted.length};
  }

  int n_;
  const double* const* distances_;
  const SearchSettings& settings_;
  const Clock::time_point began_ = Clock::now();
  std::vector<std::unique_ptr<Descent>> descents_;  // one a thread, made where it is first used
  std::optional<Topology> best_;
  double best_length_ = std::numeric_limits<double>::infinity();
  double margin_ = 0;  // of the best tree
};

}  // namespace

SearchResult FindShortestTree(int n, const double* const* distances,
                              const SearchSettings& settings) {
  CheckFinite(n, distances);
  return Search(n, distances, settings).Run();
}

}  // namespace zorvek::wide
