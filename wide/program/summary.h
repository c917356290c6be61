// What a run of zorvek-wide tells at its end, and its log.
#ifndef ZORVEK_WIDE_PROGRAM_SUMMARY_H
#define ZORVEK_WIDE_PROGRAM_SUMMARY_H

#include <string>

#include "wide/program/results.h"

namespace zorvek::wide {

// The lines for standard output.
std::string Summary(const Results& results);

// Time and length of each improvement, a line each.
std::string RunLog(const Results& results);

}  // namespace zorvek::wide

#endif
