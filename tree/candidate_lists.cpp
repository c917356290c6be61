#include "tree/candidate_lists.h"
namespace zorvek {
void BuildCL() {}
}  // namespace zorvek
