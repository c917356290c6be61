#include "output/tree_writer.h"

#include <ncl/ncl.h>

#include "driver/run_state.h"

namespace zorvek {

namespace {

void PrintChild(TreeTable tree, int child) {
  if (child >= n) {
    PrintInNewickFormat(tree, child - n);
    return;
  }
  NxsString label = taxa->GetTaxonLabel(static_cast<unsigned>(child));
  outf << label.BlanksToUnderscores();
}

}  // namespace

void PrintTree(const char* path) {
  outf.open(std::string(path) + ".phylogeny");
  outf << "#NEXUS\n\n\nBegin trees;\n\ntree PAUP_1=";
  PrintInNewickFormat(OPT, n - 2);
  outf << ";\n\nEnd;" << std::endl;
  outf.close();
}

void PrintInNewickFormat(TreeTable tree, int row) {
  const double* node = tree[row];
  outf << '(';
  PrintChild(tree, Id(node, kLeft));
  outf << ':' << node[kLeftLength] << ',';
  PrintChild(tree, Id(node, kRight));
  outf << ':' << node[kRightLength] << ')';
}

std::string itos(int value) {
  return std::to_string(value);
}

}  // namespace zorvek
