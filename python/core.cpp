// The extension of the Python module: the library's functions over NumPy arrays.
//
//   Python's thread      waits without the interpreter's lock, and every so often takes it to ask for
//                        Ctrl-C and to pass on what the work has told
//   the work's thread    searches; looks at the flag `stop`, and never touches Python
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <future>
#include <limits>
#include <mutex>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

#include "wide/data/labels.h"
#include "wide/distance/models.h"
#include "wide/formats/numbers.h"
#include "wide/formats/tree_file.h"
#include "zorvek/alignment.h"
#include "zorvek/distances.h"
#include "zorvek/error.h"
#include "zorvek/io.h"
#include "zorvek/search.h"
#include "zorvek/support.h"
#include "zorvek/tree.h"
#include "zorvek/version.h"

namespace zorvek::wide {
namespace {

namespace py = pybind11;
using namespace py::literals;

template <typename Number>
using Array = py::array_t<Number, py::array::c_style>;

// --- Settings by name ---------------------------------------------------------------------------

template <typename Value>
using Choices = std::vector<std::pair<std::string, Value>>;

const Choices<Criterion> kCriteria{{"balanced", Criterion::kBalanced}, {"ols", Criterion::kOls}};
const Choices<Moves> kMoves{{"none", Moves::kNone}, {"nni", Moves::kNni}, {"spr", Moves::kSpr}};
const Choices<SupportMeasure> kMeasures{{"fbp", SupportMeasure::kFrequency},
                                        {"tbe", SupportMeasure::kTransfer}};

const Choices<Model>& ModelChoices() {
  static const Choices<Model> choices = [] {
    Choices<Model> named;
    for (std::size_t model = 0; model < kModels; ++model) {
      named.emplace_back(Models()[model].name, static_cast<Model>(model));
    }
    return named;
  }();
  return choices;
}

template <typename Value>
Value Chosen(const std::string& setting, const std::string& name, const Choices<Value>& choices) {
  std::string listed;
  for (std::size_t i = 0; i < choices.size(); ++i) {
    if (choices[i].first == name) return choices[i].second;
    listed += (i == 0 ? "" : i + 1 == choices.size() ? " or " : ", ") + choices[i].first;
  }
  throw Error(setting + " wants " + listed + ", not '" + name + "'");
}

template <typename Value>
std::string NameOf(Value value, const Choices<Value>& choices) {
  for (const auto& [name, choice] : choices) {
    if (choice == value) return name;
  }
  throw std::logic_error("a setting without a name");
}

template <typename Number>
Number AtLeast(Number least, const std::string& setting, Number value) {
  if (value >= least) return value;
  throw Error(setting + " wants a number of " + std::to_string(least) + " or more, not " +
              std::to_string(value));
}

// What the library does where nothing is said.
py::dict Defaults() {
  const SearchSettings search;
  const ModelSettings model;
  const BootstrapSettings bootstrap;
  return py::dict("criterion"_a = NameOf(search.criterion, kCriteria),
                  "search"_a = NameOf(search.moves, kMoves), "iterations"_a = search.iterations,
                  "unlimited"_a = SearchSettings::kUnlimited, "seed"_a = search.seed,
                  "threads"_a = search.threads, "time"_a = search.seconds,
                  "starts"_a = search.starts, "model"_a = NameOf(model.model, ModelChoices()),
                  "gamma"_a = model.gamma, "first"_a = bootstrap.first,
                  "support"_a = NameOf(bootstrap.measure, kMeasures));
}

SearchSettings SearchFrom(const py::dict& given) {
  SearchSettings settings;
  settings.criterion = Chosen("criterion", given["criterion"].cast<std::string>(), kCriteria);
  settings.moves = Chosen("search", given["search"].cast<std::string>(), kMoves);
  settings.iterations = AtLeast(0L, "iterations", given["iterations"].cast<long>());
  settings.seed = given["seed"].cast<std::uint64_t>();
  settings.threads = AtLeast(1, "threads", given["threads"].cast<int>());
  settings.seconds = AtLeast(0.0, "time", given["time"].cast<double>());
  settings.starts = AtLeast(1, "starts", given["starts"].cast<int>());
  return settings;
}

ModelSettings ModelFrom(const std::string& name, double gamma) {
  ModelSettings settings;
  settings.model = Chosen("model", name, ModelChoices());
  settings.gamma = AtLeast(0.0, "gamma", gamma);
  if (gamma > 0 && !RowOf(settings.model).has_gamma)
    throw Error("gamma does nothing with model " + name);
  return settings;
}

// --- Work that Ctrl-C ends -----------------------------------------------------------------------

const char* Name(Progress::Phase phase) {
  switch (phase) {
    case Progress::kStart:
      return "starting trees";
    case Progress::kDescent:
      return "descent";
    case Progress::kIterations:
      return "iterations";
  }
  return "";
}

struct News {
  const char* phase;
  double fraction, length;
  bool important;  // not to be replaced by later ones
};

class Watch {
 public:
  explicit Watch(py::object progress) : progress_(std::move(progress)) {}

