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
#include <cstdint>
#include <future>
#include <limits>
#include <mutex>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

#include "zorvek/alignment.h"
#include "zorvek/check.h"
#include "zorvek/distances.h"
#include "zorvek/error.h"
#include "zorvek/io.h"
#include "zorvek/names.h"
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
Value Chosen(const std::string& setting, const std::string& typed, const Names<Value>& names) {
  for (const auto& [name, value] : names) {
    if (name == typed) return value;
  }
  throw Error(setting + " wants " + Alternatives(names) + ", not '" + typed + "'");
}

// Numbers of Python and of NumPy. What is none raises TypeError, what is out of range is a fault in the
// words of zorvek-wide.

template <typename Number>
Number WholeNumber(const std::string& setting, Number least, const py::object& given) {
  const auto index = py::reinterpret_steal<py::object>(PyNumber_Index(given.ptr()));
  if (!index) throw py::error_already_set();
  try {
    const auto value = index.cast<Number>();
    if (value >= least) return value;
  } catch (const py::cast_error&) {  // too large, or below 0 for an unsigned number
  }
  throw Error(setting + " wants a whole number of " + std::to_string(least) + " or more, not '" +
              std::string(py::str(given)) + "'");
}

double NotNegative(const std::string& setting, const py::object& given) {
  const double value = PyFloat_AsDouble(given.ptr());
  if (PyErr_Occurred() != nullptr) throw py::error_already_set();
  if (value >= 0 && value <= std::numeric_limits<double>::max()) return value;
  throw Error(setting + " wants a number of 0 or more, not '" + std::string(py::str(given)) + "'");
}

// What the library does where nothing is said.
py::dict Defaults() {
  const SearchSettings search;
  const ModelSettings model;
  const BootstrapSettings bootstrap;
  return py::dict("criterion"_a = NameOf(search.criterion, CriterionNames()),
                  "search"_a = NameOf(search.moves, MovesNames()), "seed"_a = search.seed,
                  "threads"_a = search.threads, "time"_a = search.seconds,
                  "starts"_a = search.starts, "model"_a = NameOf(model.model, ModelNames()),
                  "gamma"_a = model.gamma, "first"_a = bootstrap.first,
                  "support"_a = NameOf(bootstrap.measure, SupportNames()));
}

// As zorvek-wide reads them: with a limit to its time the search goes on until then, unless iterations are
// counted.
SearchSettings MakeSearchSettings(const std::string& criterion, const std::string& search,
                                  const py::object& iterations, const py::object& seed,
                                  const py::object& threads, const py::object& time,
                                  const py::object& starts) {
  SearchSettings settings;
  settings.criterion = Chosen("criterion", criterion, CriterionNames());
  settings.moves = Chosen("search", search, MovesNames());
  settings.seed = WholeNumber("seed", std::uint64_t{0}, seed);
  settings.threads = WholeNumber("threads", 1, threads);
  settings.seconds = NotNegative("time", time);
  settings.starts = WholeNumber("starts", 1, starts);
  if (!iterations.is_none()) {
    settings.iterations = WholeNumber("iterations", 0L, iterations);
  } else if (settings.seconds > 0 && settings.moves == Moves::kSpr) {
    settings.iterations = SearchSettings::kUnlimited;
  }
  if (settings.iterations > 0 && settings.moves != Moves::kSpr)
    throw Error("iterations does nothing without search spr");
  if (settings.seconds > 0 && settings.starts < 2 && settings.moves == Moves::kNone)
    throw Error("time does nothing with search none");
  return settings;
}

ModelSettings MakeModelSettings(const std::string& model, const py::object& gamma) {
  ModelSettings settings;
  settings.model = Chosen("model", model, ModelNames());
  settings.gamma = NotNegative("gamma", gamma);
  if (settings.gamma > 0 && !HasGamma(settings.model))
    throw Error("gamma does nothing without one of the models " + GammaModels());
  return settings;
}

// --- Work that Ctrl-C ends -----------------------------------------------------------------------

struct News {
  const char* phase;
  double fraction, length;
  bool important;  // not to be replaced by later ones
};

class Watch {
 public:
  explicit Watch(py::object progress) : progress_(std::move(progress)) {}

  bool Interrupted() const { return interrupted_; }

