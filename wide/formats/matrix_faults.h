// What may be wrong with the numbers of a distance matrix, of a file or of an array.
#ifndef ZORVEK_WIDE_FORMATS_MATRIX_FAULTS_H
#define ZORVEK_WIDE_FORMATS_MATRIX_FAULTS_H

#include <string>

#include "zorvek/distances.h"

namespace zorvek::wide {

// Whether the number is 0 or more and not too large, or NaN.
inline bool IsDistance(double number) {
  return !(number < 0) && !(number > kMostDistance);
}

// Whether the two numbers of a pair are the same. Matrices are mostly written with 5 or 6 decimals, and each
// half rounded by itself. NaN is the same as NaN.
bool SameButForRounding(double a, double b);

// The faults in words; `of` is "" or tells the taxa, as " of a to b".
std::string NotToItself(double distance, const std::string& label);
std::string NotADistance(double distance, const std::string& of);
std::string NotTheSame(double distance, const std::string& of, double other);

}  // namespace zorvek::wide

#endif
