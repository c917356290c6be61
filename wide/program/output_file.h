// Files that are there whole or not at all.
#ifndef ZORVEK_WIDE_PROGRAM_OUTPUT_FILE_H
#define ZORVEK_WIDE_PROGRAM_OUTPUT_FILE_H

#include <functional>
#include <mutex>
#include <string>

namespace zorvek::wide {

// What takes a text in pieces.
using Sink = std::function<void(const std::string&)>;

// The descriptor that a path stands for: "-" and /dev/stdout are 1, /dev/stdin 0, /dev/fd/N is N;
// -1 for every other path.
int DescriptorNamed(const std::string& path);

// One file to be written: found to be writable before the work, then written whole beside its place
// under a temporary name, then put there in one step. A link stays a link. A descriptor, a pipe, a
// terminal or another device has no place of its own and is written directly.
// All functions but Discard and the destructor throw Error.
class OutputFile {
 public:
  explicit OutputFile(const std::string& path);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  bool IsDirect() const { return descriptor_ >= 0; }

  // Writes all that `content` puts into the sink it is given. A reader of a pipe may have left: that is its
  // own affair and no fault. The lock is held while a temporary file comes into being, so that whoever
  // holds it knows all.
  void Write(const std::function<void(const Sink&)>& content, std::mutex& lock);

  // Puts what was written in the place of `path`. Requires: Write.
  void Commit();

  // Removes the temporary file, if there is one.
  void Discard();

 private:
  [[noreturn]] void Fail() const;
  std::string TemporaryName() const;
  void Put(int descriptor, const std::string& text) const;

  std::string path_;       // as the user gave it
  std::string target_;     // the same, links followed
  std::string temporary_;  // empty while there is none
  int descriptor_ = -1;    // of what is written directly
};

}  // namespace zorvek::wide

#endif
