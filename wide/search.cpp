// Descent by regrafting from joined starting trees, then rounds of local perturbation and descent.
//
// Rounds come in batches of fixed size that all begin at the best tree so far, each with a
// generator seeded by its own number; the best result of a batch, the earliest of equal ones, is
// the next best tree. So the outcome does not depend on how many threads share the work.
#include "wide/search.h"

#include <algorithm>
#include <chrono>
#include <deque>
#include <limits>
#include <memory>
#include <optional>
#include <random>

#include "wide/neighbour_joining.h"
#include "wide/parallel.h"
#include "wide/regrafter.h"

namespace zorvek::wide {

namespace {

constexpr double kShorter = 1e-12;   // a tree is shorter when it is by this share of its length
constexpr int kBatch = 8;            // rounds that begin at the same tree
constexpr std::size_t kJudged = 16;  // regrafts of one subtree that are judged, by decreasing gain

using Clock = std::chrono::steady_clock;

// Descends from trees on one thread.
class Climber {
 public:
  Climber(const Links& links, const double* const* distances) : tree_(links, distances) {
    queued_.resize(static_cast<std::size_t>(2 * links.taxa - 2));
  }

  Regrafter& Tree() { return tree_; }

  // Regrafts until no subtree at any node has a better place, or poll(nodes in the queue) is true.
  template <typename Poll>
  void DescendEverywhere(const Poll& poll) {
    const int taxa = tree_.Tree().taxa;
    for (int node = taxa; node < 2 * taxa - 2; ++node) Enqueue(node);
    Descend(poll);
  }

  // Makes a few random regrafts around a random node and descends from there.
  template <typename Poll>
  void PerturbAndDescend(std::mt19937_64& generator, const Poll& poll) {
    const int taxa = tree_.Tree().taxa;
    int centre = taxa + static_cast<int>(generator() % static_cast<unsigned>(taxa - 2));
    const int moves = 3 + static_cast<int>(generator() % 4);
    for (int move = 0; move < moves; ++move) {
      centre = Wander(centre, generator);
      PerturbAt(centre, generator);
    }
    Descend(poll);
  }

 private:
  void Enqueue(int node) {
    if (tree_.Tree().IsLeaf(node) || queued_[static_cast<std::size_t>(node)]) return;
    queued_[static_cast<std::size_t>(node)] = true;
    queue_.push_back(node);
  }

  template <typename Poll>
  void Descend(const Poll& poll) {
    while (!queue_.empty()) {
      const int node = queue_.front();
      queue_.pop_front();
      queued_[static_cast<std::size_t>(node)] = false;
      if (!poll(queue_.size()) && ImproveAt(node)) Enqueue(node);
    }
  }

  bool ImproveAt(int node) {
    const std::array<int, 3> subtrees = tree_.Tree().At(node);
    return std::any_of(subtrees.begin(), subtrees.end(),
                       [&](int subtree) { return Improve(node, subtree); });
  }

  // Judges the most promising regrafts of a subtree by the length they give, and makes the best one if
  // that is shorter. One whose raw gain is a loss of more than all negative lengths together cannot be.
  bool Improve(int node, int subtree) {
    const double before = tree_.Length();
    const double margin = before * kShorter;
    found_.clear();
    tree_.Regrafts(node, subtree, margin - tree_.Negative(), found_);
    const std::size_t judged = std::min(kJudged, found_.size());
    std::partial_sort(found_.begin(), found_.begin() + static_cast<std::ptrdiff_t>(judged),
                      found_.end(),
                      [](const Regraft& x, const Regraft& y) { return x.gain > y.gain; });
    const Regraft* best = nullptr;
    double shortest = before - margin;
    for (std::size_t i = 0; i < judged; ++i) {
      const double length = tree_.LengthAfter(found_[i]);
      if (length < shortest) {
        shortest = length;
        best = &found_[i];
      }
    }
    if (best == nullptr) return false;
    Make(*best);
    return true;
  }

  // Makes a regraft and queues the nodes whose subtrees may have found a better place by it: those at
  // the place it leaves and at the one it takes.
  void Make(const Regraft& regraft) {
    const auto [a, b] = tree_.Tree().Others(regraft.node, regraft.subtree);
    tree_.Apply(regraft);
    for (const int node : {regraft.node, regraft.subtree, a, b, regraft.from, regraft.to}) {
      Enqueue(node);
    }
  }

  // A node a few random steps away.
  int Wander(int node, std::mt19937_64& generator) {
    const Links& links = tree_.Tree();
    for (int step = 0; step < 3; ++step) {
      const int near = links.At(node)[generator() % 3];
      if (!links.IsLeaf(near)) node = near;
    }
    return node;
  }

