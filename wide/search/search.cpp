// Descent by NNI and SPR moves from joined starting trees, then iterations, which are tries to settle some
// subtrees elsewhere.
//
// Tries come in runs, in which the tree is annealed, each with a generator seeded by its own number, and
// runs in batches that all begin at the same tree. In some batches each run searches the whole tree, and the
// best result, the earliest of equal ones, is the next tree. For the others it is cut into sectors, other
// ones each time, one to a run, and those that became shorter are put back together. A small tree is always
// searched as a whole, a large one never. So the outcome does not depend on how many threads share the work.
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
#include "wide/data/folded_matrix.h"
#include "wide/data/topology.h"
#include "wide/search/descent.h"
#include "wide/search/identical.h"
#include "wide/search/neighbour_joining.h"
#include "wide/search/sectors.h"
#include "zorvek/distances.h"
#include "zorvek/error.h"

namespace zorvek::wide {

namespace {

constexpr int kBatch = 8;         // runs on the whole of a tree
constexpr long kTries = 300;      // of a run
constexpr long kSettled = 32;     // subtrees in a try
constexpr int kWhole = 128;       // taxa of a tree that is searched as a whole, at least sometimes
constexpr int kSoonJoined = 512;  // taxa
constexpr int kMoreStarts = 4;

// The sectors of a tree, and a run in each of them. Under least squares a try costs more the more taxa there
// are, and what sectors find the whole does not.
struct Schedule {
  int taxa;
  long tries;
  int batches;  // of a tree of up to kWhole taxa, to one on the whole
};

Schedule ScheduleOf(Criterion criterion) {
  switch (criterion) {
    case Criterion::kBalanced:
      return {64, kTries, 1};
    case Criterion::kOls:
      return {32, kTries / 2, 4};
  }
  return {};
}

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

// Whether the trees are joined in single precision, which has no numbers of every size.
bool JoinsInSingle(int n, const double* const* distances) {
  if (n < kSinglePrecision) return false;
  const double largest = LargestDistance(n, distances);
  return largest > 0x1p-64 && largest < 0x1p64;
}

// The share of a descent that is done, from that of the present pass over the tree: a pass is reckoned to
// take as long as all after it, which find less and less.
class Passes {
 public:
  double Done(double of_pass) {
    if (of_pass < last_ - 0.5) left_ /= 2;
    last_ = of_pass;
    done_ = std::max(done_, 1 - left_ * (1 - of_pass / 2));
    return done_;
  }

 private:
  double done_ = 0;
  double left_ = 1;  // when the pass began
  double last_ = 0;
};

// The whole search: its clock, its best tree, and the threads.
class Search {
 public:
  // The matrix that holds the distances is null where that may not be changed meanwhile.
  Search(int n, const double* const* distances, DistanceMatrix* matrix,
         const SearchSettings& settings)
      : n_(n),
        distances_(distances),
        matrix_(matrix),
        settings_(settings),
        single_(JoinsInSingle(n, distances)),
        identical_(IdenticalTaxa(n, distances)) {
    std::vector<int> distinct = DistinctTaxa(n, identical_);
    if (settings.criterion != Criterion::kBalanced || distinct.size() < 4 || identical_.empty() ||
        OnlyStarts())
      return;
    taxa_ = static_cast<int>(distinct.size());
    distinct_ = std::move(distinct);
  }

  SearchResult Run() {
    Report(Progress::kStart, 0, 0);
    if (OnlyStarts()) return ShortestStart();
    const int threads = std::max(1, settings_.threads);
    descents_.resize(Index(threads));
    DescendFromStarts();
    Improve();
    return Result();
  }

 private:
  struct Outcome {
    double length = 0, margin = 0;
    std::optional<Topology> topology;
  };

  bool OnlyStarts() const { return settings_.moves == Moves::kNone && settings_.iterations == 0; }

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
  void Adopt(const std::vector<Outcome>& outcomes) {
    for (const Outcome& outcome : outcomes) {
      if (!outcome.topology) continue;
      if (best_ && !(outcome.length < best_length_ - margin_)) continue;
      best_ = outcome.topology;
      best_length_ = outcome.length;
      margin_ = outcome.margin;
    }
  }

  void Place(std::unique_ptr<Descent>& descent, const Topology& topology) const {
    if (descent == nullptr) {
      descent = std::make_unique<Descent>(
          MakeNeighbourhood(settings_.criterion, topology, distances_,
                            Starts() > 1 ? 1 : settings_.threads, distinct_));
    } else {
      descent->Around().Set(topology);
    }
  }

  static Outcome Found(Neighbourhood& tree) {
    return {tree.Length(), tree.Margin(), tree.Current()};
  }

