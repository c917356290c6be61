#include "wide/program/outputs.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "wide/drawing/picture.h"
#include "wide/program/report.h"
#include "wide/program/trees.h"
#include "zorvek/io.h"
#include "zorvek/support.h"

namespace zorvek::wide {

namespace fs = std::filesystem;

namespace {

std::string NexusText(const Results& results) {
  return NexusTrees(results.trees, results.input.Labels());
}

std::string NewickLines(const std::vector<Tree>& trees, const Results& results) {
  std::string text;
  for (const Tree& tree : trees) text += Newick(tree, results.input.Labels()) + "\n";
  return text;
}

std::string NewickText(const Results& results) {
  return NewickLines(results.trees, results);
}

std::string ReplicatesText(const Results& results) {
  return NewickLines(results.support.trees, results);
}

std::string ConsensusText(const Results& results) {
  if (results.support.trees.empty()) return "";  // the run was interrupted
  return Newick(Rooted(MajorityConsensus(results.support.trees), results.options, results.input),
                results.input.Labels()) +
         "\n";
}

std::string PictureText(const Results& results) {
  return DrawPicture(PathOf(results.options, "--draw"), results.trees[0], results.input.Labels(),
                     results.options.drawing);
}

void PutDistances(const Results& results, const Sink& put) {
  FormatSquareMatrix(results.input.Labels(), results.input.distances, put);
}

template <std::string (*kText)(const Results&)>
void Put(const Results& results, const Sink& put) {
  put(kText(results));
}

// Whether the file has no name that outputs could be named after.
bool IsPiped(const std::string& file) {
  std::error_code ignored;
  return DescriptorNamed(file) >= 0 || fs::is_fifo(file, ignored) ||
         fs::is_character_file(file, ignored) || fs::is_socket(file, ignored);
}

// What the names of outputs begin with; empty if nothing is known.
std::string Prefix(const Options& options) {
  std::string name = IsPiped(options.file) ? "" : options.file;
  if (fs::path(name).extension() == ".gz") name.resize(name.size() - 3);
  if (options.prefix.empty()) return name;
  if (options.prefix.back() != '/') return options.prefix;
  return options.prefix + (name.empty() ? "tree" : fs::path(name).filename().string());
}

}  // namespace

std::vector<OutputKind> OutputKinds() {
  return {
      {"-o,--output", "the tree in NEXUS; FILE.wide.nex unless given", ".wide.nex", Put<NexusText>},
      {"--newick", "the tree in Newick's format", nullptr, Put<NewickText>},
      {"--distances", "the distances, a PHYLIP square matrix", nullptr, PutDistances},
      {"--draw", "a picture, .svg, or a page to look into, .html", nullptr, Put<PictureText>},
      {"--bootstrap-trees", "the trees of the replicates in Newick's format, a line each", nullptr,
       Put<ReplicatesText>},
      {"--consensus", "their majority-rule consensus in Newick's format", nullptr,
       Put<ConsensusText>},
      {"--log", "a report on the run; FILE.wide.log unless given", ".wide.log", Put<Report>},
  };
}

const std::string& PathOf(const Options& options, const std::string& option) {
  const std::vector<OutputKind> kinds = OutputKinds();
  const auto has = [&](const OutputKind& kind) {
    const std::string forms = kind.option;
    return forms.substr(forms.find(',') + 1) == option;
  };
  const auto found = std::find_if(kinds.begin(), kinds.end(), has);
  return options.paths.at(static_cast<std::size_t>(found - kinds.begin()));
}

bool WantsReplicates(const Options& options) {
  return !PathOf(options, "--bootstrap-trees").empty() || !PathOf(options, "--consensus").empty();
}

void NameOutputs(Options& options) {
  const std::vector<OutputKind> kinds = OutputKinds();
  const std::string prefix = Prefix(options);
  const bool searches = options.evaluate.empty();  // else the summary is what is wanted
  bool named = false;
  for (std::size_t k = 0; k < kinds.size(); ++k) {
    std::string& path = options.paths[k];
    if (DescriptorNamed(path) == STDOUT_FILENO) path = "-";
    named = named || (!path.empty() && kinds[k].put != Put<Report>);
  }
  for (std::size_t k = 0; k < kinds.size(); ++k) {
    std::string& path = options.paths[k];
    if (path.empty() && kinds[k].ending != nullptr && !prefix.empty() && searches) {
      path = prefix + kinds[k].ending;
    }
    if (prefix.empty() && !named && kinds[k].put == Put<NewickText> && searches) path = "-";
  }
}

bool UsesStandardOutput(const Options& options) {
  return std::count(options.paths.begin(), options.paths.end(), "-") > 0;
}

void Outputs::Prepare(const Options& options) {
  const std::vector<OutputKind> kinds = OutputKinds();
  std::list<Entry> entries;
  for (std::size_t k = 0; k < kinds.size(); ++k) {
    if (!options.paths[k].empty()) entries.emplace_back(options.paths[k], kinds[k]);
  }
  const std::lock_guard<std::mutex> lock(mutex_);
  entries_.swap(entries);
}

void Outputs::Write(bool direct, const Results& results) {
  for (Entry& entry : entries_) {
    if (entry.file.IsDirect() != direct) continue;
    entry.file.Write([&](const Sink& put) { entry.kind.put(results, put); }, mutex_);
  }
}

void Outputs::WriteAll(const Results& results) {
  try {
    Write(false, results);
    Write(true, results);  // what cannot be taken back comes last
    const std::lock_guard<std::mutex> lock(mutex_);
    for (Entry& entry : entries_) entry.file.Commit();
  } catch (...) {
    const std::lock_guard<std::mutex> lock(mutex_);
    for (Entry& entry : entries_) entry.file.Discard();
    throw;
  }
}

void Outputs::Abandon() {
  mutex_.lock();  // and never unlocked
  for (Entry& entry : entries_) entry.file.Discard();
}

}  // namespace zorvek::wide
