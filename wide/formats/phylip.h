// Aligned sequences in relaxed PHYLIP: numbers of taxa and sites, then the sequences, each after
// its label and a blank, one after the other (over as many lines as it takes) or interleaved in
// blocks.
#ifndef ZORVEK_WIDE_FORMATS_PHYLIP_H
#define ZORVEK_WIDE_FORMATS_PHYLIP_H

#include <string>

#include "zorvek/alignment.h"

namespace zorvek::wide {

// Reads `text`, the content of the file at `path`. Throws Error with all faults of the first kind
// that there is: the shape of the file, then as Checked (sites.h).
Alignment ReadPhylip(const std::string& path, const std::string& text);

}  // namespace zorvek::wide

#endif