  const std::atomic<bool>& Stop() const { return stop_; }
  bool Interrupted() const { return interrupted_; }

  // From any thread.
  void Tell(const News& news) {
    if (!wanted_) return;
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!news_.empty() && !news_.back().important) news_.pop_back();
    news_.push_back(news);
  }

  // Runs the work on a thread of its own. An exception of the callback, or of a handler of signals, ends
  // the work and is thrown when that has ended.
  template <typename Work>
  auto Run(const Work& work) {
    std::future<decltype(work())> result;
    {
      const py::gil_scoped_release released;
      result = std::async(std::launch::async, work);
      while (result.wait_for(kPause) != std::future_status::ready) {
        const py::gil_scoped_acquire acquired;
        Attend();
      }
    }
    Attend();
    if (raised_) std::rethrow_exception(raised_);
    return result.get();
  }

 private:
  static constexpr std::chrono::milliseconds kPause{50};

  void Attend() {
    if (raised_) return;
    try {
      if (PyErr_CheckSignals() != 0) throw py::error_already_set();
      std::vector<News> news;
      {
        const std::lock_guard<std::mutex> lock(mutex_);
        news.swap(news_);
      }
      for (const News& one : news) progress_(one.phase, one.fraction, one.length);
    } catch (py::error_already_set& error) {
      stop_ = true;
      if (error.matches(PyExc_KeyboardInterrupt)) {
        interrupted_ = true;
      } else {
        raised_ = std::current_exception();
      }
    }
  }

  py::object progress_;
  bool wanted_ = !progress_.is_none();
  std::atomic<bool> stop_{false};
  bool interrupted_ = false;
  std::exception_ptr raised_;
  std::mutex mutex_;  // of the news
  std::vector<News> news_;
};

// --- Matrices -------------------------------------------------------------------------------------

constexpr double kRounding = 1e-5;  // the share by which the two numbers of a pair may differ

// The rows of an array that is square. They are written to only where the array is the caller's own.
template <typename Number, typename Matrix>
std::vector<Number*> RowsOf(const Matrix& matrix) {
  std::vector<Number*> rows;
  for (py::ssize_t i = 0; i < matrix.shape(0); ++i) {
    rows.push_back(const_cast<Number*>(matrix.data(i, 0)));
  }
  return rows;
}

template <typename Number>
Array<Number> Square(const Array<Number>& condensed) {
  const py::ssize_t size = condensed.size();
  const auto n =
      static_cast<py::ssize_t>(std::lround((1 + std::sqrt(1.0 + 8.0 * double(size))) / 2));
  if (n * (n - 1) / 2 != size) {
    throw Error(std::to_string(size) +
                " distances; give a square matrix, or the n (n - 1) / 2 of a condensed one");
  }
  Array<Number> matrix({n, n});
  const std::vector<Number*> rows = RowsOf<Number>(matrix);
  const Number* next = condensed.data();
  const py::gil_scoped_release released;
  for (py::ssize_t i = 0; i < n; ++i) {
    rows[std::size_t(i)][i] = 0;
    for (py::ssize_t j = i + 1; j < n; ++j) {
      rows[std::size_t(i)][j] = rows[std::size_t(j)][i] = *next++;
    }
  }
  return matrix;
}

// Calls visit(i, j) for all j <= i, in squares that the cache holds.
template <typename Visit>
void ForPairs(py::ssize_t n, const Visit& visit) {
  constexpr py::ssize_t kSide = 32;
  for (py::ssize_t top = 0; top < n; top += kSide) {
    for (py::ssize_t left = 0; left <= top; left += kSide) {
      for (py::ssize_t i = top; i < std::min(top + kSide, n); ++i) {
        for (py::ssize_t j = left; j < std::min(left + kSide, i + 1); ++j) visit(i, j);
      }
    }
  }
}

// Throws Error with the pairs that have no distance.
template <typename Rows>
void CheckDefined(int n, const Rows& rows, const std::vector<std::string>& names) {
  std::vector<std::string> pairs;
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < i; ++j) {
      if (!std::isnan(rows[i][j] + rows[j][i])) continue;
      pairs.push_back(names[std::size_t(j)] + " and " + names[std::size_t(i)]);
    }
  }
  if (pairs.empty()) return;
  throw Error(
      "no distance for " + std::to_string(pairs.size()) + (pairs.size() == 1 ? " pair" : " pairs") +
      " of taxa, which have no site in common; leave out one of each\n  " + Listed(pairs, "\n  "));
}