  void Descend(Descent& descent, const Descent::Poll& poll) const {
    if (settings_.moves == Moves::kNone) return;
    if (settings_.moves == Moves::kNni) return descent.ByNni(poll, true);
    descent.ByNni([&poll](double) { return poll(0); }, false);  // soon done
    descent.BySpr(poll);
  }

  // A joined tree of the taxa that are searched.
  Topology Join(std::mt19937_64* generator, bool reports) const {
    Joining joining;
    if (generator != nullptr) {
      joining.greedy = settings_.greedy;
      joining.generator = generator;
    }
    joining.poll = [&](double fraction) {
      if (reports && settings_.on_progress) {
        settings_.on_progress({Progress::kStart, fraction, best_length_, false});
      }
      return Stopped();
    };
    if (reports && Starts() == 1) joining.threads = settings_.threads;
    if (!distinct_.empty()) return JoinDistinct(joining);
    if (!single_) return JoinNeighbours<double>(n_, distances_, joining);
    if (matrix_ == nullptr || !OnlyStarts() || Starts() > 1) {
      return JoinNeighbours<float>(n_, distances_, joining);
    }
    FoldedMatrix folded(*matrix_, settings_.threads);
    return JoinNeighboursInPlace(n_, folded.Rows(), joining);
  }

  Topology JoinDistinct(const Joining& joining) const {
    DistanceMatrix between(taxa_);
    std::vector<double*> rows;
    for (int i = 0; i < taxa_; ++i) {
      rows.push_back(between.Row(i));
      const double* row = distances_[distinct_[Index(i)]];
      for (int j = 0; j < taxa_; ++j) rows.back()[j] = row[distinct_[Index(j)]];
    }
    return JoinNeighboursInPlace(taxa_, rows.data(), joining);
  }

  Topology Start(int number, bool reports) const {
    if (number == 0 && settings_.start != nullptr) {
      Topology given = TopologyOf(*settings_.start);
      return distinct_.empty() ? given : WithoutOthers(distinct_, std::move(given));
    }
    std::mt19937_64 generator = Generator(0, static_cast<std::uint64_t>(number));
    return Join(number > 0 ? &generator : nullptr, reports);
  }

  // Those asked for, and for iterations on a tree that is soon joined some more, since there are optima that
  // no annealing leads to.
  int Starts() const {
    const bool more = settings_.iterations > 0 && taxa_ <= kSoonJoined;
    return std::max(1, settings_.starts) + (more ? kMoreStarts : 0);
  }

  void DescendFromStarts() {
    double least = std::numeric_limits<double>::infinity();  // on the thread that called
    const auto descend = [&](std::unique_ptr<Descent>& descent, int number) {
      if (number > 0 && Stopped()) return Outcome();
      const bool reports = &descent == &descents_[0];  // on the thread that called
      Place(descent, Start(number, reports));
      Passes passes;
      Descend(*descent, [&](double fraction) {
        if (reports) {
          least = std::min(least, descent->Around().Length());
          ReportDescent((number + passes.Done(fraction)) / Starts(), least);
        }
        return Stopped();
      });
      return Found(descent->Around());
    };
    const double before = best_length_;
    Adopt(Share(Starts(), descend));
    Report(Progress::kDescent, 1, before);
  }

  // The shortest of the starting trees as they are, for which no neighbourhood is needed.
  SearchResult ShortestStart() {
    constexpr double kNever = std::numeric_limits<double>::infinity();
    std::vector<SearchResult> found(Index(Starts()), {Tree(), kNever});
    ForEach(Starts(), settings_.threads, [&](int number, int thread) {
      if (number > 0 && Stopped()) return;
      Topology start = Start(number, thread == 0);
      KeepTogether(identical_, start);
      FittedTree fitted = Fit(settings_.criterion, start, distances_);
      ClearWithin(identical_, fitted.tree);
      found[Index(number)] = {std::move(fitted.tree), fitted.length};
    });
    SearchResult& best = *std::min_element(
        found.begin(), found.end(),
        [](const SearchResult& x, const SearchResult& y) { return x.length < y.length; });
    best_length_ = best.length;
    Report(Progress::kDescent, 1, kNever);
    return std::move(best);
  }

