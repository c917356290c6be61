// The process-wide state of a run: the one list of the library's globals. Each is defined once, in
// run_state.cpp. Names are short because every formula of the search uses them.
#ifndef ZORVEK_DRIVER_RUN_STATE_H
#define ZORVEK_DRIVER_RUN_STATE_H

#include <fstream>
#include <vector>

#include "driver/mt_rand.h"
#include "driver/timer.h"
#include "tree/tree_table.h"

class NxsTaxaBlock;
class NxsTreesBlock;

namespace zorvek {

// --- the input, written by BuildLeavesMatrix and read by everybody ---
extern int n;               // number of taxa; 0 before the input is read
extern DistanceMatrix DM1;  // n x n distances between taxa, symmetric, zero diagonal; null at first
extern int** CL;  // n x (n-1): for each taxon the others, by increasing distance after Init
extern NxsTaxaBlock* taxa;    // labels; null at first, then kept to the end for the tree writer
extern NxsTreesBlock* trees;  // trees block of the input; null but while the input is read

// --- working trees: allocated by Init, released by Finalize ---
extern TreeTable OPT;      // best tree so far; written by DJT, ILS and RandomNJ, read by PrintTree
extern TreeTable T1;       // current tree; written by DJT, ILS, RandomNJ and the restart
extern TreeTable T2;       // scratch tree; written and read by RandomNJ
extern DistanceMatrix EM;  // (2n-2) x (2n-2) distances between nodes; working storage of RandomNJ

// --- lengths, in the unit of DM1 ---
extern double opt_val;  // length of OPT, 1e8 before there is one; written with OPT
extern double t1_val;   // length of T1 as last judged, 1e8 before; written by DJT, ILS and RandomNJ
extern double t2_val;   // length of T2 as last accepted by RandomNJ, initially 0

// --- time, in seconds of processor time since the clock's last reset ---
extern int
    time_val;  // whole second of the last improvement; written by the search loop (0) and ILS
extern int MAX_TIME;  // inner time limit; 0, and no run changes it: then every move repairs once

// --- settings no run changes from 0; users of the library may ---
extern int horizon;   // candidates tried by TWOoptLocalSearch, held within 0..n-1 where it is read
extern double alpha;  // RandomNJ: below 1 random pairs, otherwise neighbour-joining pairs
extern int n_ants;    // RandomNJ: constructions per call

// --- shared working objects ---
extern std::vector<int> temp1;  // leaves collected by FC; empty between uses
extern std::ofstream outf;      // tree file, open only within PrintTree
extern std::ofstream outML;     // run log; opened by the run, written by ILS
extern MTRand* r;               // random source; null until the run (or a test) creates it
extern Timer* t;                // run clock; null until the run (or a test) creates it

}  // namespace zorvek

#endif
