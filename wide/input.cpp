#include "wide/input.h"

#include <algorithm>
#include <iostream>
#include <numeric>
#include <sstream>

#include "wide/error.h"
#include "wide/labels.h"
#include "wide/pair_distances.h"
#include "wide/phylip.h"
#include "wide/vertex_cover.h"

namespace zorvek::wide {

namespace {

constexpr std::size_t kFewestTaxa = 4;

template <class Item>
void Remove(const std::vector<bool>& left_out, std::vector<Item>& items) {
  std::size_t kept = 0;
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (!left_out[i]) std::swap(items[kept++], items[i]);
  }
  items.resize(kept);
}

void LeaveOut(const std::vector<bool>& left_out, Input& input) {
  for (std::size_t i = 0; i < left_out.size(); ++i) {
    if (left_out[i]) input.left_out.push_back(input.labels[i]);
  }
  if (!input.alignment.cells.empty()) Remove(left_out, input.alignment.cells);
  if (input.distances.Size() > 0) input.distances = input.distances.Without(left_out);
  Remove(left_out, input.labels);
}

// The labels that the option names: a value is a label, or labels between commas.
std::vector<std::string> Named(const std::vector<std::string>& values,
                               const std::vector<std::string>& folded_labels) {
  std::vector<std::string> named;
  for (const std::string& value : values) {
    if (std::count(folded_labels.begin(), folded_labels.end(), Folded(value)) > 0) {
      named.push_back(value);
      continue;
    }
    std::istringstream parts(value);
    for (std::string part; std::getline(parts, part, ',');) named.push_back(part);
  }
  return named;
}

void LeaveOutNamed(const Options& options, Input& input) {
  std::vector<std::string> folded;
  for (const std::string& label : input.labels) folded.push_back(Folded(label));
  std::vector<bool> left_out(folded.size());
  Faults faults;
  for (const std::string& name : Named(options.leave_out, folded)) {
    const auto found = std::find(folded.begin(), folded.end(), Folded(name));
    if (found == folded.end()) {
      faults.Add(At(options.file) + ": no taxon " + name + " to leave out; fix the label");
    } else {
      left_out[static_cast<std::size_t>(found - folded.begin())] = true;
    }
  }
  faults.ThrowIfAny();
  LeaveOut(left_out, input);
}

void CheckLabels(const Options& options, const std::vector<std::string>& labels) {
  Faults faults;
  for (const std::vector<std::size_t>& group : Duplicates(labels)) {
    faults.Add(At(options.file) + ": label " + labels[group[0]] + " belongs to " +
               std::to_string(group.size()) + " taxa; give each taxon its own");
  }
  faults.ThrowIfAny();
}

void CheckSize(const Options& options, const Input& input) {
  if (input.labels.size() >= kFewestTaxa) return;
  throw Error(At(options.file) + ": " + std::to_string(input.labels.size()) + " taxa" +
              (input.left_out.empty() ? "" : " left") + "; a tree needs at least " +
              std::to_string(kFewestTaxa));
}

std::vector<std::string> LabelsOf(const std::vector<int>& taxa, const Input& input) {
  std::vector<std::string> labels;
  for (const int taxon : taxa) labels.push_back(input.labels[static_cast<std::size_t>(taxon)]);
  return labels;
}

[[noreturn]] void TellUndefined(const Options& options, const Input& input,
                                const std::vector<std::pair<int, int>>& pairs,
                                const VertexCover& cover) {
  std::vector<std::string> lines;
  for (const auto& [a, b] : pairs) {
    const std::vector<std::string> labels = LabelsOf({a, b}, input);
    lines.push_back(labels[0] + " and " + labels[1]);
  }
  std::string names;
  for (const std::string& label : LabelsOf(cover.vertices, input)) {
    names += (names.empty() ? "" : ",") + WithoutBlanks(label);
  }
  throw Error(At(options.file) + ": no distance for " + std::to_string(pairs.size()) +
              (pairs.size() == 1 ? " pair" : " pairs") +
              " of taxa, which share no site or differ too much; give "
              "--drop-undefined or --leave-out '" +
              names + "', which leaves out " +
              (cover.smallest ? "no more taxa than must be" : "the fewest taxa that were found") +
              "\n  " + Listed(lines, "\n  "));
}

void SettleUndefined(const Options& options, Input& input) {
  const std::vector<std::pair<int, int>> pairs = input.distances.Undefined();
  if (pairs.empty()) return;
  const VertexCover cover = FindVertexCover(input.distances.Size(), pairs);
  if (!options.drop_undefined) TellUndefined(options, input, pairs, cover);
  std::vector<bool> left_out(input.labels.size());
  for (const int taxon : cover.vertices) left_out[static_cast<std::size_t>(taxon)] = true;
  LeaveOut(left_out, input);
  CheckSize(options, input);
}

void ReadSequences(const Options& options, const std::string& text, Input& input) {
  input.alignment = ParseAlignment(options.file, text, options.format);
  input.labels = std::move(input.alignment.labels);
  if (input.alignment.Taxa() > 0 && input.alignment.Sites() == 0) {
    throw Error(At(options.file) + ": no sites; give aligned sequences");
  }
  if (input.alignment.rna) {
    std::cerr
        << "zorvek-wide: " << At(options.file)
        << ": warning: only A, C, G and T are told apart; write T for U, unless U is to count "
           "as an unknown nucleotide\n";
  }
}

}  // namespace

Input ReadInput(const Options& options) {
  const std::string text = ReadFile(options.file);
  Input input;
  if (options.matrix) {
    LabelledMatrix matrix = ParseSquareMatrix(options.file, text);
    input.labels = std::move(matrix.labels);
    input.distances = std::move(matrix.distances);
  } else {
    ReadSequences(options, text, input);
  }
  CheckLabels(options, input.labels);
  LeaveOutNamed(options, input);
  CheckSize(options, input);
  if (!options.matrix) {
    std::vector<std::size_t> sites(input.alignment.Sites());
    std::iota(sites.begin(), sites.end(), std::size_t{0});
    input.distances = PairDistances(input.alignment, sites, options.threads);
  }
  SettleUndefined(options, input);
  return input;
}

}  // namespace zorvek::wide
