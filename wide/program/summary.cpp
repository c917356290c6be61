#include "wide/program/summary.h"

#include <sys/resource.h>

#include <cstddef>
#include <stdexcept>

#include "wide/formats/numbers.h"
#include "wide/program/outputs.h"
#include "zorvek/error.h"

namespace zorvek::wide {

namespace {

double Seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
}

std::string Counted(long count, const std::string& one, const std::string& many) {
  return std::to_string(count) + " " + (count == 1 ? one : many);
}

std::string Stop(const Results& results) {
  if (results.interrupted) return ", interrupted";
  const long iterations = results.options.search.iterations;
  return iterations == SearchSettings::kUnlimited ? ", by the clock"
                                                  : ", iterations " + std::to_string(iterations);
}

// The length under the criterion, and what it would be with negative edges counted the other way.
std::string Lengths(Criterion criterion, const SearchResult& found) {
  const std::string length = Shortest(found.length);
  switch (criterion) {
    case Criterion::kBalanced:
      return SummaryLine("length", length + " (balanced, sum of all edges)") +
             SummaryLine("positive",
                         Shortest(PositiveLength(found.tree)) + " (sum of the positive edges)");
    case Criterion::kOls:
      return SummaryLine("length", length + " (least squares, sum of the positive edges)") +
             SummaryLine("raw length", Shortest(TotalLength(found.tree)) + " (sum of all edges)");
  }
  throw std::logic_error("no such criterion");
}

std::string ModelText(const ModelSettings& settings) {
  const ModelRow& row = RowOf(settings.model);
  std::string text = row.name;
  if (settings.gamma > 0) text += ", gamma " + Shortest(settings.gamma);
  return text + (row.unit[0] == '\0' ? "" : ", ") + row.unit;
}

// The pairs that are too far apart, and which models would have fewer of them.  (kP has none ever, since
// it corrects nothing.)
std::string SaturatedText(const DistanceNotes& notes) {
  const PairKinds& kinds = notes.kinds;
  std::string text = std::to_string(kinds.saturated) + " of " +
                     std::to_string(kinds.saturated + kinds.finite) + " pairs, set to " +
                     Shortest(kinds.stand_in) + "; the largest finite distance is " +
                     Shortest(kinds.largest);
  for (std::size_t model = 0; model < kModels; ++model) {
    const bool symmetric = Models()[model].formula != nullptr;
    if (!symmetric || static_cast<Model>(model) == Model::kP) continue;
    if (notes.saturated[model] >= kinds.saturated) continue;
    text += "; " + std::string(Models()[model].name) + " would have " +
            std::to_string(notes.saturated[model]);
  }
  return text;
}

std::string UncountedText(const UncountedCells& uncounted) {
  return Counted(uncounted.gaps, "gap or missing site", "gaps and missing sites") + ", " +
         Counted(uncounted.ambiguous, "ambiguity code", "ambiguity codes");
}

std::string Distances(const Results& results) {
  const ModelSettings& settings = results.options.model;
  std::string text = SummaryLine("model", ModelText(settings));
  const UncountedCells& uncounted = results.notes.uncounted;
  if (settings.model != Model::kSpectral && uncounted.gaps + uncounted.ambiguous > 0) {
    text += SummaryLine("left aside", UncountedText(uncounted));
  }
  if (results.notes.kinds.saturated > 0) {
    text += SummaryLine("saturated", SaturatedText(results.notes));
  }
  return text;
}

std::string Support(const BootstrapResult& support) {
  std::string text = Counted(support.done, "replicate", "replicates");
  if (support.redrawn > 0) {
    text +=
        ", " + Counted(support.redrawn, "sample", "samples") + " without all distances drawn again";
  }
  if (support.given_up > 0) text += ", " + std::to_string(support.given_up) + " given up";
  return text;
}

// Columns with tabs between them, a line for each tree.
std::string Table(const std::vector<SearchResult>& found) {
  std::string text = "tree\tlength\tall edges\tpositive edges\tnegative\n";
  for (std::size_t k = 0; k < found.size(); ++k) {
    const Tree& tree = found[k].tree;
    text += std::to_string(k + 1) + "\t" + Shortest(found[k].length) + "\t" +
            Shortest(TotalLength(tree)) + "\t" + Shortest(PositiveLength(tree)) + "\t" +
            std::to_string(NegativeEdges(tree)) + "\n";
  }
  return text;
}

// Where the tree is.
std::string TreeLine(const Options& options) {
  for (const char* option : {"--output", "--newick"}) {
    const std::string path = PathOf(options, option);
    if (!path.empty()) return SummaryLine("tree", path == "-" ? "standard output" : path);
  }
  return "";
}

}  // namespace

std::string SummaryLine(const std::string& name, const std::string& value) {
  return name + std::string(12 - name.size(), ' ') + value + "\n";
}

std::string InputLines(const Results& results) {
  const Input& input = results.input;
  std::string text = SummaryLine("taxa", std::to_string(input.Labels().size()));
  if (!input.left_out.empty()) text += SummaryLine("left out", Listed(input.left_out, ", "));
  if (!input.alignment) return text;
  return text + SummaryLine("sites", std::to_string(input.alignment->Sites())) + Distances(results);
}

std::string ResultLines(const Results& results) {
  const Options& options = results.options;
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  std::string text;
  if (results.found.size() > 1) {
    text += SummaryLine("trees", std::to_string(results.found.size()));
  } else {
    const std::string negative = std::to_string(NegativeEdges(results.found[0].tree));
    text += Lengths(options.search.criterion, results.found[0]);
    text += SummaryLine("negative", negative + " (written as 0)");
  }
  if (options.bootstrap.replicates > 0) text += SummaryLine("support", Support(results.support));
  if (!options.support_from.empty()) {
    const auto given = static_cast<long>(results.support.trees.size());
    text += SummaryLine("support", Counted(given, "given tree", "given trees"));
  }
  if (options.evaluate.empty()) {
    text += SummaryLine("seed", std::to_string(options.search.seed) + Stop(results));
  }
  const double processor = Seconds(usage.ru_utime) + Seconds(usage.ru_stime);
  text += SummaryLine(
      "time", Rounded(results.seconds, 2) + " s, processor " + Rounded(processor, 2) + " s");
  text += SummaryLine("memory", Rounded(static_cast<double>(usage.ru_maxrss) / 1024, 1) + " MiB");
  text += TreeLine(options);
  return results.found.size() > 1 ? text + Table(results.found) : text;
}

}  // namespace zorvek::wide
