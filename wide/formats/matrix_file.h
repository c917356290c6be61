// Square distance matrices in PHYLIP's format: the number of taxa, then for each taxon its label
// and its distance to every taxon, over as many lines as it takes.
#ifndef ZORVEK_WIDE_FORMATS_MATRIX_FILE_H
#define ZORVEK_WIDE_FORMATS_MATRIX_FILE_H

#include <string>
#include <vector>

#include "zorvek/distances.h"

namespace zorvek::wide {

struct LabelledMatrix {
  std::vector<std::string> labels;
  DistanceMatrix distances;
};

// Reads `text`, the content of the file at `path`. Labels end at the first blank. The two numbers
// of a pair may differ by rounding; their mean is taken. Throws Error with all faults: numbers that
// are missing, no number, negative or not finite; a distance of a taxon to itself; the two numbers
// of a pair not being the same.
LabelledMatrix ParseSquareMatrix(const std::string& path, const std::string& text);

// The matrix in the same format, every number with the digits that read back as the same double.
std::string FormatSquareMatrix(const std::vector<std::string>& labels,
                               const DistanceMatrix& distances);

}  // namespace zorvek::wide

#endif