template <typename Number>
class MatrixCheck {
 public:
  MatrixCheck(const Array<Number>& matrix, const std::vector<std::string>& names)
      : n_(matrix.shape(0)), rows_(RowsOf<Number>(matrix)), names_(names) {}

  // Whether the library can take it as it is: symmetric, finite, 0 or more.
  bool IsSound() const {
    bool sound = true;
    ForPairs(n_, [&](py::ssize_t i, py::ssize_t j) {
      const Number a = At(i, j);
      sound &= a == At(j, i) && a >= 0 && a <= std::numeric_limits<Number>::max();
      sound &= i != j || a == 0;
    });
    return sound;
  }

  // Throws Error with what is wrong, unless it is rounding alone.
  void Tell() const {
    CheckValues();
    CheckDefined(static_cast<int>(n_), rows_.data(), names_);
  }

  // Takes the mean of the two numbers of each pair.
  static void Balance(Array<Number>& matrix) {
    const std::vector<Number*> rows = RowsOf<Number>(matrix);
    ForPairs(matrix.shape(0), [&](py::ssize_t i, py::ssize_t j) {
      Number& a = rows[std::size_t(i)][j];
      Number& b = rows[std::size_t(j)][i];
      a = b = (a + b) / 2;
    });
  }

 private:
  Number At(py::ssize_t i, py::ssize_t j) const { return rows_[std::size_t(i)][j]; }
  const std::string& Name(py::ssize_t i) const { return names_[std::size_t(i)]; }

  void CheckValues() const {
    FaultList faults("");
    for (py::ssize_t i = 0; i < n_; ++i) {
      for (py::ssize_t j = 0; j <= i; ++j) {
        const double a = At(j, i), b = At(i, j);
        const std::string pair = " of " + Name(i) + " to " + Name(j);
        if (i == j && a != 0) {
          faults.Add(0, 0, "distance " + Shortest(a) + " of " + Name(i) + " to itself; write 0");
        } else if (b < 0 || std::isinf(b)) {
          faults.Add(0, 0, "distance " + Shortest(b) + pair + "; write a number that is 0 or more");
        } else if (std::abs(a - b) > kRounding * std::max({std::abs(a), std::abs(b), 1.0})) {
          faults.Add(0, 0,
                     "distance " + Shortest(b) + pair + ", but " + Shortest(a) +
                         " the other way; make them the same");
        }
      }
    }
    faults.ThrowIfAny();
  }

  py::ssize_t n_;
  std::vector<Number*> rows_;
  const std::vector<std::string>& names_;
};

// The matrix itself, or a copy in which the two numbers of a pair are the same.
template <typename Number>
Array<Number> Checked(const Array<Number>& matrix, const std::vector<std::string>& names) {
  if (std::size_t(matrix.shape(0)) != names.size()) {
    throw Error(std::to_string(names.size()) + " names for " + std::to_string(matrix.shape(0)) +
                " taxa; give each taxon its own");
  }
  CheckLabels("", names);
  CheckNumberOfTaxa("", names.size(), false);
  const MatrixCheck<Number> check(matrix, names);
  {
    const py::gil_scoped_release released;
    if (check.IsSound()) return matrix;
    check.Tell();
  }
  Array<Number> balanced(matrix.request());
  MatrixCheck<Number>::Balance(balanced);
  return balanced;
}

