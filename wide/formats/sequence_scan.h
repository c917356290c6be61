// A first look at FASTA and PHYLIP files, which finds every fault in them and where it is. The
// NEXUS library, which then reads the sequences, stops at the first one, and mostly cannot say
// where.
#ifndef ZORVEK_WIDE_FORMATS_SEQUENCE_SCAN_H
#define ZORVEK_WIDE_FORMATS_SEQUENCE_SCAN_H

#include <string>
#include <vector>

namespace zorvek::wide {

struct ScannedSequence {
  std::string label;
  long line = 0;        // of the label
  std::string symbols;  // without blanks
};

// FASTA: ">label anything" and lines of sites; the label ends at the first blank.
// Relaxed PHYLIP: numbers of taxa and sites, then the sequences, each after its label and a blank,
// one after the other (over as many lines as it takes) or interleaved in blocks. Both throw Error
// with all faults of the first kind that there is: the shape of the file, symbols that stand for no
// nucleotide, duplicate labels, unequal lengths.
std::vector<ScannedSequence> ScanFasta(const std::string& path, const std::string& text);
std::vector<ScannedSequence> ScanPhylip(const std::string& path, const std::string& text);

}  // namespace zorvek::wide

#endif
