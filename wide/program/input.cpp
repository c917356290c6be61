#include "wide/program/input.h"

#include <algorithm>
#include <iostream>
#include <sstream>
#include <utility>

#include "core/index.h"
#include "wide/data/labels.h"
#include "wide/formats/text.h"
#include "wide/program/progress_line.h"
#include "zorvek/check.h"
#include "zorvek/error.h"
#include "zorvek/io.h"

namespace zorvek::wide {

namespace {

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
    for (std::string part; std::getline(parts, part, ',');) named.emplace_back(Trimmed(part));
  }
  return named;
}

void LeaveOutNamed(const Options& options, Input& input) {
  std::vector<bool> left_out(input.Labels().size());
  for (const int taxon : NamedTaxa(options.leave_out, "to leave out", options, input)) {
    left_out[Index(taxon)] = true;
  }
  LeaveOut(left_out, input);
}

void WarnOfRna(const Options& options) {
  std::cerr << "zorvek-wide: " << At(options.file)
            << ": warning: under --model spectral U counts as an unknown nucleotide; write T for "
               "it, or take another model\n";
}

void ReadFile(const Options& options, Input& input) {
  ProgressLine line(!options.quiet);
  Source source(options.file);
  source.TellProgress([&line](double share) { line.Show("reading", share, ""); });
  if (options.matrix) {
    LabelledMatrix matrix = ReadMatrix(std::move(source));
    input.matrix_labels = std::move(matrix.labels);
    input.distances = std::move(matrix.distances);
  } else {
    input.alignment = ReadAlignment(std::move(source), options.format);
  }
}

}  // namespace

std::vector<int> NamedTaxa(const std::vector<std::string>& values, const std::string& purpose,
                           const Options& options, const Input& input) {
  std::vector<std::string> folded;
  for (const std::string& label : input.Labels()) folded.push_back(Folded(label));
  std::vector<int> taxa;
  FaultList faults(options.file);
  for (const std::string& name : Named(values, folded)) {
    const auto found = std::find(folded.begin(), folded.end(), Folded(name));
    taxa.push_back(static_cast<int>(found - folded.begin()));
    if (found != folded.end()) continue;
    faults.Add(0, 0, "no taxon " + name + " " + purpose + "; fix the label");
  }
  faults.ThrowIfAny();
  return taxa;
}

void LeaveOut(const std::vector<bool>& left_out, Input& input) {
  for (std::size_t i = 0; i < left_out.size(); ++i) {
    if (left_out[i]) input.left_out.push_back(input.Labels()[i]);
  }
  if (input.alignment) input.alignment->LeaveOut(left_out);
  RemoveItems(left_out, input.matrix_labels);
  if (input.distances.Size() > 0) input.distances = input.distances.Without(left_out);
}

void CheckSize(const Options& options, const Input& input) {
  CheckNumberOfTaxa(options.file, input.Labels().size(), !input.left_out.empty());
}

Input ReadInput(const Options& options) {
  Input input;
  ReadFile(options, input);
  if (input.alignment && input.alignment->rna && options.model.model == Model::kSpectral) {
    WarnOfRna(options);
  }
  CheckLabels(options.file, input.Labels());
  LeaveOutNamed(options, input);
  CheckSize(options, input);
  return input;
}

}  // namespace zorvek::wide
