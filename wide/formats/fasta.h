// Aligned sequences in FASTA: ">label anything", then lines of sites; the label ends at the first
// blank.
#ifndef ZORVEK_WIDE_FORMATS_FASTA_H
#define ZORVEK_WIDE_FORMATS_FASTA_H

#include <string>

#include "zorvek/alignment.h"

namespace zorvek::wide {

// Reads `text`, the content of the file at `path`. Throws Error with all faults of the first kind
// that there is: the shape of the file, then as Checked (sites.h).
Alignment ReadFasta(const std::string& path, const std::string& text);

}  // namespace zorvek::wide

#endif
