#include "tests/files.h"

#include <fcntl.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

namespace zorvek::test {

std::string Contents(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != text.npos;
}

std::vector<std::string> FindAll(const std::string& text, const std::string& pattern) {
  const std::regex expression(pattern);
  std::vector<std::string> found;
  for (std::sregex_iterator match(text.begin(), text.end(), expression), end; match != end;
       ++match) {
    found.push_back(match->str(1));
  }
  return found;
}

FolderTest::FolderTest() : folder_(testing::TempDir() + "zorvek_XXXXXX") {
  if (mkdtemp(folder_.data()) == nullptr) throw fs::filesystem_error("no folder", {});
}

FolderTest::~FolderTest() {
  fs::remove_all(folder_);
}

void FolderTest::Write(const std::string& name, const std::string& text) const {
  std::ofstream(Path(name), std::ios::binary) << text;
}

void FolderTest::WriteExample() const {
  fs::copy(ZORVEK_SOURCE_DIR "/examples/primates.nex", Path("primates.nex"));
}

std::vector<std::string> FolderTest::Files() const {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder_)) {
    const std::string name = entry.path().filename().string();
    if (name[0] != '.') names.push_back(name);
  }
  std::sort(names.begin(), names.end());
  return names;
}

Ended FolderTest::Shell(const std::string& command) const {
  const int status =
      std::system(("cd '" + folder_ + "' && { " + command + "; } >.out 2>.err").c_str());
  return {WEXITSTATUS(status), Read(".out"), Read(".err")};
}

Terminal::Terminal() {
  char name[1000];
  if (openpty(&ours_, &programs_, name, nullptr, nullptr) != 0) return;
  name_ = name;
  fcntl(ours_, F_SETFL, O_NONBLOCK);
}

Terminal::~Terminal() {
  close(ours_);
  close(programs_);
}

std::string Terminal::Shown() const {
  std::string shown;
  char buffer[1000];
  for (ssize_t got; (got = read(ours_, buffer, sizeof buffer)) > 0;) {
    shown.append(buffer, static_cast<std::size_t>(got));
  }
  return shown;
}

}  // namespace zorvek::test
