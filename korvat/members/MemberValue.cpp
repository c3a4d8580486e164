#include "korvat/members/MemberValue.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <type_traits>

#include "korvat/base/BinaryUtils.h"
#include "korvat/base/Logger.h"
#include "korvat/members/MemBitfield.h"
#include "korvat/members/MemFloat.h"
#include "korvat/members/MemRef.h"
#include "korvat/members/MemScalar.h"
#include "korvat/members/RawText.h"
#include "korvat/members/Value.h"
#include "korvat/types/TypeManager.h"
#include "korvat/types/VarType.h"

namespace zavri::korvat {

using base::Logger;

namespace {

// No raw value is larger: byte offsets have 31 bits.
constexpr std::uint64_t kMaxByteCount = INT32_MAX;

}  // namespace

MemberValue::MemberValue(TypeManager* typeManager, const VarType* typeContext,
                         const Value* topValue, const Member* member, std::vector<std::string> path,
                         std::int32_t byteOffset, std::int32_t elementIndex)
    : _typeManager(typeManager),
      _typeContext(typeContext),
      _topValue(topValue),
      _member(member),
      _byteOffset(std::max(byteOffset, -1)),
      _elementIndex(std::max(elementIndex, -1)),
      _path(std::move(path)) {
  if (member == nullptr || member->getKind() != Member::Kind::Ref || member->isArray()) return;

  const char* name = member->getProgName().c_str();
  Logger::debug("[MemberValue::MemberValue] trying to resolve ref for %s\n", name);
  const VarType* type = static_cast<const MemRef*>(member)->resolve(typeManager);
  _member = type == nullptr ? nullptr : type->getMember();
  if (_member == nullptr)
    Logger::debug("[MemberValue::operator [ix]] unresolved ref for %s\n", name);
}

bool MemberValue::isValid() const {
  return _typeManager != nullptr && _member != nullptr && _byteOffset >= 0;
}

std::string MemberValue::getPathText() const {
  std::string text;
  if (_topValue != nullptr && _topValue->getType() != nullptr) {
    text = _topValue->getType()->getName();
  }
  for (const std::string& name : _path) {
    if (!text.empty()) text += '.';
    text += name;
  }
  return text;
}

MemberValue MemberValue::operator[](std::int32_t index) const {
  if (index < 0 || !isWholeArray()) return MemberValue();
  MemberValue element = atElement(index);
  if (!element.isValid()) return element;

  if (element._path.empty()) element._path.emplace_back();
  element._path.back() += "[" + std::to_string(index) + "]";
  return element;
}

MemberValue MemberValue::atElement(std::int32_t index) const {
  MemberValue element = *this;
  if (index < 0) {
    element._elementIndex = std::max(_elementIndex, 0);
    return element;
  }
  const std::uint32_t count = _member == nullptr ? 0 : std::max(_member->getArraySize(), 1u);
  if (static_cast<std::uint32_t>(index) >= count || getElementSize() == 0) return MemberValue();
  element._elementIndex = index;
  return element;
}

NcType MemberValue::getNcType() const {
  if (_member == nullptr) return NcType::None;
  switch (_member->getKind()) {
    case Member::Kind::Scalar:
      return static_cast<const MemScalar*>(_member)->getNcType();
    case Member::Kind::Float:
      return static_cast<const MemFloat*>(_member)->getNcType();
    case Member::Kind::Bitfield:
    case Member::Kind::Enum:
      return NcType::UnsignedShort;
    case Member::Kind::Invalid:
    case Member::Kind::Ref:
    case Member::Kind::Aggregate:
      break;
  }
  return NcType::None;
}

unsigned MemberValue::getElementSize() const {
  return ncTypeSize(getNcType());
}

bool MemberValue::isWholeArray() const {
  return _member != nullptr && _member->isArray() && _elementIndex < 0;
}

bool MemberValue::isByteArray() const {
  return _member != nullptr && _member->getKind() == Member::Kind::Scalar &&
         static_cast<const MemScalar*>(_member)->isByteArray();
}

unsigned MemberValue::getByteCount() const {
  const std::uint64_t elementCount = isWholeArray() ? _member->getArraySize() : 1;
  const std::uint64_t byteCount = elementCount * getElementSize();
  return byteCount > kMaxByteCount ? 0 : static_cast<unsigned>(byteCount);
}

std::uint64_t MemberValue::getPosition() const {
  const auto element = static_cast<std::uint64_t>(std::max(_elementIndex, 0));
  unsigned step = getElementSize();
  if (_member->getKind() == Member::Kind::Bitfield) {
    // A walk leaves the byte only behind a field that ends it.
    const BitSlot& slot = static_cast<const MemBitfield*>(_member)->getSlot();
    if (slot.offset + slot.width < 8) step = 0;
  }
  return static_cast<std::uint64_t>(_byteOffset) + element * step;
}

base::Buffer* MemberValue::findBuffer(base::Buffer* buffer) const {
  if (buffer != nullptr) return buffer;
  return _topValue == nullptr ? nullptr : &_topValue->getBuffer();
}

base::Endianess MemberValue::getByteOrder() const {
  return _topValue == nullptr ? base::Endianess::Big : _topValue->getEndianess();
}

AccessStatus MemberValue::findBytes(unsigned byteCount, const base::Buffer* buffer,
                                    const std::uint8_t*& bytes) const {
  if (!isValid() || getByteCount() == 0) return AccessStatus::NotAccessible;
  const base::Buffer* source = buffer != nullptr ? buffer : findBuffer(nullptr);
  if (source == nullptr) {
    Logger::warning("[MemberValue::getValue] no top value object\n");
    return AccessStatus::NotAccessible;
  }

  const std::uint64_t position = getPosition();
  const std::uint64_t size = source->getSize();
  if (position > size || byteCount > size - position) return AccessStatus::OutOfRange;
  bytes = source->getData() + position;
  return AccessStatus::Exact;
}

AccessStatus MemberValue::getValue(void* destination, unsigned byteCount,
                                   const base::Buffer* buffer) const {
  const unsigned memberSize = getByteCount();
  if (byteCount == 0) return AccessStatus::NotAccessible;
  const std::uint8_t* source = nullptr;
  const AccessStatus status = findBytes(memberSize, buffer, source);
  if (status == AccessStatus::NotAccessible) return status;

  std::memset(destination, 0, byteCount);
  if (status != AccessStatus::Exact) return status;

  std::memcpy(destination, source, std::min(memberSize, byteCount));
  if (memberSize == byteCount) return AccessStatus::Exact;
  if (!isWholeArray()) return AccessStatus::DoesNotFit;
  return memberSize < byteCount ? AccessStatus::Truncated : AccessStatus::Exact;
}

AccessStatus MemberValue::setValue(const void* source, unsigned byteCount,
                                   base::Buffer* buffer) const {
  const unsigned memberSize = getByteCount();
  if (!isValid() || memberSize == 0 || byteCount == 0) return AccessStatus::NotAccessible;
  base::Buffer* target = findBuffer(buffer);
  if (target == nullptr) {
    Logger::warning("[MemberValue::setValue] no buffer\n");
    return AccessStatus::NotAccessible;
  }

  const std::uint64_t position = getPosition();
  const std::uint64_t end = position + memberSize;
  if (end > kMaxByteCount) return AccessStatus::NotAccessible;
  target->growTo(end);

  std::uint8_t* bytes = target->getData() + position;
  if (memberSize > byteCount) std::memset(bytes, 0, memberSize);
  std::memcpy(bytes, source, std::min(memberSize, byteCount));
  if (memberSize == byteCount) return AccessStatus::Exact;
  if (!isWholeArray()) return AccessStatus::DoesNotFit;
  return byteCount > memberSize ? AccessStatus::Truncated : AccessStatus::Exact;
}

template <typename T>
AccessStatus MemberValue::get(std::int32_t index, T& value) const {
  const MemberValue element = atElement(index);
  const NcType ncType = element.getNcType();
  if (!element.isValid() || ncTypeSize(ncType) == 0) return AccessStatus::NotAccessible;

  std::array<std::uint8_t, 8> bytes{};
  const AccessStatus status = element.getValue(bytes.data(), ncTypeSize(ncType));
  if (status == AccessStatus::NotAccessible) return status;
  if (_member->getKind() == Member::Kind::Bitfield) {
    bytes[0] = extractBits(bytes[0], static_cast<const MemBitfield*>(_member)->getSlot());
  }
  const AccessStatus converted = readField(ncType, bytes.data(), getByteOrder(), value);
  return status == AccessStatus::Exact ? converted : status;
}

template <typename T>
AccessStatus MemberValue::set(std::int32_t index, T value) const {
  const MemberValue element = atElement(index);
  const NcType ncType = element.getNcType();
  if (!element.isValid() || ncTypeSize(ncType) == 0) return AccessStatus::NotAccessible;
  if (_member->getKind() == Member::Kind::Bitfield) {
    std::int64_t integer = 0;
    std::array<std::uint8_t, 8> bytes{};
    // A number that is no whole one, or beyond 32 bits, fits no bit field.
    const AccessStatus status =
        writeField(NcType::SignedQuad, value, base::Endianess::Big, bytes.data());
    if (status != AccessStatus::Exact) return AccessStatus::OutOfRange;
    integer = readInteger(NcType::SignedQuad, bytes.data(), base::Endianess::Big);
    const AccessStatus written = element.setBitfield(integer);
    if (written == AccessStatus::Exact) {
      element.reportOutOfRange(integer, static_cast<double>(integer));
    }
    return written;
  }

  std::array<std::uint8_t, 8> bytes{};
  const AccessStatus converted = writeField(ncType, value, getByteOrder(), bytes.data());
  const AccessStatus status = element.setValue(bytes.data(), ncTypeSize(ncType));
  if (status != AccessStatus::Exact) return status;

  std::int64_t integer = 0;
  static_cast<void>(readField(ncType, bytes.data(), getByteOrder(), integer));
  element.reportOutOfRange(integer, readDouble(ncType, bytes.data(), getByteOrder()));
  return converted;
}

std::uint8_t MemberValue::getBitfield(const base::Buffer* buffer) const {
  if (_member == nullptr || _member->getKind() != Member::Kind::Bitfield) return 0;
  std::uint8_t byte = 0;
  if (atElement(-1).getValue(&byte, 1, buffer) != AccessStatus::Exact) return 0;
  return extractBits(byte, static_cast<const MemBitfield*>(_member)->getSlot());
}

AccessStatus MemberValue::setBitfield(std::int64_t value, base::Buffer* buffer) const {
  if (!isValid() || isWholeArray()) return AccessStatus::NotAccessible;
  if (_member->getKind() != Member::Kind::Bitfield) return AccessStatus::NotAccessible;

  const BitSlot& slot = static_cast<const MemBitfield*>(_member)->getSlot();
  std::uint8_t byte = 0;
  const base::Buffer* source = findBuffer(buffer);
  if (source == nullptr) return setValue(&byte, 1, nullptr);  // which tells what is missing
  static_cast<void>(getValue(&byte, 1, source));
  const AccessStatus status = insertBits(value, slot, byte);
  return status == AccessStatus::Exact ? setValue(&byte, 1, buffer) : status;
}

std::string MemberValue::getText(base::CharEncoding encoding) const {
  if (_member == nullptr || _member->getKind() != Member::Kind::Scalar) return "";
  const std::uint8_t* bytes = nullptr;
  if (findBytes(getByteCount(), nullptr, bytes) != AccessStatus::Exact) return "";
  return readText(bytes, getByteCount(), encoding, getByteOrder());
}

AccessStatus MemberValue::setText(const std::string& utf8, base::CharEncoding encoding) const {
  if (_member == nullptr || _member->getKind() != Member::Kind::Scalar) {
    return AccessStatus::NotAccessible;
  }
  bool isCut = false;
  const base::Buffer bytes = writeText(utf8, getByteCount(), encoding, getByteOrder(), isCut);
  const AccessStatus status = setValue(bytes.getData(), bytes.getSize());
  return status == AccessStatus::Exact && isCut ? AccessStatus::Truncated : status;
}

std::string MemberValue::getRawHex(std::int32_t count) const {
  if (!isByteArray()) {
    Logger::debug("[MemberValue::getRawHex] invalid type size %ld: %s\n",
                  static_cast<long>(getElementSize()), getPathText().c_str());
    return "";
  }
  MemberValue whole = *this;
  whole._elementIndex = -1;
  const unsigned size = whole.getByteCount();
  const unsigned wanted = count < 0 ? size : std::min(static_cast<unsigned>(count), size);
  const std::uint8_t* bytes = nullptr;
  if (whole.findBytes(wanted, nullptr, bytes) != AccessStatus::Exact) return "";

  std::string text;
  util::BinaryUtils::bufferToString(text, bytes, wanted);
  return text;
}

AccessStatus MemberValue::setRawHex(const std::string& hex) const {
  if (!isByteArray()) {
    Logger::debug("[MemberValue::setRawHex] invalid type size %ld: %s\n",
                  static_cast<long>(getElementSize()), getPathText().c_str());
    return AccessStatus::NotAccessible;
  }
  MemberValue whole = *this;
  whole._elementIndex = -1;
  base::Buffer bytes;
  util::BinaryUtils::stringToBuffer(bytes, hex, 0);
  bytes.setSize(whole.getByteCount());
  return whole.setValue(bytes.getData(), bytes.getSize());
}

bool MemberValue::isInRange(std::int64_t integer, double floating) const {
  if (_member == nullptr) throw "no member def";
  switch (_member->getKind()) {
    case Member::Kind::Scalar:
      return static_cast<const MemScalar*>(_member)->isInRange(integer);
    case Member::Kind::Float:
      return static_cast<const MemFloat*>(_member)->isInRange(floating);
    case Member::Kind::Bitfield:
      return static_cast<const MemBitfield*>(_member)->isInRange(
          static_cast<std::int16_t>(integer));
    case Member::Kind::Invalid:
    case Member::Kind::Ref:
    case Member::Kind::Enum:
    case Member::Kind::Aggregate:
      break;
  }
  return true;
}

void MemberValue::reportOutOfRange(std::int64_t integer, double floating) const {
  if (isInRange(integer, floating) || !_typeManager->isShowWarnings()) return;
  Logger::warning("[korvat] value out of range for %s: [%f][%lld]\n", getPathText().c_str(),
                  floating, static_cast<long long>(integer));
}

// clang-format off
template KORVAT_API AccessStatus MemberValue::get(std::int32_t, std::int8_t&) const;
template KORVAT_API AccessStatus MemberValue::get(std::int32_t, std::uint8_t&) const;
template KORVAT_API AccessStatus MemberValue::get(std::int32_t, std::int16_t&) const;
template KORVAT_API AccessStatus MemberValue::get(std::int32_t, std::uint16_t&) const;
template KORVAT_API AccessStatus MemberValue::get(std::int32_t, std::int32_t&) const;
template KORVAT_API AccessStatus MemberValue::get(std::int32_t, std::uint32_t&) const;
template KORVAT_API AccessStatus MemberValue::get(std::int32_t, std::int64_t&) const;
template KORVAT_API AccessStatus MemberValue::get(std::int32_t, float&) const;
template KORVAT_API AccessStatus MemberValue::get(std::int32_t, double&) const;
template KORVAT_API AccessStatus MemberValue::set(std::int32_t, std::int8_t) const;
template KORVAT_API AccessStatus MemberValue::set(std::int32_t, std::uint8_t) const;
template KORVAT_API AccessStatus MemberValue::set(std::int32_t, std::int16_t) const;
template KORVAT_API AccessStatus MemberValue::set(std::int32_t, std::uint16_t) const;
template KORVAT_API AccessStatus MemberValue::set(std::int32_t, std::int32_t) const;
template KORVAT_API AccessStatus MemberValue::set(std::int32_t, std::uint32_t) const;
template KORVAT_API AccessStatus MemberValue::set(std::int32_t, std::int64_t) const;
template KORVAT_API AccessStatus MemberValue::set(std::int32_t, std::uint64_t) const;
template KORVAT_API AccessStatus MemberValue::set(std::int32_t, float) const;
template KORVAT_API AccessStatus MemberValue::set(std::int32_t, double) const;
// clang-format on

}  // namespace zavri::korvat
