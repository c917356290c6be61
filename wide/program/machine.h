// The machine that a run of zorvek-wide has.
#ifndef ZORVEK_WIDE_PROGRAM_MACHINE_H
#define ZORVEK_WIDE_PROGRAM_MACHINE_H

#include <string>

namespace zorvek::wide {

// Processor, number of cores, and system, in words.
std::string MachineName();

// Bytes of memory that the process may use: those of the machine, or of the control group that it
// runs in if these are fewer. 0 if unknown.
double MachineMemory();

}  // namespace zorvek::wide

#endif
