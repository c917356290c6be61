// Why an input gave too few taxa.
#ifndef ZORVEK_INPUT_DIAGNOSIS_H
#define ZORVEK_INPUT_DIAGNOSIS_H

#include <string>

namespace zorvek {

// The reason why the file did not give 4 taxa, on one line without a full stop: the operating
// system's message, NCL's message with line and column, or what the file lacks. Reads the file once
// more; writes to no stream and no file. Requires: BuildLeavesMatrix found fewer than 4 taxa in it.
std::string DiagnoseInput(const char* path);

}  // namespace zorvek

#endif
