#include "wide/program/run.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <ctime>
#include <iostream>
#include <limits>
#include <string>

#include "wide/formats/numbers.h"
#include "wide/program/distances.h"
#include "wide/program/input.h"
#include "wide/program/interruption.h"
#include "wide/program/machine.h"
#include "wide/program/outputs.h"
#include "wide/program/progress_line.h"
#include "wide/program/results.h"
#include "wide/program/size_guard.h"
#include "wide/program/summary.h"
#include "wide/program/trees.h"
#include "zorvek/error.h"
#include "zorvek/search.h"
#include "zorvek/support.h"

namespace zorvek::wide {

namespace {

using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point then) {
  return std::chrono::duration<double>(Clock::now() - then).count();
}

// What the progress line shows of a search: one by the clock is done when its time is over.
void Show(const SearchSettings& settings, const Progress& progress, double seconds,
          ProgressLine& line) {
  const bool by_clock =
      progress.phase == Progress::kIterations && settings.iterations == SearchSettings::kUnlimited;
  const double of_time =
      settings.seconds > 0 ? std::min(seconds / settings.seconds, 1.0) : ProgressLine::kUnknown;
  const bool known = progress.length < std::numeric_limits<double>::infinity();
  line.Show(Name(progress.phase), by_clock ? of_time : progress.fraction,
            known ? ", best length " + Rounded(progress.length, 6) : "",
            settings.seconds > 0 ? std::max(settings.seconds - seconds, 0.0) : 0);
}

// The phases of a run. Each reads what the ones before it left in the results.

// Tells what the run will need, if that is much. Throws Error if the machine has less.
void Forewarn(const Results& results) {
  const Input& input = results.input;
  const double sites = input.alignment ? static_cast<double>(input.alignment->Sites()) : 0;
  const std::string warning = Forewarning(
      results.options, static_cast<double>(input.Labels().size()), sites, MachineMemory());
  if (!warning.empty() && !results.options.quiet) std::cerr << "zorvek-wide: " << warning << "\n";
}

void SearchTree(const std::atomic<bool>& stop, ProgressLine& line, Results& results) {
  const Clock::time_point began = Clock::now();
  SearchSettings settings = results.options.search;
  settings.stop = &stop;
  settings.on_progress = [&](const Progress& progress) {
    const double seconds = SecondsSince(began);
    if (progress.improved) results.improvements.push_back({seconds, progress.length});
    Show(settings, progress, seconds, line);
  };
  const Tree start = StartingTree(results.options, results.input);
  if (start.taxa > 0) settings.start = &start;
  results.found = {FindShortestTree(results.input.distances, settings)};
}

void AddSupport(const std::atomic<bool>& stop, ProgressLine& line, Results& results) {
  BootstrapSettings settings = results.options.bootstrap;
  settings.keep_trees = WantsReplicates(results.options);
  settings.search = results.options.search;
  settings.search.threads =
      NeedsOf(results.options, static_cast<double>(results.input.Labels().size()),
              static_cast<double>(results.input.alignment->Sites()), MachineMemory())
          .replicate_threads;
  settings.search.stop = &stop;
  settings.on_done = [&](int done) {
    line.Show("bootstrap", static_cast<double>(done) / settings.replicates, "");
  };
  results.support =
      Bootstrap(*results.input.alignment, results.options.model, settings, results.found[0].tree);
}

void AddGivenSupport(Results& results) {
  for (SearchResult& found : results.found) {
    SetSupports(results.support.trees, results.options.bootstrap.measure, found.tree);
  }
}

// The phases between distances and roots. Here alone the taxa stand in the order for the search.
void FindTrees(const Interruption& interruption, Results& results) {
  const std::vector<int> order = SearchOrder(results.options, results.input);
  Reorder(order, results.input);
  {
    ProgressLine line(!results.options.quiet);
    results.support.trees = TreesForSupport(results.options, results.input);
    if (results.options.evaluate.empty()) {
      SearchTree(interruption.Stop(), line, results);
    } else {
      EvaluateTrees(results);
    }
    if (results.options.bootstrap.replicates > 0) AddSupport(interruption.Stop(), line, results);
    if (!results.options.support_from.empty()) AddGivenSupport(results);
  }
  Reorder(Inverse(order), results.input);
  for (SearchResult& found : results.found) found.tree = Renumbered(found.tree, order);
  for (Tree& tree : results.support.trees) tree = Renumbered(tree, order);
}

// Whoever reads the summary may have left; a disk that is full is a fault.
void Tell(const std::string& summary, std::ostream& stream) {
  errno = 0;
  stream << summary << std::flush;
  if (stream || errno == EPIPE) return;
  throw Error(std::string("the summary cannot be written: ") + std::strerror(errno) +
              "; the results are");
}

}  // namespace

void Run(const Options& options) {
  const Clock::time_point began = Clock::now();
  Outputs outputs;
  Interruption interruption([&] { outputs.Abandon(); });
  Results results{options, std::time(nullptr)};
  results.input = ReadInput(options);
  Forewarn(results);
  interruption.ExpectTree();
  outputs.Prepare(options);
  CheckOutgroup(options, results.input);
  {
    ProgressLine line(!options.quiet);
    results.notes = EstimateDistances(options, results.input, line);
  }
  CheckOutgroup(options, results.input);  // of which a taxon may have been left out
  FindTrees(interruption, results);
  SetRoots(results);
  results.interrupted = interruption.Stop();
  results.seconds = SecondsSince(began);
  outputs.WriteAll(results);
  if (options.quiet) return;
  Tell(InputLines(results) + ResultLines(results),
       UsesStandardOutput(options) ? std::cerr : std::cout);
}

}  // namespace zorvek::wide
