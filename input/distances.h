// The input stage of a run: from a NEXUS file to the distances between its taxa.
#ifndef ZORVEK_INPUT_DISTANCES_H
#define ZORVEK_INPUT_DISTANCES_H

#include <cstddef>

#include "core/pair_table.h"

class NxsDataBlock;

namespace zorvek {

// The planes of the first `rows` taxa of the matrix. A cell counts as its first state, so an
// ambiguity code as the first of its states; a matrix of continuous data has no states. Cost: one
// look at each cell.
NucleotidePlanes ReadPlanes(const NxsDataBlock& data, std::size_t rows);

// Reads the file and computes the distance of every pair of taxa. CL lists for each taxon the
// others in id order, DM1 has a zero diagonal. When the spectrum of a pair is unstable, the pair is
// named on standard output and the process ends with status 0. n is 0 when the file has no DATA
// block that could be read; DM1 and CL are then empty. Writes: n, DM1, CL, taxa, trees (null again
// on return), and the reading log beside the input. Cost: n x sites to read, n^2 x (sites / 64 + one
// eigensystem of order 4).
void BuildLeavesMatrix(const char* inputPath);

// Releases what BuildLeavesMatrix made and sets n to 0. A run keeps it to its end; what reads a
// second file in one process needs it in between.
void ReleaseLeavesMatrix();

}  // namespace zorvek

#endif
