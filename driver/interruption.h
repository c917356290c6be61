// Interruption of a search by SIGINT (Ctrl-C) or SIGTERM: the best tree so far is still written.
#ifndef ZORVEK_DRIVER_INTERRUPTION_H
#define ZORVEK_DRIVER_INTERRUPTION_H

namespace zorvek {

// From now on the first SIGINT or SIGTERM only makes Interrupted() true, even where the signal was
// ignored so far (as in a script's background job); a second one of either kind ends the process.
void CatchInterruptions();

// Whether one of the two signals has come since CatchInterruptions().
bool Interrupted();

}  // namespace zorvek

#endif
