// What a run of zorvek-wide can write, and the writing of it.
#ifndef ZORVEK_WIDE_PROGRAM_OUTPUTS_H
#define ZORVEK_WIDE_PROGRAM_OUTPUTS_H

#include <list>
#include <mutex>
#include <string>
#include <vector>

#include "wide/program/options.h"
#include "wide/program/output_file.h"
#include "wide/program/results.h"

namespace zorvek::wide {

// One kind of output. To add one is to add a row to the table in outputs.cpp.
struct OutputKind {
  const char* option;  // that names its path
  const char* help;    // of that option
  const char* ending;  // of its path where none is named; nullptr: not written
  void (*put)(const Results&, const Sink&);  // the whole file
};

// The kinds in the order in which they are written.
std::vector<OutputKind> OutputKinds();

// The path of the kind with this option, in its long form; empty if it is not written.
const std::string& PathOf(const Options& options, const std::string& option);

// Whether an output is made of the trees of replicates.
bool WantsReplicates(const Options& options);

// Gives a path to each output that is written without being asked for. With a prefix, or a file
// that has a name, these are the tree and the log; from a pipe, if no output but the log is named,
// the tree in Newick's format on standard output. Paths that mean standard output become "-".
void NameOutputs(Options& options);

// Whether a result goes to standard output.
bool UsesStandardOutput(const Options& options);

// The files of a run: all are written before the first is put in place.
class Outputs {
 public:
  // Finds out which outputs there are to be and that they can be written. Throws Error.
  void Prepare(const Options& options);

  // Writes them. Throws Error; no file is then changed.
  void WriteAll(const Results& results);

  // Removes all temporary files, when the process is about to end. May be called from any thread;
  // no temporary file and no output comes into being after it.
  void Abandon();

 private:
  struct Entry {
    Entry(const std::string& path, OutputKind the_kind) : file(path), kind(the_kind) {}
    OutputFile file;
    OutputKind kind;
  };

  void Write(bool direct, const Results& results);

  std::mutex mutex_;  // of the entries and their temporary files' names
  std::list<Entry> entries_;
};

}  // namespace zorvek::wide

#endif
