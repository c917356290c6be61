// The log of a run: a report that can stand in the supplement of a paper.
#ifndef ZORVEK_WIDE_PROGRAM_REPORT_H
#define ZORVEK_WIDE_PROGRAM_REPORT_H

#include <string>

#include "wide/program/results.h"

namespace zorvek::wide {

// Program, command and machine; the input; the settings in force; the improvements of the search;
// the summary.
std::string Report(const Results& results);

}  // namespace zorvek::wide

#endif
