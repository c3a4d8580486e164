// Raw values to JSON: any bytes of any type give a text that reads back as what was converted.

#include "fuzz/RoundTrip.h"

using namespace zavri::korvat;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const fuzz::ValueCase the(input);
  const zavri::base::Buffer raw = input.takeRest();

  zavri::json::Value value;
  JsonConverter converter(&the.manager, the.type, the.order, the.allowSeveralUnionMembers);
  const bool isConverted = converter.rawToJson(raw, value);
  const std::string text = value.stringify();
  zavri::json::Value parsed;
  std::string error;
  fuzz::require(zavri::json::Value::parse(text, parsed, error));
  if (!isConverted) return 0;

  fuzz::requireRest(the, raw);
  return 0;
}
