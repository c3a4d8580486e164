// Member paths and typed access: any path leads to a member or to none, no access leaves the
// buffer, and what was written exactly reads back.

#include <cstring>
#include <iterator>

#include "fuzz/Fuzzing.h"
#include "korvat/members/Value.h"

using namespace zavri::korvat;

namespace {

template <typename T>
void setAndGet(const MemberValue& member, std::int32_t index, T value) {
  if (member.set(index, value) != AccessStatus::Exact) return;
  T read{};
  fuzz::require(member.get(index, read) == AccessStatus::Exact);
  fuzz::require(read == value || value != value);  // NaN is written too
}

template <typename T>
T takeAs(fuzz::Input& input) {
  const zavri::base::Buffer bytes = input.takeBytes(sizeof(T));
  T value{};
  if (bytes.getSize() > 0) std::memcpy(&value, bytes.getData(), bytes.getSize());
  return value;
}

void accessAsText(const MemberValue& member, fuzz::Input& input) {
  using zavri::base::CharEncoding;
  constexpr CharEncoding kEncodings[] = {CharEncoding::Iso8859_1, CharEncoding::Utf8,
                                         CharEncoding::Utf16, CharEncoding::Utf32};
  const CharEncoding encoding = kEncodings[input.takeByte() % std::size(kEncodings)];
  const std::string text = input.takeText();
  // Characters that the encoding has not are replaced; what was read back is whole.
  static_cast<void>(member.setText(text, encoding));
  const std::string read = member.getText(encoding);
  if (member.setText(read, encoding) == AccessStatus::Exact) {
    fuzz::require(member.getText(encoding) == read);
  }
  static_cast<void>(member.setRawHex(member.getRawHex(input.takeByte() - 1)));
  static_cast<void>(member.setRawHex(text));
}

void access(const MemberValue& member, fuzz::Input& input) {
  const unsigned operation = input.takeByte();
  const auto index = static_cast<std::int32_t>(static_cast<std::int8_t>(input.takeByte()));
  switch (operation % 10) {
    case 0:
      return setAndGet(member, index, takeAs<std::uint8_t>(input));
    case 1:
      return setAndGet(member, index, takeAs<std::int8_t>(input));
    case 2:
      return setAndGet(member, index, takeAs<std::uint16_t>(input));
    case 3:
      return setAndGet(member, index, takeAs<std::int16_t>(input));
    case 4:
      return setAndGet(member, index, takeAs<std::uint32_t>(input));
    case 5:
      return setAndGet(member, index, takeAs<std::int32_t>(input));
    case 6:
      return setAndGet(member, index, takeAs<float>(input));
    case 7:
      return setAndGet(member, index, takeAs<double>(input));
    case 8:
      return accessAsText(member, input);
    default:
      break;
  }
  static_cast<void>(member.getBitfield());
  static_cast<void>(member.setBitfield(index));
  static_cast<void>(member.getPathText());
  if (member.getMember() != nullptr) static_cast<void>(member.isInRange(index, index));
  const MemberValue element = member[index];
  static_cast<void>(element.getDouble());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const fuzz::ValueCase the(input);
  const std::string path = input.takeText();
  zavri::base::Buffer raw = input.takeBytes(input.takeByte());

  const Value value(&the.manager, &the.type, the.order, raw);
  access(value[path], input);
  access(value[path], input);
  return 0;
}
