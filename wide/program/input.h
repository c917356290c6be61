// What a run of zorvek-wide begins with: taxa, and their sequences or distances.
#ifndef ZORVEK_WIDE_PROGRAM_INPUT_H
#define ZORVEK_WIDE_PROGRAM_INPUT_H

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "wide/program/options.h"
#include "zorvek/alignment.h"
#include "zorvek/distances.h"

namespace zorvek::wide {

struct Input {
  std::optional<Alignment> alignment;      // none when the distances were given
  std::vector<std::string> matrix_labels;  // of the distances, when they were given
  DistanceMatrix distances{0};
  std::vector<std::string> left_out;  // labels of the taxa that were

  // Of the taxa, in the order of the distances.
  const std::vector<std::string>& Labels() const {
    return alignment ? alignment->labels : matrix_labels;
  }
};

// Reads the file and leaves out the taxa that are named. The distances are there if the file held
// them. Tells on standard error what the user should know though it is no error. Throws Error, also
// when there are fewer than 4 taxa.
Input ReadInput(const Options& options);

// Takes the marked taxa out of all that `input` holds, and notes their labels.
void LeaveOut(const std::vector<bool>& left_out, Input& input);

// The taxa that the values of an option name: a value is a label, or labels between commas. Throws Error
// with those that there are not; `purpose` ends "no taxon A ...".
std::vector<int> NamedTaxa(const std::vector<std::string>& values, const std::string& purpose,
                           const Options& options, const Input& input);

// Throws Error if fewer than 4 taxa are there.
void CheckSize(const Options& options, const Input& input);

}  // namespace zorvek::wide

#endif
