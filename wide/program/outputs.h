// What a run of zorvek-wide can write, and the writing of it.
#ifndef ZORVEK_WIDE_PROGRAM_OUTPUTS_H
#define ZORVEK_WIDE_PROGRAM_OUTPUTS_H

#include <list>
#include <string>
#include <vector>

#include "wide/program/options.h"
#include "wide/program/output_file.h"
#include "wide/program/results.h"

namespace zorvek::wide {

// One kind of output. To add one is to add a row to the table in outputs.cpp.
struct OutputKind {
  const char* option;                      // that names its path
  const char* help;                        // of that option
  const char* ending;                      // of its path where none is named; nullptr: not written
  std::string (*content)(const Results&);  // the whole file
};

// The kinds in the order in which they are written.
std::vector<OutputKind> OutputKinds();

// The path of the kind with this option; empty if it is not written.
const std::string& PathOf(const Options& options, const std::string& option);

// Gives a path to each output that is written without being asked for.
void NameOutputs(Options& options);

// The files of a run, each made before the work and put in place after all of them are written.
class Outputs {
 public:
  explicit Outputs(const Options& options);

  void WriteAll(const Results& results);

 private:
  struct Entry {
    Entry(const std::string& path, const OutputKind& the_kind) : file(path), kind(the_kind) {}
    OutputFile file;
    OutputKind kind;
  };
  std::list<Entry> entries_;
};

}  // namespace zorvek::wide

#endif
