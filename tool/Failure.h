#pragma once

#include <stdexcept>
#include <string>

namespace zavri::korvat::tool {

// Exit status of the program. Scripts rely on the numbers.
enum ExitStatus : int {
  kDone = 0,
  kProblem = 1,     // some value or file has a problem
  kWrongUsage = 2,  // the command line cannot be understood
  kNotFound = 3,    // no catalogue, or no such type
};

// Ends a command: the message goes to standard error as one line, the status to the shell.
class Failure : public std::runtime_error {
 public:
  Failure(ExitStatus status, const std::string& message)
      : std::runtime_error(message), _status(status) {}

  ExitStatus getStatus() const { return _status; }

 private:
  ExitStatus _status;
};

}  // namespace zavri::korvat::tool
