#include <csignal>
#include <exception>
#include <iostream>
#include <sstream>
#include <string>
#include <system_error>

#include "wide/program/messages.h"
#include "wide/program/options.h"
#include "wide/program/run.h"

namespace {

// Every line stands by itself, unless it is indented.
void Tell(const std::string& faults) {
  std::istringstream lines(faults);
  for (std::string line; std::getline(lines, line);) {
    std::cerr << (line[0] == ' ' ? "" : "zorvek-wide: ") << line << '\n';
  }
}

}  // namespace

int main(int argc, char** argv) {
  using namespace zorvek::wide;  // NOLINT(google-build-using-namespace)
  // Whoever reads the standard output may leave; the files are written all the same. A file that
  // grows beyond the limit is a fault to be told.
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  try {
    Options options;
    int status = 0;
    if (ParseOptions(argc, argv, options, status)) Run(options);
    return status;
  } catch (const std::bad_alloc&) {
    Tell("not enough memory; give fewer --threads or fewer taxa");
  } catch (const std::system_error& fault) {
    Tell(std::string("no thread can be begun (") + fault.what() +
         "); raise the limits of memory and processes");
  } catch (const Error& error) {
    Tell(Message(error));
  } catch (const std::exception& fault) {
    Tell(fault.what());
  }
  return 1;
}
