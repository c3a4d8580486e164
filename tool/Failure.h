#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "korvat/base/Value.h"

namespace zavri::korvat::tool {

// Exit status of the program. Scripts rely on the numbers.
enum ExitStatus : int {
  kDone = 0,
  kProblem = 1,     // some value or file has a problem
  kWrongUsage = 2,  // the command line cannot be understood
  kNotFound = 3,    // no catalogue, or no such type
};

// Ends a command: the message goes to standard error as one line, the status to the shell. For
// programs that read errors, details can be added: "type", "member" (a path), "byte" and "bit" of
// the value, "given", "expected", "nearest" (names that may have been meant).
class Failure : public std::runtime_error {
 public:
  Failure(ExitStatus status, const std::string& message)
      : std::runtime_error(message), _status(status) {
    _details.switchType(json::JsonType::Object);
  }

  Failure& with(const std::string& name, const json::Value& detail) {
    _details[name] = detail;
    return *this;
  }
  Failure& with(const std::string& name, const std::vector<std::string>& detail) {
    for (std::size_t i = 0; i < detail.size(); ++i) {
      _details[name][static_cast<unsigned>(i)] = detail[i];
    }
    return *this;
  }

  ExitStatus getStatus() const { return _status; }
  const json::Value& getDetails() const { return _details; }

 private:
  ExitStatus _status;
  json::Value _details;
};

}  // namespace zavri::korvat::tool
