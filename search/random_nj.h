// Starting trees by agglomeration: neighbour joining [Saitou1987] or random pairs.
#ifndef ZORVEK_SEARCH_RANDOM_NJ_H
#define ZORVEK_SEARCH_RANDOM_NJ_H

namespace zorvek {

// Makes `n_ants` trees, each in T2. Every join takes two nodes of the active list, at first all
// taxa, under a new node at the end of the list, until three nodes are left: with `alpha` >= 1 the
// pair that neighbour joining chooses, the first of those that tie, and the first pair of all where
// none has a criterion below 1e8; with `alpha` < 1 a random pair that leaves out the last node of
// the list. Each tree of length below 1e8 becomes T1, and OPT too when it is shorter than opt_val;
// that writes the line "RandomNJ improved primal bound:LENGTH at:SECONDS" on standard output.
// Reads: n, DM1, EM's leaf block, alpha, n_ants, r, t.  Writes: T1, T2, OPT, t1_val, t2_val,
// opt_val; EM's other entries during a construction by neighbour joining, 0 after every one.
// Requires: Init, n >= 4.  Cost of a tree: n^3 for neighbour joining, else n^2.
void RandomNJ();

}  // namespace zorvek

#endif
