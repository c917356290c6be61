#include "wide/program/run.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <iostream>
#include <limits>
#include <list>
#include <string>

#include "wide/data/error.h"
#include "wide/drawing/svg.h"
#include "wide/formats/matrix_file.h"
#include "wide/formats/newick.h"
#include "wide/formats/numbers.h"
#include "wide/program/input.h"
#include "wide/program/interruption.h"
#include "wide/program/output_file.h"
#include "wide/program/progress_line.h"
#include "wide/program/summary.h"
#include "wide/search/search.h"
#include "wide/support/bootstrap.h"

namespace zorvek::wide {

namespace {

using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point then) {
  return std::chrono::duration<double>(Clock::now() - then).count();
}

const char* Name(Progress::Phase phase) {
  if (phase == Progress::kStart) return "starting trees";
  return phase == Progress::kDescent ? "descent" : "rounds";
}

// The files of a run, each made before the work and put in place after all of them are written.
class Outputs {
 public:
  // Does nothing if the path is empty.
  void Add(const std::string& path, std::function<std::string()> content) {
    if (!path.empty()) entries_.emplace_back(path, std::move(content));
  }

  void WriteAll() {
    for (Entry& entry : entries_) entry.file.Write(entry.content());
    for (Entry& entry : entries_) entry.file.Commit();
  }

 private:
  struct Entry {
    Entry(const std::string& path, std::function<std::string()> text)
        : file(path), content(std::move(text)) {}
    OutputFile file;
    std::function<std::string()> content;
  };
  std::list<Entry> entries_;
};

// What the progress line shows of a search: a run by the clock is done when its time is over.
void Show(const Options& options, const Progress& progress, double seconds, ProgressLine& line) {
  const bool by_clock = progress.phase == Progress::kRounds && options.rounds == Options::kByClock;
  const double of_time =
      options.time > 0 ? std::min(seconds / options.time, 1.0) : ProgressLine::kUnknown;
  const bool known = progress.length < std::numeric_limits<double>::infinity();
  line.Show(Name(progress.phase), by_clock ? of_time : progress.fraction,
            known ? ", best length " + Rounded(progress.length, 6) : "",
            options.time > 0 ? std::max(options.time - seconds, 0.0) : 0);
}

SearchResult Search(const Options& options, const DistanceMatrix& distances,
                    const std::atomic<bool>& stop, ProgressLine& line,
                    std::vector<Improvement>& improvements) {
  const Clock::time_point began = Clock::now();
  SearchSettings settings;
  settings.seed = options.seed;
  settings.starts = options.starts;
  settings.greedy = options.greedy;
  settings.rounds = options.rounds == Options::kByClock ? Options::kMostRounds : options.rounds;
  settings.threads = options.threads;
  settings.seconds = options.time;
  settings.patience = options.patience;
  settings.stop = &stop;
  settings.on_progress = [&](const Progress& progress) {
    const double seconds = SecondsSince(began);
    if (progress.improved) improvements.push_back({seconds, progress.length});
    Show(options, progress, seconds, line);
  };
  return FindShortestTree(distances.Size(), distances.Rows(), settings);
}

BootstrapResult AddSupport(const Options& options, const Alignment& alignment,
                           const std::atomic<bool>& stop, ProgressLine& line, Tree& tree) {
  BootstrapSettings settings;
  settings.replicates = options.bootstrap;
  settings.seed = options.seed;
  settings.threads = options.threads;
  settings.stop = &stop;
  settings.on_done = [&](int done) {
    line.Show("bootstrap", static_cast<double>(done) / options.bootstrap, "");
  };
  return Bootstrap(alignment, settings, tree);
}

}  // namespace

void Run(const Options& options) {
  const Clock::time_point began = Clock::now();
  const Interruption interruption;
  const Input input = ReadInput(options);
  Outcome outcome;
  const Tree& tree = outcome.found.tree;
  Outputs outputs;
  outputs.Add(options.distances,
              [&] { return FormatSquareMatrix(input.Labels(), input.distances); });
  outputs.Add(options.output, [&] { return NexusTrees(tree, input.Labels()); });
  outputs.Add(options.newick, [&] { return Newick(tree, input.Labels()) + "\n"; });
  outputs.Add(options.log, [&] { return RunLog(outcome); });
  outputs.Add(options.draw, [&] { return DrawSvg(tree, input.Labels(), options.layout); });
  {
    ProgressLine line(!options.quiet);
    outcome.found =
        Search(options, input.distances, interruption.Stop(), line, outcome.improvements);
    if (options.bootstrap > 0) {
      outcome.support =
          AddSupport(options, *input.alignment, interruption.Stop(), line, outcome.found.tree);
    }
  }
  outputs.WriteAll();
  outcome.interrupted = interruption.Stop();
  outcome.seconds = SecondsSince(began);
  if (!options.quiet) std::cout << Summary(options, input, outcome) << std::flush;
}

}  // namespace zorvek::wide
