// The command line of zorvek-wide.
#ifndef ZORVEK_WIDE_PROGRAM_OPTIONS_H
#define ZORVEK_WIDE_PROGRAM_OPTIONS_H

#include <string>
#include <utility>
#include <vector>

#include "wide/distance/models.h"
#include "wide/drawing/settings.h"
#include "zorvek/search.h"
#include "zorvek/support.h"

namespace zorvek::wide {

// What the user chose. The settings of the library stand here as they are: the parser writes into
// them, and what it does not write keeps the library's default.
struct Options {
  std::string command;                                        // as it may be typed again
  std::vector<std::pair<std::string, std::string>> settings;  // options in force and their values

  std::string file;                    // "-" is standard input
  bool matrix = false;                 // the file is a distance matrix
  std::string format;                  // of the alignment; if empty, what the content shows
  std::vector<std::string> leave_out;  // as given; each a label or labels between commas
  bool drop_undefined = false;
  ModelSettings model;  // of the distances, replicates included

  SearchSettings search;
  std::string start_tree;  // file of the tree from which the search sets out; empty: none
  std::string evaluate;    // file of trees that are only fitted, without a search; empty: none

  BootstrapSettings bootstrap;  // its search settings are not set here: they are those above
  std::vector<std::string> support_from;  // files of trees from which the supports come

  std::vector<std::string> outgroup;  // as leave_out
  bool midpoint = false;              // the root stands there; neither: the tree is unrooted

  std::string prefix;              // of the outputs that are not named; empty: the file's name
  std::vector<std::string> paths;  // of each of OutputKinds(); empty: it is not written
  DrawingSettings drawing;
  bool quiet = false;
};

// Reads the command line. Returns whether the program is to go on; if not, `status` is what it ends
// with: 0 after --help and --version, 2 after an error of usage, which has been told.
bool ParseOptions(int argc, char** argv, Options& options, int& status);

}  // namespace zorvek::wide

#endif
