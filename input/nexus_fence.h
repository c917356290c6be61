// The guarded reading (core/nexus_guard.h) as a run has it: its blocks, and a limit on memory.
#ifndef ZORVEK_INPUT_NEXUS_FENCE_H
#define ZORVEK_INPUT_NEXUS_FENCE_H

#include <ncl/ncl.h>
#include <sys/resource.h>

#include <istream>
#include <memory>

#include "core/nexus_guard.h"

namespace zorvek {

// The text of a NEXUS file for NCL, which is kept from taking the process down while this object
// lives: comments as CommentFilter gives them, and memory within what a file of that size can need,
// so that a file which asks for more meets an exception and not the end of all memory. The memory
// limit is that of the process and is restored; AddressSanitizer, which never throws for want of
// memory, goes without it.
class FencedInput : public std::istream {
 public:
  FencedInput(std::streambuf* source, const char* inputPath);
  ~FencedInput() override;

 private:
  CommentFilter filter_;
  rlimit outside_;
};

// The blocks that are read: TAXA, ASSUMPTIONS, DATA and TREES, and no block of another name.
struct NexusBlocks {
  // For the file at `inputPath`, whose size sets the limits.
  explicit NexusBlocks(const char* inputPath);

  // Adds the blocks to the reader, and keeps NCL's messages away from standard error.
  void Register(NxsReader& reader);

  // Released in reverse: the others refer to the taxa.
  std::unique_ptr<NxsTaxaBlock> taxa;
  std::unique_ptr<NxsAssumptionsBlock> assumptions;
  std::unique_ptr<NxsTreesBlock> trees;
  std::unique_ptr<NxsDataBlock> data;
};

// The number of taxa that were read: rows of the matrix, each with a label. 0 without a DATA block,
// or after a failure in it.
unsigned TaxaRead(const NexusBlocks& blocks);

}  // namespace zorvek

#endif
