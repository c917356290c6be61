#include "wide/program/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <iostream>
#include <limits>
#include <sstream>
#include <stdexcept>
#include <thread>
#include <type_traits>
#include <utility>

#include "wide/drawing/picture.h"
#include "wide/program/outputs.h"
#include "wide/program/values.h"
#include "zorvek/io.h"

namespace zorvek::wide {

namespace {

constexpr int kBadUsage = 2;
constexpr int kMost = 1000000;  // starts, replicates

struct BadUsage : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The options are added by these, each with its names, the place of its value, and its help. The
// value that is there beforehand is the default that the help shows.

template <typename Read>
CLI::Option* Add(CLI::App& app, const std::string& names, const std::string& type,
                 const std::string& help, const std::string& wants, const Read& read) {
  const std::string name = names.substr(names.find(',') + 1);
  const auto take = [=](const std::string& text) {
    if (!read(text)) throw BadUsage(name + " wants " + wants + ", not '" + text + "'");
  };
  return app.add_option_function<std::string>(names, take, help)->type_name(type);
}

template <typename Number>
void AddNumber(CLI::App& app, const std::string& names, Number& value, Number least, Number most,
               const std::string& type, const std::string& help) {
  const auto text = [](Number number) {
    std::ostringstream stream;
    stream << number;
    return stream.str();
  };
  std::string wants = std::is_integral_v<Number> ? "a whole number" : "a number";
  const bool open = most == std::numeric_limits<Number>::max();
  wants += open ? " of " + text(least) + " or more" : " from " + text(least) + " to " + text(most);
  Add(app, names, type, help, wants, [=, &value](const std::string& typed) {
    return ReadNumber(typed, least, most, value);
  })->default_str(text(value));
}

void AddTime(CLI::App& app, const std::string& names, double& value, const std::string& help) {
  Add(app, names, "TIME", help, "a time above 0, such as 90, 90s, 10m or 1.5h",
      [&value](const std::string& text) { return ReadTime(text, value); });
}

void AddPath(CLI::App& app, const std::string& names, std::string& value, const std::string& help) {
  Add(app, names, "PATH", help, "a path, or - for standard output",
      [&value](const std::string& text) {
        value = text;
        return text == "-" || (!text.empty() && text[0] != '-');
      });
}

void AddFile(CLI::App& app, const std::string& names, std::string& value, const std::string& help) {
  Add(app, names, "FILE", help, "a file", [&value](const std::string& text) {
    value = text;
    return !text.empty() && text[0] != '-';
  });
}

void AddTaxa(CLI::App& app, const std::string& names, std::vector<std::string>& taxa,
             const std::string& help) {
  app.add_option(names, taxa, help)
      ->type_name("TAXON[,...]")
      ->each([names](const std::string& text) {
        if (text.empty()) throw BadUsage(names + " wants taxa, commas between them, not ''");
      })
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->allow_extra_args(false);  // what follows may be FILE
}

template <typename Value>
void AddChoice(CLI::App& app, const std::string& names, Value& value, const Names<Value>& choices,
               const std::string& help) {
  const std::string listed = Alternatives(choices);
  Add(app, names, "NAME", help + (help.empty() ? "" : ": ") + listed, listed,
      [=, &value](const std::string& text) {
        for (const auto& [name, choice] : choices) {
          if (CLI::detail::to_lower(text) != CLI::detail::to_lower(name)) continue;
          value = choice;
          return true;
        }
        return false;
      })
      ->default_str(NameOf(value, choices));
}

void AddInput(CLI::App& app, Options& options) {
  app.option_defaults()->group("Input");
  app.add_option("file", options.file,
                 "aligned DNA: " + Alternatives(AlignmentFormats()) +
                     ", plain or gzip; - is standard input")
      ->type_name("FILE");
  app.add_flag("--matrix", options.matrix, "FILE is a distance matrix, square or a triangle");
  Names<std::string> formats;
  for (const std::string& format : AlignmentFormats()) formats.emplace_back(format, format);
  AddChoice(app, "--format", options.format, formats, "not guessed by the content");
  AddTaxa(app, "--leave-out", options.leave_out, "taxa to leave out, commas between them");
  app.add_flag("--drop-undefined", options.drop_undefined,
               "leave out the fewest taxa, so that every pair left has a distance");
}

void AddDistances(CLI::App& app, ModelSettings& settings) {
  app.option_defaults()->group("Distances");
  AddChoice(app, "-m,--model", settings.model, ModelNames(), "model of substitution");
  Add(app, "--gamma", "SHAPE",
      "shape of gamma-distributed rates; unless given, all sites are alike", "a number above 0",
      [&settings](const std::string& text) {
        return ReadNumber(text, std::numeric_limits<double>::min(), 1e9, settings.gamma);
      });
}

void AddSearch(CLI::App& app, Options& options) {
  app.option_defaults()->group("Search");
  SearchSettings& search = options.search;
  AddFile(app, "--tree", options.start_tree, "a tree to start from: Newick or NEXUS");
  AddFile(app, "--evaluate", options.evaluate, "trees to fit and compare, and no search");
  AddChoice(app, "--criterion", search.criterion, CriterionNames(), "what is made small");
  AddChoice(app, "--search", search.moves, MovesNames(), "how a starting tree is improved");
  AddNumber(app, "--starts", search.starts, 1, kMost, "N",
            "starting trees: neighbour joining, then randomised");
  AddNumber(app, "--greedy", search.greedy, 0.0, 1.0, "X",
            "share of greedy joins in the randomised ones");
  AddNumber(app, "--seed", search.seed, std::uint64_t{0}, std::numeric_limits<std::uint64_t>::max(),
            "N", "seed of all random choices");
  for (const char* name : {"--iterations", "--rounds"}) {
    AddNumber(app, name, search.iterations, 0L, SearchSettings::kUnlimited, "N",
              "rounds of annealing after the descent; no limit with --time or --patience");
  }
  app.get_option("--rounds")->group("");  // its former name
  AddTime(app, "--time", search.seconds, "the search ends then");
  AddTime(app, "--patience", search.patience,
          "the search ends when there was no improvement for so long");
  AddNumber(app, "-t,--threads", search.threads, 1, 4096, "N", "threads, as many as cores");
}

void AddSupport(CLI::App& app, Options& options) {
  app.option_defaults()->group("Support");
  BootstrapSettings& bootstrap = options.bootstrap;
  Add(app, "-b,--bootstrap", "R", "replicates for the support of the branches, or a range of them",
      "a number of replicates, or a range such as 51-100", [&bootstrap](const std::string& text) {
        const std::size_t dash = text.find('-');
        int last = 0;
        if (dash != text.npos && !ReadNumber(text.substr(0, dash), 1, kMost, bootstrap.first)) {
          return false;
        }
        const std::string end = dash == text.npos ? text : text.substr(dash + 1);
        const bool good = ReadNumber(end, bootstrap.first, kMost, last);
        bootstrap.replicates = last - bootstrap.first + 1;
        return good;
      });
  app.add_option("--support-from", options.support_from,
                 "files of trees from which the support comes instead; FILE comes first")
      ->type_name("FILE");
  AddChoice(app, "--support", bootstrap.measure, SupportNames(),
            "the share of trees with a branch, or their transfer distance from it");
}

void AddOutput(CLI::App& app, Options& options) {
  app.option_defaults()->group("Output");
  AddPath(app, "--prefix", options.prefix, "what the names of all outputs begin with; FILE");
  options.paths.resize(OutputKinds().size());
  for (std::size_t kind = 0; kind < options.paths.size(); ++kind) {
    AddPath(app, OutputKinds()[kind].option, options.paths[kind], OutputKinds()[kind].help);
  }
  AddTaxa(app, "--outgroup", options.outgroup, "taxa beyond the root, commas between them");
  app.add_flag("--midpoint", options.midpoint, "the root is midway between the farthest taxa");
  AddChoice<Layout>(app, "--layout", options.drawing.layout,
                    {{"phylogram", Layout::kPhylogram}, {"unrooted", Layout::kUnrooted}},
                    "of the picture");
  app.add_flag("--quiet", options.quiet, "neither progress nor summary");
}

// What the parser leaves over: options that there are not, and files beyond the first.
void CheckExtras(const CLI::App& app, const Options& options) {
  for (const std::string& extra : app.remaining()) {
    if (extra == "--") continue;  // what follows is no option
    if (extra.rfind("--alpha", 0) == 0) {
      throw BadUsage(
          "--alpha is no longer an option: the share of greedy joins is --greedy, the "
          "shape of the gamma distribution --gamma");
    }
    if (extra.size() > 1 && extra[0] == '-') throw BadUsage("there is no option " + extra);
    throw BadUsage("one file at a time, not " + options.file + " and " + extra);
  }
  if (options.file.empty()) {
    throw BadUsage(options.support_from.empty()
                       ? "no file; name one with aligned sequences"
                       : "no file; name one with aligned sequences before --support-from");
  }
}

// Options that would do nothing as the others are.
void CheckCombinations(const CLI::App& app, const Options& options) {
  const SearchSettings& search = options.search;
  const bool descent_alone = search.iterations > 0 && search.moves != Moves::kSpr;
  const bool evaluates = !options.evaluate.empty();
  const bool given_support = !options.support_from.empty();
  const std::string without_gamma = "does nothing without one of the models " + GammaModels();
  const bool unsupported = options.bootstrap.replicates == 0 && !given_support;
  struct Rule {
    const char* option;
    bool idle;
    const char* why;
  };
  const Rule rules[] = {
      {"--format", options.matrix, "does nothing with --matrix, which has a format of its own"},
      {"--bootstrap", options.matrix, "does nothing with --matrix, which has no sites to draw"},
      {"--model", options.matrix, "does nothing with --matrix, which has distances"},
      {"--gamma", options.matrix, "does nothing with --matrix, which has distances"},
      {"--gamma", !RowOf(options.model.model).has_gamma, without_gamma.c_str()},
      {"--greedy", search.starts < 2, "does nothing without --starts of 2 or more"},
      {"--iterations", descent_alone, "does nothing without --search spr"},
      {"--rounds", descent_alone, "does nothing without --search spr"},
      {"--patience", search.iterations == 0, "does nothing without --iterations"},
      {"--time", search.starts < 2 && search.moves == Moves::kNone,
       "does nothing with --search none"},
      {"--bootstrap", given_support, "does nothing with --support-from"},
      {"--midpoint", !options.outgroup.empty(), "does nothing with --outgroup"},
      {"--layout", PathOf(options, "--draw").empty(), "does nothing without --draw"},
  };
  const auto check = [&](const Rule& rule) {
    if (rule.idle && app.count(rule.option) > 0) {
      throw BadUsage(std::string(rule.option) + " " + rule.why);
    }
  };
  for (const Rule& rule : rules) check(rule);
  for (const char* option : {"--tree", "--search", "--starts", "--greedy", "--iterations",
                             "--rounds", "--time", "--patience"}) {
    check({option, evaluates, "does nothing with --evaluate, which makes no search"});
  }
  for (const char* option : {"--support", "--bootstrap-trees", "--consensus"}) {
    check({option, unsupported, "does nothing without --bootstrap or --support-from"});
  }
}

// With a limit to its time the search goes on until then, unless iterations are counted.
void SettleIterations(CLI::App& app, SearchSettings& search) {
  const bool clock = search.seconds > 0 || search.patience > 0;
  if (clock && app.count("--iterations") + app.count("--rounds") == 0 &&
      search.moves == Moves::kSpr) {
    search.iterations = SearchSettings::kUnlimited;
  }
  const bool unlimited = search.iterations == SearchSettings::kUnlimited;
  app.get_option("--iterations")
      ->default_str(unlimited ? "no limit" : std::to_string(search.iterations));
}

// The files that are written must be different ones, and none of them the input.
void CheckPaths(const Options& options) {
  const std::string fault = PictureFault(PathOf(options, "--draw"));
  if (!fault.empty()) throw BadUsage(fault);
  std::vector<std::filesystem::path> taken;
  std::vector<std::string> paths = options.paths;
  for (const std::string& read : {options.start_tree, options.evaluate}) paths.push_back(read);
  paths.insert(paths.end(), options.support_from.begin(), options.support_from.end());
  if (DescriptorNamed(options.file) < 0) paths.insert(paths.begin(), options.file);
  for (const std::string& path : paths) {
    if (path.empty()) continue;
    std::error_code error;
    auto place = std::filesystem::weakly_canonical(std::filesystem::absolute(path, error), error);
    if (path == "-") place = path;
    if (error || std::filesystem::is_character_file(place, error)) continue;
    if (std::find(taken.begin(), taken.end(), place) != taken.end()) {
      throw BadUsage((path == "-" ? "standard output" : path) + " is named twice");
    }
    taken.push_back(place);
  }
}

std::string CommandLine(int argc, char** argv) {
  std::string command = "zorvek-wide";
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    const bool plain =
        !word.empty() && word.find_first_of(" \t\n'\"\\$`*?[]{}()<>|&;#~!") == word.npos;
    std::string quoted;
    for (const char c : word) quoted += c == '\'' ? "'\\''" : std::string(1, c);
    command += plain ? " " + word : " '" + quoted + "'";
  }
  return command;
}

// The values of all options that have one, whether typed or not.
std::vector<std::pair<std::string, std::string>> Settings(const CLI::App& app) {
  std::vector<std::pair<std::string, std::string>> settings;
  for (const CLI::Option* option : app.get_options()) {
    if (option->get_positional() || option->get_group().empty()) continue;
    std::string value = option->get_default_str();
    if (option->count() > 0) {
      const bool flag = option->get_items_expected_max() == 0;
      value = flag ? "yes" : CLI::detail::join(option->results());
    }
    if (!value.empty()) settings.emplace_back(option->get_name(), value);
  }
  return settings;
}

}  // namespace

