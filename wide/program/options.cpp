#include "wide/program/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <iostream>
#include <limits>
#include <map>
#include <thread>

#include "wide/formats/alignment_file.h"
#include "wide/program/outputs.h"

namespace zorvek::wide {

namespace {

constexpr int kBadUsage = 2;
constexpr int kMost = std::numeric_limits<int>::max();

void AddInput(CLI::App& app, Options& options) {
  app.add_option("file", options.file, "aligned DNA sequences: NEXUS, FASTA or relaxed PHYLIP")
      ->required()
      ->type_name("FILE");
  auto* matrix =
      app.add_flag("--matrix", options.matrix, "FILE is a PHYLIP square distance matrix");
  app.add_option("--format", options.format, "nexus, fasta or phylip, not guessed by the content")
      ->transform(CLI::IsMember(AlignmentFormats(), CLI::ignore_case).description(""))
      ->type_name("NAME")
      ->excludes(matrix);
  app.add_option("--leave-out", options.leave_out, "taxa to leave out, commas between them")
      ->type_name("TAXON[,...]")
      ->take_all()
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  app.add_flag("--drop-undefined", options.drop_undefined,
               "leave out the fewest taxa, so that every pair left has a distance");
  app.add_option("--bootstrap", options.replicates, "replicates for the support of the branches")
      ->type_name("R")
      ->check(CLI::Range(1, kMost).description(""))
      ->excludes(matrix);
}

void AddSearch(CLI::App& app, Options& options) {
  app.add_option("--starts", options.search.starts,
                 "starting trees: neighbour joining, then randomised")
      ->type_name("N")
      ->check(CLI::Range(1, kMost).description(""))
      ->capture_default_str();
  app.add_option("--greedy", options.search.greedy,
                 "share of greedy joins in the randomised ones, 0 to 1")
      ->type_name("X")
      ->check(CLI::Range(0.0, 1.0).description(""))
      ->capture_default_str();
  app.add_option("--seed", options.search.seed, "seed of all random choices")
      ->type_name("N")
      ->capture_default_str();
  const std::map<std::string, Criterion> criteria{{"balanced", Criterion::kBalanced},
                                                  {"ols", Criterion::kOls}};
  const std::map<std::string, Moves> moves{
      {"none", Moves::kNone}, {"nni", Moves::kNni}, {"spr", Moves::kSpr}};
  app.add_option("--criterion", options.search.criterion, "balanced or ols; balanced unless given")
      ->transform(CLI::CheckedTransformer(criteria, CLI::ignore_case).description(""))
      ->type_name("NAME");
  app.add_option("--search", options.search.moves, "none, nni or spr; spr unless given")
      ->transform(CLI::CheckedTransformer(moves, CLI::ignore_case).description(""))
      ->type_name("NAME");
  for (const char* name : {"--iterations", "--rounds"}) {
    app.add_option(name, options.search.iterations,
                   "perturbations to try; 0, or no limit with --time or --patience")
        ->type_name("N")
        ->check(CLI::Range(0L, SearchSettings::kUnlimited).description(""));
  }
  app.get_option("--rounds")->group("");  // its former name
  app.add_option("--threads", options.search.threads, "threads; all cores unless given")
      ->type_name("N")
      ->check(CLI::Range(1, 4096).description(""));
  app.add_option("--time", options.search.seconds, "seconds after which the search ends")
      ->type_name("S")
      ->check(CLI::PositiveNumber.description(""));
  app.add_option("--patience", options.search.patience,
                 "seconds without improvement that end the search")
      ->type_name("S")
      ->check(CLI::PositiveNumber.description(""));
}

void AddOutput(CLI::App& app, Options& options) {
  const std::map<std::string, Layout> layouts{{"unrooted", Layout::kUnrooted},
                                              {"phylogram", Layout::kPhylogram}};
  options.paths.resize(OutputKinds().size());
  app.add_option("--prefix", options.prefix, "what the names of all outputs begin with; FILE")
      ->type_name("PATH");
  for (std::size_t kind = 0; kind < options.paths.size(); ++kind) {
    app.add_option(OutputKinds()[kind].option, options.paths[kind], OutputKinds()[kind].help)
        ->type_name("PATH");
  }
  app.add_option("--layout", options.layout, "unrooted or phylogram; unrooted unless given")
      ->transform(CLI::CheckedTransformer(layouts, CLI::ignore_case).description(""))
      ->type_name("NAME")
      ->needs(app.get_option("--draw"));
  app.add_flag("--quiet", options.quiet, "neither progress nor summary");
}

void AddDefaults(const CLI::App& app, Options& options) {
  NameOutputs(options);
  if (app.count("--threads") == 0) {
    options.search.threads = std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
  }
  const bool clock = options.search.seconds > 0 || options.search.patience > 0;
  const bool counted = app.count("--iterations") + app.count("--rounds") > 0;
  if (clock && !counted && options.search.moves == Moves::kSpr) {
    options.search.iterations = SearchSettings::kUnlimited;
  }
}

void CheckSearch(const SearchSettings& search) {
  if (search.iterations != 0 && search.moves != Moves::kSpr) {
    throw CLI::ValidationError("--iterations needs --search spr");
  }
}

// The files that are written must be different ones, and none of them the input.
void CheckPaths(const Options& options) {
  std::vector<std::filesystem::path> taken;
  std::vector<std::string> paths = options.paths;
  if (DescriptorNamed(options.file) < 0) paths.insert(paths.begin(), options.file);
  for (const std::string& path : paths) {
    if (path.empty()) continue;
    std::error_code error;
    auto place = std::filesystem::weakly_canonical(std::filesystem::absolute(path, error), error);
    if (path == "-") place = path;
    if (error || std::filesystem::is_character_file(place, error)) continue;
    if (std::find(taken.begin(), taken.end(), place) != taken.end()) {
      throw CLI::ValidationError((path == "-" ? "standard output" : path) + " is named twice");
    }
    taken.push_back(place);
  }
}

}  // namespace

bool ParseOptions(int argc, char** argv, Options& options, int& status) {
  CLI::App app("Finds the shortest minimum-evolution tree of aligned DNA sequences.",
               "zorvek-wide");
  app.set_version_flag("--version", "zorvek-wide " ZORVEK_VERSION);
  app.set_help_flag("--help", "this text");
  AddInput(app, options);
  AddSearch(app, options);
  AddOutput(app, options);
  try {
    app.parse(argc, argv);
    AddDefaults(app, options);
    CheckSearch(options.search);
    CheckPaths(options);
    return true;
  } catch (const CLI::Success& asked) {
    status = app.exit(asked);
  } catch (const CLI::ParseError& fault) {
    std::cerr << "zorvek-wide: " << fault.what() << "; see zorvek-wide --help\n";
    status = kBadUsage;
  }
  return false;
}

}  // namespace zorvek::wide
