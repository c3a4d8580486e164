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

void lookUp(const std::string& prefix, const std::string& text) {
  // Of its own: it keeps a set for every prefix that is asked for.
  TypeManager manager = fuzz::getTypes().manager;
  static_cast<void>(manager.getType(text));
  if (!prefix.empty()) static_cast<void>(manager.searchFpType(prefix, 1));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const unsigned bits = input.takeByte();
  const bool isLookedUp = bits >= 250;  // seldom: it searches folders
  const auto kind = static_cast<ResourceType>(bits % 5);
  const std::string prefix = input.takeText();
  const std::string text = input.takeRestAsText();

  const TypeId id = fuzz::getTypes().manager.toTypeId(text);
  requireReadsBack(id);
  changeScope(id);
  static_cast<void>(id.toLonFormat());
  static_cast<void>(fuzz::getTypes().manager.toFullTypeId(id, size % 2 == 0));

  TypeId named(kind, prefix, text);
  static_cast<void>(named.toLonFormatId());
  fuzz::require(named.fromLonFormatId(text) == !text.empty());
  requireReadsBack(named);
  changeScope(named);
  static_cast<void>(TypeId::stripPrefix(text));
  if (isLookedUp) lookUp(prefix, text);
  return 0;
}
