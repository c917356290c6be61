// Files that are there whole or not at all.
#ifndef ZORVEK_WIDE_PROGRAM_OUTPUT_FILE_H
#define ZORVEK_WIDE_PROGRAM_OUTPUT_FILE_H

#include <string>

namespace zorvek::wide {

// One file to be written. It is made at once, under a temporary name in the folder of `path`, so
// that a folder that cannot be written is found out before the work and not after it; what stood at
// `path` stays until Commit. A path that is no regular file (a terminal, a pipe, /dev/null) is
// written directly. All functions but the destructor throw Error.
class OutputFile {
 public:
  explicit OutputFile(const std::string& path);
  ~OutputFile();  // removes the temporary file if there was no Commit
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  void Write(const std::string& text);

  // Puts what was written in the place of `path`, in one step.
  void Commit();

  const std::string& Path() const { return path_; }

 private:
  [[noreturn]] void Fail() const;

  std::string path_;       // as the user gave it
  std::string target_;     // the same, links followed
  std::string temporary_;  // empty when the target is written directly
  int descriptor_ = -1;
};

}  // namespace zorvek::wide

#endif
