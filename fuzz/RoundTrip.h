#pragma once

#include "fuzz/Fuzzing.h"
#include "korvat/base/Value.h"
#include "korvat/convert/JsonConverter.h"

namespace zavri::korvat::fuzz {

// Decodes and encodes a raw value twice. The first time may change it: what cannot be expressed in
// JSON is dropped, numbers are cut to their limits, one alternative of a union is chosen. Then it
// must be at rest. Several alternatives of one union, each cut to its limits over the one before,
// take longer: they are left out.
inline void requireRest(const ValueCase& the, const base::Buffer& raw) {
  constexpr int kRounds = 2;
  if (the.allowSeveralUnionMembers) return;

  JsonConverter converter(&the.manager, the.type, the.order, the.allowSeveralUnionMembers);
  base::Buffer last = raw;
  for (int round = 1; round <= kRounds; ++round) {
    json::Value value;
    if (!converter.rawToJson(last, value)) return;
    base::Buffer next;
    if (!converter.jsonToRaw(value, next)) {
      require(!converter.getProblems().empty());
      return;
    }
    if (round == kRounds) require(next == last);
    last = next;
  }
}

}  // namespace zavri::korvat::fuzz