// --- What Python calls ----------------------------------------------------------------------------

// Labels at fault are told as by zorvek-wide.
Alignment WithLabelsChecked(Alignment alignment, const std::string& name) {
  CheckLabels(name, alignment.labels);
  return alignment;
}

Alignment Read(const std::string& path, const std::string& format) {
  const py::gil_scoped_release released;
  return WithLabelsChecked(ReadAlignment(Source(path), format), path);
}

// Sequences go the way of a file, so that they are read and refused as one.
Alignment Make(const std::vector<std::string>& labels, const std::vector<std::string>& sequences) {
  const py::gil_scoped_release released;
  std::string text;
  for (std::size_t i = 0; i < labels.size(); ++i) {
    text += ">" + WithoutBlanks(labels[i]) + "\n" + sequences[i] + "\n";
  }
  Alignment alignment = ReadAlignment(Source("sequences", text), "fasta");
  alignment.labels = labels;
  return WithLabelsChecked(std::move(alignment), "sequences");
}

py::tuple EdgesOf(const Tree& tree) {
  const auto edges = static_cast<py::ssize_t>(tree.preorder.size()) - 1;
  Array<int> parent(edges), child(edges);
  Array<double> length(edges), support(edges);
  py::ssize_t k = 0;
  for (const int node : tree.preorder) {
    if (node == tree.root) continue;
    const Tree::Node& below = tree.At(node);
    parent.mutable_at(k) = below.parent;
    child.mutable_at(k) = node;
    length.mutable_at(k) = below.length;
    const bool has = below.support != Tree::kNoSupport;
    support.mutable_at(k++) = has ? below.support : std::numeric_limits<double>::quiet_NaN();
  }
  return py::make_tuple(parent, child, length, support);
}

py::array DistancesOf(const Alignment& alignment, const std::string& model, double gamma,
                      int threads) {
  const ModelSettings settings = ModelFrom(model, gamma);
  AtLeast(1, "threads", threads);
  const auto n = static_cast<py::ssize_t>(alignment.Taxa());
  Array<double> distances({n, n});
  double* to = distances.mutable_data();
  const py::gil_scoped_release released;
  const DistanceMatrix matrix = EstimateDistances(alignment, settings, threads).matrix;
  for (py::ssize_t i = 0; i < n; ++i) std::copy_n(matrix.Rows()[i], n, to + i * n);
  return std::move(distances);
}

template <typename Number>
std::pair<Tree, double> Join(const Array<Number>& matrix) {
  Array<Number> work(matrix.request());
  const std::vector<Number*> rows = RowsOf<Number>(work);
  const py::gil_scoped_release released;
  SearchResult joined = JoinedTree(static_cast<int>(rows.size()), rows.data());
  return {std::move(joined.tree), joined.length};
}

py::tuple Search(const Array<double>& matrix, const py::dict& given, const py::object& progress) {
  SearchSettings settings = SearchFrom(given);
  Watch watch(progress);
  settings.stop = &watch.Stop();
  settings.on_progress = [&](const Progress& state) {
    watch.Tell({Name(state.phase), state.fraction, state.length, state.improved});
  };
  const std::vector<double*> rows = RowsOf<double>(matrix);
  SearchResult found = watch.Run(
      [&] { return FindShortestTree(static_cast<int>(rows.size()), rows.data(), settings); });
  return py::make_tuple(std::move(found.tree), found.length, watch.Interrupted());
}

// The trees of a text; `labels` are those of their taxa, if it is empty those of the first tree.
std::vector<Tree> ParseTrees(const std::string& newick, std::vector<std::string>& labels) {
  TreeReader reader("trees", newick, labels);
  std::vector<Tree> trees;
  for (Tree tree; reader.Next(tree);) trees.push_back(std::move(tree));
  if (trees.empty()) throw Error("no tree; give trees in Newick");
  labels = reader.Labels();
  return trees;
}

