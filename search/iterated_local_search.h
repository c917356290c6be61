// One step of the iterated local search.
#ifndef ZORVEK_SEARCH_ITERATED_LOCAL_SEARCH_H
#define ZORVEK_SEARCH_ITERATED_LOCAL_SEARCH_H

namespace zorvek {

// Applies to T1, in this order: the fast local search, up to 25 2-opt searches (as long as MAX_TIME
// allows, so none in a run), and the shift. After each, a T1 strictly shorter than opt_val becomes
// OPT, with a line in the run log. T1 is never set back here. The argument is ignored. Returns how
// many of the three failed to improve on opt_val, 0 to 3.
// Reads: n, DM1, MAX_TIME, t, r.  Writes: T1, t1_val, OPT, opt_val, time_val, outML.
int ILS(int);

}  // namespace zorvek

#endif
