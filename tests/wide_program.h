// Runs of zorvek-wide, for the tests that look at them.
#ifndef ZORVEK_TESTS_WIDE_PROGRAM_H
#define ZORVEK_TESTS_WIDE_PROGRAM_H

#include <string>

#include "tests/files.h"

namespace zorvek::test {

class WideProgramTest : public FolderTest {
 protected:
  Ended Run(const std::string& arguments) const {
    return Shell(std::string(ZORVEK_WIDE_PROGRAM) + " " + arguments);
  }

  // The Newick text for the file.
  std::string Tree(const std::string& arguments) const {
    const Ended ended = Run(arguments + " --quiet --newick tree");
    EXPECT_EQ(ended.status, 0) << arguments;
    EXPECT_EQ(ended.out + ended.err, "") << arguments;
    return Read("tree");
  }
};

}  // namespace zorvek::test

#endif
