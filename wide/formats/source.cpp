// zlib's reader passes on what is not compressed as it is, without a copy.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "zorvek/error.h"
#include "zorvek/io.h"

namespace zorvek::wide {

namespace {

constexpr unsigned kLargest = 1u << 30;  // of one read: zlib counts in int

[[noreturn]] void Refuse(const std::string& name, const std::string& why) {
  throw Error(Fault{name, 0, 0, "cannot be read: " + why + "; name a file that can be"});
}

}  // namespace

void Source::Close::operator()(gzFile_s* file) const {
  gzclose_r(file);
}

Source::Source(const std::string& path) : name_(path == "-" ? "standard input" : path) {
  const int descriptor = path == "-" ? dup(STDIN_FILENO) : open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) Refuse(name_, std::strerror(errno));
  struct stat status;
  if (fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode)) {
    size_ = static_cast<double>(status.st_size);
  }
  file_.reset(gzdopen(descriptor, "rb"));
  if (!file_) {
    close(descriptor);
    throw std::bad_alloc();
  }
}

Source::Source(const std::string& name, std::string text) : name_(name), text_(std::move(text)) {}

void Source::TellProgress(std::function<void(double)> tell) {
  if (size_ > 0) tell_ = std::move(tell);
}

std::size_t Source::Read(char* to, std::size_t most) {
  if (!file_) {
    const std::size_t count = text_.copy(to, most, at_);
    at_ += count;
    return count;
  }
  errno = 0;
  const int count =
      gzread(file_.get(), to, static_cast<unsigned>(std::min<std::size_t>(most, kLargest)));
  if (count > 0) {
    if (tell_) tell_(static_cast<double>(gzoffset(file_.get())) / size_);
    return static_cast<std::size_t>(count);
  }
  int error = Z_OK;
  const std::string message = gzerror(file_.get(), &error);
  if (error == Z_ERRNO) Refuse(name_, std::strerror(errno));
  if (error != Z_OK && error != Z_STREAM_END) {
    const std::size_t name = message.rfind(": ");  // zlib's own for the file
    throw Error(Fault{name_, 0, 0,
                      "its gzip compression is broken or ends too early (" +
                          message.substr(name == message.npos ? 0 : name + 2) +
                          "); make the file again"});
  }
  return 0;
}

}  // namespace zorvek::wide
