// One execution takes the bytes for a file that zorvek-wide is given and reads it as that does: whatever
// it is, it gives an alignment, or distances, or trees, or an error.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "core/index.h"
#include "wide/formats/tree_file.h"
#include "zorvek/error.h"
#include "zorvek/io.h"

namespace {

using namespace zorvek::wide;

bool IsAligned(const Alignment& alignment) {
  if (alignment.labels.size() != alignment.Taxa()) return false;
  for (const std::vector<StateSet>& cells : alignment.cells) {
    if (cells.size() != alignment.Sites()) return false;
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  try {
    if (!IsAligned(ReadAlignment(Source("file", text)))) std::abort();
  } catch (const Error&) {
  }
  try {
    const LabelledMatrix matrix = ReadMatrix(Source("file", text));
    if (zorvek::Index(matrix.distances.Size()) != matrix.labels.size()) std::abort();
  } catch (const Error&) {
  }
  try {
    TreeReader trees("file", text, {});
    for (Tree tree; trees.Next(tree);) {
      if (tree.preorder.size() != tree.nodes.size()) std::abort();
    }
  } catch (const Error&) {
  }
  return 0;
}
