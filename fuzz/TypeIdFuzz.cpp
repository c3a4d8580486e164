// Type identifiers: any text is read or refused, and what was written reads back the same.

#include "fuzz/Fuzzing.h"

using namespace zavri::korvat;

namespace {

// A scope that is no digit, or that masks all of the program ID, is kept until it is written.
void requireReadsBack(const TypeId& id) {
  TypeId written;
  written.fromString(id.toString());
  const bool hasSet = written.getProgId().isValid() && written.getScope() != Scope::InvalidScope;
  if (!written || !hasSet) return;
  TypeId again;
  again.fromString(written.toString());
  fuzz::require(again == written);
}

void changeScope(TypeId id) {
  int steps = 0;
  while (id.lowerScope()) fuzz::require(++steps <= 6);
  static_cast<void>(id.toString());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  // Of its own: it keeps a set for every prefix that is asked for.
  TypeManager manager = fuzz::getTypes().manager;
  const auto kind = static_cast<ResourceType>(input.takeByte() % 5);
  const std::string prefix = input.takeText();
  const std::string text = input.takeRestAsText();

  const TypeId id = manager.toTypeId(text);
  requireReadsBack(id);
  changeScope(id);
  static_cast<void>(id.toLonFormat());
  static_cast<void>(manager.toFullTypeId(id, size % 2 == 0));
  static_cast<void>(manager.getType(text));

  TypeId named(kind, prefix, text);
  static_cast<void>(named.toLonFormatId());
  fuzz::require(named.fromLonFormatId(text) == !text.empty());
  requireReadsBack(named);
  changeScope(named);
  static_cast<void>(TypeId::stripPrefix(text));
  if (!prefix.empty()) static_cast<void>(manager.searchFpType(prefix, 1));
  return 0;
}
