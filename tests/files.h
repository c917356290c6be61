// Files and whole runs of programs, for the tests that look at them.
#ifndef ZORVEK_TESTS_FILES_H
#define ZORVEK_TESTS_FILES_H

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>

#include "tests/prelude.h"

namespace zorvek::test {

namespace fs = std::filesystem;
using std::string;

std::string Contents(const std::string& path);

bool Contains(const std::string& text, const std::string& part);

// The first groups of all matches, in order.
std::vector<std::string> FindAll(const std::string& text, const std::string& pattern);

struct Ended {
  int status;  // as the shell gives it: above 128 after a signal
  std::string out;
  std::string err;
};

// In the shell: waits until a program in the background searches on three threads (one listens to signals).
const string kAwaitSearch =
    "while kill -0 $! && [ $(ls /proc/$!/task | wc -l) -lt 4 ]; do :; done; ";

// A folder of its own for each test, in which the programs run.
class FolderTest : public testing::Test {
 protected:
  FolderTest();
  ~FolderTest() override;

  std::string Path(const std::string& name) const { return folder_ + "/" + name; }
  void Write(const std::string& name, const std::string& text) const;
  void WriteExample() const;  // primates.nex
  std::string Read(const std::string& name) const { return Contents(Path(name)); }

  // The names of all files, sorted.
  std::vector<std::string> Files() const;

  // Runs a shell command in the folder.
  Ended Shell(const std::string& command) const;

 private:
  std::string folder_;
};

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

// A terminal for a program to write to.
class Terminal {
 public:
  Terminal();
  ~Terminal();
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  const std::string& Name() const { return name_; }  // empty if the machine lends none
  std::string Shown() const;                         // all so far

 private:
  int ours_ = -1, programs_ = -1;
  std::string name_;
};

}  // namespace zorvek::test

#endif
