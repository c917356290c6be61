// What a run of zorvek-wide tells at its end.
#ifndef ZORVEK_WIDE_PROGRAM_SUMMARY_H
#define ZORVEK_WIDE_PROGRAM_SUMMARY_H

#include <string>

#include "wide/program/results.h"

namespace zorvek::wide {

// What the run was given, and what it found, a line each. The summary is both.
std::string InputLines(const Results& results);
std::string ResultLines(const Results& results);

// One such line. Requires: a name of fewer than 12 characters.
std::string SummaryLine(const std::string& name, const std::string& value);

}  // namespace zorvek::wide

#endif