bool ParseOptions(int argc, char** argv, Options& options, int& status) {
  CLI::App app("Finds the shortest minimum-evolution tree of aligned DNA sequences.",
               "zorvek-wide");
  app.set_version_flag("--version", "zorvek-wide " ZORVEK_VERSION, "the version");
  app.set_help_flag("-h,--help", "this text");
  app.allow_extras();
  options.search.threads = std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
  AddInput(app, options);
  AddDistances(app, options.model);
  AddSearch(app, options);
  AddSupport(app, options);
  AddOutput(app, options);
  std::string fault;
  try {
    app.parse(argc, argv);
    CheckExtras(app, options);
    SettleIterations(app, options.search);
    CheckCombinations(app, options);
    NameOutputs(options);
    if (!options.matrix) options.drawing.unit = RowOf(options.model.model).unit;
    CheckPaths(options);
    options.command = CommandLine(argc, argv);
    options.settings = Settings(app);
    return true;
  } catch (const CLI::Success& asked) {
    status = app.exit(asked);
    return false;
  } catch (const CLI::ArgumentMismatch& mismatch) {
    const std::string what = mismatch.what();  // begins with the option
    const std::string name = what.substr(0, what.find(':'));
    fault = name + (app.count(name) > 1 ? " is given more than once" : " wants a value");
  } catch (const CLI::ParseError& other) {
    fault = other.what();
  } catch (const BadUsage& usage) {
    fault = usage.what();
  }
  std::cerr << "zorvek-wide: " << fault << "; see zorvek-wide --help\n";
  status = kBadUsage;
  return false;
}

}  // namespace zorvek::wide