  // Regrafts a random subtree at the node to a random place some steps away.
  void PerturbAt(int node, std::mt19937_64& generator) {
    const Links& links = tree_.Tree();
    Regraft regraft;
    regraft.node = node;
    regraft.subtree = links.At(node)[generator() % 3];
    const auto [a, b] = links.Others(node, regraft.subtree);
    int behind = node;
    int at = generator() % 2 == 0 ? a : b;
    if (links.IsLeaf(at)) at = at == a ? b : a;
    for (int steps = 1 + static_cast<int>(generator() % 8); steps > 0 && !links.IsLeaf(at);
         --steps) {
      const auto [f, g] = links.Others(at, behind);
      behind = at;
      at = generator() % 2 == 0 ? f : g;
    }
    if (behind == node) return;  // both neighbours are leaves: nowhere to go
    regraft.from = behind;
    regraft.to = at;
    Make(regraft);
  }

  Regrafter tree_;
  std::deque<int> queue_;
  std::vector<char> queued_;
  std::vector<Regraft> found_;
};

// The whole search: its clock, its best tree, and the threads.
class Search {
 public:
  Search(int n, const double* const* distances, const SearchSettings& settings)
      : n_(n), distances_(distances), settings_(settings) {}

  wide::Tree Run() {
    Report(Progress::kStart, 0, 0);
    const int threads = std::max(1, settings_.threads);
    climbers_.resize(static_cast<std::size_t>(threads));
    DescendFromStarts();
    Improve();
    climbers_[0]->Tree().Set(*best_);
    return climbers_[0]->Tree().Result();
  }

 private:
  struct Outcome {
    double length = 0;
    std::optional<Links> links;
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

  void ReportDescent(std::size_t queued, double length) {
    if (!settings_.on_progress) return;
    const double left = static_cast<double>(queued) / (n_ - 2);
    settings_.on_progress({Progress::kDescent, std::max(1 - left, 0.0), length, false});
  }

  // Runs task(climber of the thread, number) for numbers 0..count-1 on all threads and gives the
  // outcomes in the order of their numbers.
  template <typename Task>
  std::vector<Outcome> Share(int count, const Task& task) {
    std::vector<Outcome> outcomes(static_cast<std::size_t>(count));
    ForEach(count, static_cast<int>(climbers_.size()), [&](int number, int thread) {
      outcomes[static_cast<std::size_t>(number)] =
          task(climbers_[static_cast<std::size_t>(thread)], number);
    });
    return outcomes;
  }

  // Takes the shortest of the outcomes, the earliest of equal ones, if it is strictly shorter.
  bool Adopt(const std::vector<Outcome>& outcomes) {
    bool improved = false;
    for (const Outcome& outcome : outcomes) {
      if (!outcome.links) continue;
      if (best_ && !(outcome.length < best_length_ * (1 - kShorter))) continue;
      best_ = outcome.links;
      best_length_ = outcome.length;
      improved = true;
    }
    return improved;
  }

  void Place(std::unique_ptr<Climber>& climber, const Links& links) const {
    if (climber == nullptr) {
      climber = std::make_unique<Climber>(links, distances_);
    } else {
      climber->Tree().Set(links);
    }
  }

  void DescendFromStarts() {
    const auto descend = [this](std::unique_ptr<Climber>& climber, int number) {
      std::mt19937_64 generator = Generator(0, static_cast<std::uint64_t>(number));
      Place(climber, number == 0 ? JoinNeighbours(n_, distances_)
                                 : JoinNeighbours(n_, distances_, settings_.alpha, &generator));
      const bool reports = &climber == &climbers_[0];  // on the thread that called
      climber->DescendEverywhere([&](std::size_t queued) {
        if (reports) ReportDescent(queued, climber->Tree().Length());
        return Stopped();
      });
      return Outcome{climber->Tree().Length(), climber->Tree().Tree()};
    };
    const double before = best_length_;
    Adopt(Share(std::max(1, settings_.starts), descend));
    Report(Progress::kDescent, 1, before);
  }

  void Improve() {
    Clock::time_point improved = Clock::now();
    for (long done = 0; done < settings_.rounds && !Stopped(); done += kBatch) {
      if (settings_.patience > 0 && Seconds(improved) > settings_.patience) return;
      const int count = static_cast<int>(std::min<long>(kBatch, settings_.rounds - done));
      const auto round = [this, done](std::unique_ptr<Climber>& climber, int number) {
        std::mt19937_64 generator = Generator(1, static_cast<std::uint64_t>(done + number));
        Place(climber, *best_);
        climber->PerturbAndDescend(generator, [this](std::size_t) { return Stopped(); });
        const double length = climber->Tree().Length();
        if (!(length < best_length_ * (1 - kShorter))) return Outcome{};
        return Outcome{length, climber->Tree().Tree()};
      };
      const double before = best_length_;
      if (Adopt(Share(count, round))) improved = Clock::now();
      Report(Progress::kRounds,
             static_cast<double>(done + count) / static_cast<double>(settings_.rounds), before);
    }
  }

  int n_;
  const double* const* distances_;
  const SearchSettings& settings_;
  const Clock::time_point began_ = Clock::now();
  std::vector<std::unique_ptr<Climber>> climbers_;  // one a thread, made where it is first used
  std::optional<Links> best_;
  double best_length_ = std::numeric_limits<double>::infinity();
};

}  // namespace

Tree FindShortestTree(int n, const double* const* distances, const SearchSettings& settings) {
  return Search(n, distances, settings).Run();
}

}  // namespace zorvek::wide
