#include "wide/program/outputs.h"

#include "wide/drawing/svg.h"
#include "wide/formats/matrix_file.h"
#include "wide/formats/newick.h"
#include "wide/program/summary.h"

namespace zorvek::wide {

namespace {

std::string NexusText(const Results& results) {
  return NexusTrees({results.found.tree}, results.input.Labels());
}

std::string NewickText(const Results& results) {
  return Newick(results.found.tree, results.input.Labels()) + "\n";
}

std::string DistancesText(const Results& results) {
  return FormatSquareMatrix(results.input.Labels(), results.input.distances);
}

std::string PictureText(const Results& results) {
  return DrawSvg(results.found.tree, results.input.Labels(), results.options.layout);
}

}  // namespace

std::vector<OutputKind> OutputKinds() {
  return {
      {"--output", "the tree in NEXUS; FILE.wide.nex unless given", ".wide.nex", NexusText},
      {"--newick", "the tree in Newick's format", nullptr, NewickText},
      {"--distances", "the distances, a PHYLIP square matrix", nullptr, DistancesText},
      {"--draw", "a picture of the tree, SVG", nullptr, PictureText},
      {"--log", "the improvements of the search; FILE.wide.log unless given", ".wide.log", RunLog},
  };
}

const std::string& PathOf(const Options& options, const std::string& option) {
  const std::vector<OutputKind> kinds = OutputKinds();
  std::size_t kind = 0;
  while (kinds[kind].option != option) ++kind;
  return options.paths[kind];
}

void NameOutputs(Options& options) {
  for (std::size_t kind = 0; kind < options.paths.size(); ++kind) {
    const char* ending = OutputKinds()[kind].ending;
    if (options.paths[kind].empty() && ending != nullptr) {
      options.paths[kind] = options.file + ending;
    }
  }
}

Outputs::Outputs(const Options& options) {
  for (std::size_t kind = 0; kind < options.paths.size(); ++kind) {
    if (!options.paths[kind].empty())
      entries_.emplace_back(options.paths[kind], OutputKinds()[kind]);
  }
}

void Outputs::WriteAll(const Results& results) {
  for (Entry& entry : entries_) entry.file.Write(entry.kind.content(results));
  for (Entry& entry : entries_) entry.file.Commit();
}

}  // namespace zorvek::wide
