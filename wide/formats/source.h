// Where text comes from: a file, a pipe or standard input, plain or compressed by gzip.
#ifndef ZORVEK_WIDE_FORMATS_SOURCE_H
#define ZORVEK_WIDE_FORMATS_SOURCE_H

#include <cstddef>
#include <memory>
#include <string>

struct gzFile_s;

namespace zorvek::wide {

// Gives its bytes once, from the first to the last, so that a pipe serves as well as a file.
class Source {
 public:
  // The file at the path, or standard input for "-". Throws Error if it cannot be opened.
  explicit Source(const std::string& path);

  // A text that is in memory already, named in messages as if it came from the file `name`.
  Source(const std::string& name, std::string text);

  // As messages name it.
  const std::string& Name() const { return name_; }

  // Puts the next bytes to `to`, `most` of them at most, and returns how many; 0 at the end. Throws
  // Error if it cannot be read, or if its compressed content is broken or ends too early.
  std::size_t Read(char* to, std::size_t most);

 private:
  struct Close {
    void operator()(gzFile_s* file) const;
  };

  std::string name_;
  std::unique_ptr<gzFile_s, Close> file_;  // null when the text is in memory
  std::string text_;
  std::size_t at_ = 0;
};

}  // namespace zorvek::wide

#endif
