// JSON to raw values: any text is refused with a reason or gives bytes that convert back.

#include "fuzz/RoundTrip.h"

using namespace zavri::korvat;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const fuzz::ValueCase the(input);
  zavri::json::Value value;
  std::string error;
  if (!zavri::json::Value::parse(input.takeRestAsText(), value, error)) {
    fuzz::require(!error.empty());
    return 0;
  }

  zavri::base::Buffer raw;
  JsonConverter converter(&the.manager, the.type, the.order, the.allowSeveralUnionMembers);
  if (converter.jsonToRaw(value, raw)) {
    fuzz::requireRest(the, raw);
  } else {
    fuzz::require(!converter.getProblems().empty());
  }
  zavri::base::Buffer patched = raw;
  static_cast<void>(converter.patchRaw(value, patched));
  return 0;
}
