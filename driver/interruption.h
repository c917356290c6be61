// Interruption of a search by SIGINT (Ctrl-C) or SIGTERM: the best tree so far is still written.
#ifndef ZORVEK_DRIVER_INTERRUPTION_H
#define ZORVEK_DRIVER_INTERRUPTION_H

namespace zorvek {

// From now on the first SIGINT or SIGTERM only makes Interrupted() true, even where the signal was
// ignored so far (as in a script's background job). More of either kind within a second are the
// same one (a program that passes on what its group got too sends two); a later one ends the
// process.
void CatchInterruptions();

// Whether one of the two signals has come since CatchInterruptions().
bool Interrupted();

}  // namespace zorvek

#endif