  void Improve() {
    Clock::time_point improved = Clock::now();
    if (settings_.iterations > 0) {
      noise_ = GumbelNoise();
      if (taxa_ > kWhole) descents_.resize(1);
      Place(descents_[0], *best_);
    }
    const Schedule schedule = ScheduleOf(settings_.criterion);
    long done = 0;
    for (int batch = 0; done < settings_.iterations && !Stopped(); ++batch) {
      if (settings_.patience > 0 && Seconds(improved) > settings_.patience) return;
      const double before = best_length_;
      const long left = settings_.iterations - done;
      const bool whole =
          taxa_ <= schedule.taxa || (taxa_ <= kWhole && batch % schedule.batches == 0);
      done += whole ? SearchWhole(left) : SearchSectors(left);
      if (best_length_ < before) improved = Clock::now();
      Report(Progress::kIterations,
             static_cast<double>(done) / static_cast<double>(settings_.iterations), before);
    }
  }

  // A batch of runs on the whole tree, with so many tries at most. Returns their number.
  long SearchWhole(long most) {
    const long tries = std::min(most, kBatch * kTries);
    const auto run = [&](std::unique_ptr<Descent>& descent, int number) {
      std::mt19937_64 generator = Generator(1, runs_ + static_cast<std::uint64_t>(number));
      Place(descent, *best_);
      descent->Anneal(std::min(kTries, tries - number * kTries) * kSettled, noise_, generator,
                      [this](double) { return Stopped(); });
      return Found(descent->Around());
    };
    const int count = static_cast<int>((tries + kTries - 1) / kTries);
    Adopt(Share(count, run));
    Place(descents_[0], *best_);
    runs_ += static_cast<std::uint64_t>(count);
    return tries;
  }

  // The same on the sectors of the tree, a run in each, and a descent of the whole after them.
  long SearchSectors(long most) {
    std::mt19937_64 generator = Generator(2, runs_++);
    const Schedule schedule = ScheduleOf(settings_.criterion);
    Descent& descent = *descents_[0];
    const auto poll = [this](double) { return Stopped(); };
    std::vector<Sector> sectors =
        CutIntoSectors(descent.Around().Current(), schedule.taxa, generator);
    const long tries = std::min(most, schedule.tries * static_cast<long>(sectors.size()));
    sectors.resize(Index(static_cast<int>((tries + schedule.tries - 1) / schedule.tries)));
    std::vector<SectorGain> gains(sectors.size());
    ForEach(static_cast<int>(sectors.size()), settings_.threads, [&](int number, int) {
      std::mt19937_64 own = Generator(1, runs_ + static_cast<std::uint64_t>(number));
      const Sector& sector = sectors[Index(number)];
      Descent part(descent.Around().Contracted(sector.topology, sector.subtrees));
      const double before = part.Around().Length();
      part.Anneal(std::min(schedule.tries, tries - number * schedule.tries) * kSettled, noise_, own,
                  poll);
      gains[Index(number)] = {number, before - part.Around().Length(), part.Around().Current()};
    });
    runs_ += sectors.size();
    PutTogether(sectors, std::move(gains), descent.Around());
    descent.BySpr(poll);
    Adopt({Found(descent.Around())});
    return tries;
  }

  SearchResult Result() {
    Topology found = *best_;
    if (!distinct_.empty()) {
      found = WithGroups(identical_, distinct_, n_, found);
    } else if (Stopped()) {  // places in a tree without a search are dear to compare
      KeepTogether(identical_, found);
    } else if (!identical_.empty()) {
      Place(descents_[0], found);
      KeepTogether(identical_, descents_[0]->Around());
      found = descents_[0]->Around().Current();
    }
    FittedTree fitted = Fit(settings_.criterion, found, distances_);
    ClearWithin(identical_, fitted.tree);
    return {std::move(fitted.tree), fitted.length};
  }

  int n_;
  const double* const* distances_;
  DistanceMatrix* matrix_;
  const SearchSettings& settings_;
  const bool single_;
  Groups identical_;
  int taxa_ = n_;              // those that are searched
  std::vector<int> distinct_;  // of a balanced search of one taxon of each group, else empty
  const Clock::time_point began_ = Clock::now();
  std::vector<std::unique_ptr<Descent>> descents_;  // one a thread, made where it is first used
  std::optional<Topology> best_;
  double best_length_ = std::numeric_limits<double>::infinity();
  double margin_ = 0;       // of the best tree
  std::uint64_t runs_ = 0;  // so far
  std::vector<double> noise_;
};

}  // namespace

SearchResult FindShortestTree(int n, const double* const* distances,
                              const SearchSettings& settings) {
  CheckFinite(n, distances);
  return Search(n, distances, nullptr, settings).Run();
}

SearchResult FindShortestTree(DistanceMatrix& distances, const SearchSettings& settings) {
  CheckFinite(distances.Size(), distances.Rows());
  return Search(distances.Size(), distances.Rows(), &distances, settings).Run();
}

}  // namespace zorvek::wide
