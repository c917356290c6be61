// Faults as the user of the program is told about them.
#ifndef ZORVEK_WIDE_PROGRAM_MESSAGES_H
#define ZORVEK_WIDE_PROGRAM_MESSAGES_H

#include <string>

#include "zorvek/error.h"

namespace zorvek::wide {

// Every fault on a line of its own, with the option that helps.
std::string Message(const Error& error);

}  // namespace zorvek::wide

#endif