  // From any thread.
  void Tell(const News& news) {
    if (!wanted_) return;
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!news_.empty() && !news_.back().important) news_.pop_back();
    news_.push_back(news);
  }

  // Lets a search tell and be stopped.
  void Connect(SearchSettings& settings) {
    settings.stop = &stop_;
    settings.on_progress = [this](const Progress& state) {
      Tell({Name(state.phase), state.fraction, state.length, state.improved});
    };
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

constexpr char kRemedy[] = "drop";  // the taxa for which pairs have no distance

std::vector<int> FileOrder(std::size_t taxa) {
  std::vector<int> order(taxa);
  std::iota(order.begin(), order.end(), 0);
  return order;
}

// The matrix itself, or a copy in which the two numbers of a pair are the same.
template <typename Number>
Array<Number> Checked(const Array<Number>& matrix, const std::vector<std::string>& names) {
  if (std::size_t(matrix.shape(0)) != names.size()) {
    throw Error(std::to_string(names.size()) + " names for " + std::to_string(matrix.shape(0)) +
                " taxa; give each taxon its own");
  }
  CheckLabels("", names);
  CheckNumberOfTaxa("", names.size());
  bool symmetric;
  {
    const std::vector<Number*> rows = RowsOf<Number>(matrix);
    const py::gil_scoped_release released;
    symmetric = CheckNumbers("", names, rows.data());
    if (!symmetric) {
      CheckDefined("", names, FindUndefined(rows.data(), FileOrder(names.size())), kRemedy);
    }
  }
  if (symmetric) return matrix;
  Array<Number> copy(matrix.request());
  const std::vector<Number*> rows = RowsOf<Number>(copy);
  const py::gil_scoped_release released;
  Symmetrise(static_cast<int>(rows.size()), rows.data());
  return copy;
}

// --- What Python calls ----------------------------------------------------------------------------

// An alignment, and how messages name it.
struct Input {
  std::string name;
  Alignment alignment;
};

Input Read(const std::string& path, const std::string& format) {
  const py::gil_scoped_release released;
  Input input{path, ReadAlignment(Source(path), format)};
  CheckLabels(path, input.alignment.labels);
  return input;
}

Input Make(const std::vector<std::string>& labels, const std::vector<std::string>& sequences) {
  const py::gil_scoped_release released;
  const std::string name = "sequences";
  return {name, MakeAlignment(name, labels, sequences)};
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

py::array DistancesOf(const Input& input, const ModelSettings& model, const py::object& threads) {
  const int shared = WholeNumber("threads", 1, threads);
  const auto n = static_cast<py::ssize_t>(input.alignment.Taxa());
  if (n == 0) CheckNumberOfTaxa(input.name, 0);
  Array<double> distances({n, n});
  double* to = distances.mutable_data();
  const py::gil_scoped_release released;
  const EstimatedDistances estimated = EstimateDistances(input.alignment, model, shared);
  if (estimated.kinds.saturated > 0) CheckEstimates(input.name, model.model, estimated.kinds);
  for (py::ssize_t i = 0; i < n; ++i) std::copy_n(estimated.matrix.Rows()[i], n, to + i * n);
  return std::move(distances);
}

// Uses the matrix up if it is `own`, the module's own.
template <typename Number>
std::pair<Tree, double> Join(const Array<Number>& matrix, bool own) {
  const Array<Number> work = own ? matrix : Array<Number>(matrix.request());
  const std::vector<Number*> rows = RowsOf<Number>(work);
  const py::gil_scoped_release released;
  SearchResult joined = JoinedTree(static_cast<int>(rows.size()), rows.data());
  return {std::move(joined.tree), joined.length};
}

py::tuple Search(const Array<double>& matrix, SearchSettings settings, const py::object& progress) {
  Watch watch(progress);
  watch.Connect(settings);
  const std::vector<double*> rows = RowsOf<double>(matrix);
  SearchResult found = watch.Run(
      [&] { return FindShortestTree(static_cast<int>(rows.size()), rows.data(), settings); });
  return py::make_tuple(std::move(found.tree), found.length, watch.Interrupted());
}

std::pair<Tree, double> Evaluate(const std::string& newick, const Array<double>& matrix,
                                 const std::vector<std::string>& names,
                                 const std::string& criterion) {
  const Criterion chosen = Chosen("criterion", criterion, CriterionNames());
  const std::vector<double*> rows = RowsOf<double>(matrix);
  const py::gil_scoped_release released;
  const std::vector<Tree> trees = ReadTrees(Source("newick", newick), names).trees;
  if (trees.size() > 1) throw Error(std::to_string(trees.size()) + " trees; give one");
  SearchResult fitted = FitTree(trees[0], rows.data(), chosen);
  return {std::move(fitted.tree), fitted.length};
}

struct Supported {
  SearchResult found;
  std::vector<Tree> trees;
};

// The search and the bootstrap, in the order of taxa in which zorvek-wide does them.
Supported FindSupported(const Input& input, const ModelSettings& model,
                        const BootstrapSettings& settings) {
  Alignment alignment = input.alignment;
  CheckNumberOfTaxa(input.name, alignment.Taxa());
  const std::vector<int> order =
      model.model == Model::kSpectral ? FileOrder(alignment.Taxa()) : CanonicalOrder(alignment);
  EstimatedDistances estimated = EstimateDistances(alignment, model, settings.search.threads);
  DistanceMatrix& distances = estimated.matrix;
  CheckDefined(input.name, alignment.labels, FindUndefined(distances.Rows(), order), kRemedy,
               &model.model);
  CheckEstimates(input.name, model.model, estimated.kinds);
  distances.Reorder(order);
  alignment.Reorder(order);
  Supported result;
  result.found = FindShortestTree(distances, settings.search);
  result.trees = Bootstrap(alignment, model, settings, result.found.tree).trees;
  result.found.tree = Renumbered(result.found.tree, order);
  for (Tree& tree : result.trees) tree = Renumbered(tree, order);
  return result;
}

py::tuple BootstrapOf(const Input& input, const ModelSettings& model, const SearchSettings& search,
                      const py::object& replicates, const py::object& first,
                      const std::string& support, const py::object& progress) {
  BootstrapSettings settings;
  settings.replicates = WholeNumber("replicates", 0, replicates);
  settings.first = WholeNumber("first", 1, first);
  settings.measure = Chosen("support", support, SupportNames());
  settings.keep_trees = true;
  settings.search = search;
  Watch watch(progress);
  watch.Connect(settings.search);
  settings.on_done = [&](int done) {
    watch.Tell({"bootstrap", static_cast<double>(done) / settings.replicates,
                std::numeric_limits<double>::quiet_NaN(), false});
  };
  Supported result = watch.Run([&] { return FindSupported(input, model, settings); });
  return py::make_tuple(std::move(result.found.tree), result.found.length, watch.Interrupted(),
                        std::move(result.trees));
}

py::tuple Consensus(const std::string& newick, const std::vector<std::string>& names) {
  LabelledTrees read;
  Tree tree;
  {
    const py::gil_scoped_release released;
    read = ReadTrees(Source("trees", newick), names);
    tree = MajorityConsensus(read.trees);
  }
  const double length = TotalLength(tree);
  return py::make_tuple(std::move(tree), length, std::move(read.labels));
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
  py::class_<Input>(module, "Alignment").def_property_readonly("labels", [](const Input& input) {
    return input.alignment.labels;
  });
  py::class_<ModelSettings>(module, "ModelSettings").def(py::init(&MakeModelSettings));
  py::class_<SearchSettings>(module, "SearchSettings").def(py::init(&MakeSearchSettings));
  py::class_<Tree>(module, "Tree").def("newick", &Newick).def("edges", &EdgesOf);
  module.def("read_alignment", &Read);
  module.def("make_alignment", &Make);
  module.def("distances", &DistancesOf);
  module.def("square", &Square<float>, py::arg().noconvert());
  module.def("square", &Square<double>);
  module.def("checked", &Checked<float>, py::arg().noconvert(), py::arg());
  module.def("checked", &Checked<double>);
  module.def("join", &Join<float>, py::arg().noconvert(), py::arg());
  module.def("join", &Join<double>);
  module.def("search", &Search);
  module.def("evaluate", &Evaluate);
  module.def("bootstrap", &BootstrapOf);
  module.def("consensus", &Consensus);
}

}  // namespace
}  // namespace zorvek::wide
