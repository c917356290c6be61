// Distance matrices as text: the number of taxa, then for each taxon, beginning on a line of its
// own, its label and its distances, over as many lines as it takes.
//
//   square           lower triangle    upper triangle
//   4                4                 4
//   a 0 1 2 3        a                 a 1 2 3
//   b 1 0 4 5        b 1               b 4 5         Triangles may have the diagonal too.
//   c 2 4 0 6        c 2 4             c 6
//   d 3 5 6 0        d 3 5 6           d
//
// A label ends at a blank; or, as PHYLIP has it [Felsenstein1989], it is the first 10 columns, which
// may hold blanks, and the distances may follow without one.
#ifndef ZORVEK_WIDE_FORMATS_MATRIX_FILE_H
#define ZORVEK_WIDE_FORMATS_MATRIX_FILE_H

#include <string>
#include <vector>

#include "wide/formats/source.h"
#include "zorvek/distances.h"

namespace zorvek::wide {

struct LabelledMatrix {
  std::vector<std::string> labels;
  DistanceMatrix distances{0};
};

// Reads a matrix of any of these shapes, holding a line of the text at a time. NaN, NA, -, ? and -1
// stand for a missing distance. The two numbers of a pair may differ by rounding; their mean is
// taken. Throws Error: at once where the shape is at fault, else with all numbers that are negative
// or not finite, distances of a taxon to itself, and pairs whose two numbers are not the same.
// Cost: 8 n^2 bytes, 12 n^2 for a lower triangle.
LabelledMatrix ReadMatrix(Source source);

// The square matrix in that format, the label padded to 10 columns, every number with the digits
// that read back as the same double.
std::string FormatSquareMatrix(const std::vector<std::string>& labels,
                               const DistanceMatrix& distances);

}  // namespace zorvek::wide

#endif
