#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "korvat/base/Buffer.h"
#include "korvat/base/Value.h"
#include "korvat/types/TypeId.h"
#include "korvat/types/TypeManager.h"

namespace zavri::test {

// Values of every type of the catalogue that comes with the library, with what one thread alone
// makes of them. Not changed once it is made: readable from any number of threads.
class Workload {
 public:
  struct Sample {
    korvat::TypeId id;
    base::Buffer raw;
    bool isConverted;       // from raw to JSON
    std::string json;       // what comes out then, whether or not it succeeds
    json::Value value;      // the same as a tree
    bool isConvertedBack;   // and that from JSON to raw
    base::Buffer rawAgain;  // what comes out then
  };

  // Throws std::runtime_error when the catalogue has no types.
  Workload();

  const std::vector<Sample>& samples() const { return _samples; }

  // A manager over the catalogue that has read nothing yet.
  static korvat::TypeManager makeManager();
  // Reads all files of the catalogue.
  static void load(korvat::TypeManager& manager);

  // Converts sample number `index`, modulo their count, from raw to JSON or, for an odd `round`,
  // back. Empty when the outcome is the expected one, else what was wrong.
  std::string convert(korvat::TypeManager& manager, std::size_t index, std::size_t round) const;

 private:
  void add(korvat::TypeManager& manager, const korvat::TypeId& id, unsigned fill);

  std::vector<Sample> _samples;
};

}  // namespace zavri::test
