// Alignments from files of any of the formats that zorvek-wide reads.
#ifndef ZORVEK_WIDE_FORMATS_ALIGNMENT_FILE_H
#define ZORVEK_WIDE_FORMATS_ALIGNMENT_FILE_H

#include <string>
#include <vector>

#include "zorvek/alignment.h"

namespace zorvek::wide {

// The content of a file. Throws Error if it cannot be read.
std::string ReadFile(const std::string& path);

// The names of the formats, in the order in which they are recognised.
std::vector<std::string> AlignmentFormats();

// Reads `text`, the content of the file at `path`, in the format of that name, or, if the name is
// empty, in the one that the content shows. Throws Error.
Alignment ParseAlignment(const std::string& path, const std::string& text,
                         const std::string& format);

}  // namespace zorvek::wide

#endif