std::pair<Tree, double> Evaluate(const std::string& newick, const Array<double>& matrix,
                                 std::vector<std::string> names, const std::string& criterion) {
  const Criterion chosen = Chosen("criterion", criterion, kCriteria);
  const std::vector<double*> rows = RowsOf<double>(matrix);
  const py::gil_scoped_release released;
  const std::vector<Tree> trees = ParseTrees(newick, names);
  if (trees.size() > 1) throw Error(std::to_string(trees.size()) + " trees; give one");
  SearchResult fitted = FitTree(trees[0], rows.data(), chosen);
  return {std::move(fitted.tree), fitted.length};
}

struct Supported {
  SearchResult found;
  std::vector<Tree> trees;
};

// The search and the bootstrap, in the order of taxa in which zorvek-wide does them.
Supported FindSupported(Alignment alignment, const ModelSettings& model,
                        const BootstrapSettings& settings) {
  std::vector<int> order(alignment.Taxa());
  std::iota(order.begin(), order.end(), 0);
  if (model.model != Model::kSpectral) order = CanonicalOrder(alignment);
  alignment.Reorder(order);
  const DistanceMatrix distances =
      EstimateDistances(alignment, model, settings.search.threads).matrix;
  CheckDefined(distances.Size(), distances.Rows(), alignment.labels);
  Supported result;
  result.found = FindShortestTree(distances.Size(), distances.Rows(), settings.search);
  result.trees = Bootstrap(alignment, model, settings, result.found.tree).trees;
  result.found.tree = Renumbered(result.found.tree, order);
  for (Tree& tree : result.trees) tree = Renumbered(tree, order);
  return result;
}

py::tuple BootstrapOf(const Alignment& alignment, const py::dict& given,
                      const py::object& progress) {
  const ModelSettings model =
      ModelFrom(given["model"].cast<std::string>(), given["gamma"].cast<double>());
  BootstrapSettings settings;
  settings.replicates = AtLeast(0, "replicates", given["replicates"].cast<int>());
  settings.first = AtLeast(1, "first", given["first"].cast<int>());
  settings.measure = Chosen("support", given["support"].cast<std::string>(), kMeasures);
  settings.keep_trees = true;
  settings.search = SearchFrom(given);
  Watch watch(progress);
  settings.search.stop = &watch.Stop();
  settings.search.on_progress = [&](const Progress& state) {
    watch.Tell({Name(state.phase), state.fraction, state.length, state.improved});
  };
  settings.on_done = [&](int done) {
    watch.Tell({"bootstrap", double(done) / settings.replicates,
                std::numeric_limits<double>::quiet_NaN(), false});
  };
  Supported result = watch.Run([&] { return FindSupported(alignment, model, settings); });
  return py::make_tuple(std::move(result.found.tree), result.found.length, watch.Interrupted(),
                        std::move(result.trees));
}

py::tuple Consensus(const std::string& newick) {
  std::vector<std::string> labels;
  Tree tree;
  {
    const py::gil_scoped_release released;
    tree = MajorityConsensus(ParseTrees(newick, labels));
  }
  const double length = TotalLength(tree);
  return py::make_tuple(std::move(tree), length, labels);
}

// --- The module -----------------------------------------------------------------------------------

void RaiseAsPython(std::exception_ptr thrown) {
  try {
    if (thrown) std::rethrow_exception(thrown);
  } catch (const Error& error) {
    PyErr_SetString(PyExc_ValueError, error.what());
  }
}

PYBIND11_MODULE(_core, module) {
  py::register_exception_translator(RaiseAsPython);
  module.attr("version") = kVersion;
  module.attr("defaults") = Defaults();
  py::class_<Alignment>(module, "Alignment").def_readonly("labels", &Alignment::labels);
  py::class_<Tree>(module, "Tree").def("newick", &Newick).def("edges", &EdgesOf);
  module.def("read_alignment", &Read);
  module.def("make_alignment", &Make);
  module.def("distances", &DistancesOf);
  module.def("square", &Square<float>, py::arg().noconvert());
  module.def("square", &Square<double>);
  module.def("checked", &Checked<float>, py::arg().noconvert(), py::arg());
  module.def("checked", &Checked<double>);
  module.def("join", &Join<float>, py::arg().noconvert());
  module.def("join", &Join<double>);
  module.def("search", &Search);
  module.def("evaluate", &Evaluate);
  module.def("bootstrap", &BootstrapOf);
  module.def("consensus", &Consensus);
}

}  // namespace
}  // namespace zorvek::wide
