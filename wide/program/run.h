// A run of zorvek-wide: input, distances, search, support, output.
#ifndef ZORVEK_WIDE_PROGRAM_RUN_H
#define ZORVEK_WIDE_PROGRAM_RUN_H

#include "wide/program/options.h"

namespace zorvek::wide {

// Does what the options say. Throws Error at bad input or output; no file is then changed.
void Run(const Options& options);

}  // namespace zorvek::wide

#endif
