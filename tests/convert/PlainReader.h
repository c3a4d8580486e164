#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "korvat/base/Endianess.h"
#include "korvat/base/Value.h"
#include "korvat/members/MemAggregate.h"
#include "korvat/members/MemBitfield.h"
#include "korvat/members/MemEnum.h"
#include "korvat/members/MemFloat.h"
#include "korvat/members/MemRef.h"
#include "korvat/members/MemScalar.h"
#include "korvat/types/EnumType.h"
#include "korvat/types/TypeManager.h"
#include "korvat/types/VarType.h"
#include "tests/convert/PlainText.h"
#include "tests/convert/RandomTypes.h"

// A second reading of member trees and raw values, that shares no walk and no arithmetic with the
// library, and draws the values that the round trips start from.
namespace zavri::test {

// A part of a value that JSON holds in one node.
struct Leaf {
  struct Step {
    std::string name;  // of a member; empty for an element
    unsigned index = 0;
  };

  const korvat::Member* member = nullptr;  // null for a union that is hexadecimal text
  TextForm text = TextForm::None;
  std::vector<Step> path;
  unsigned bytePos = 0;
  unsigned byteCount = 0;
  // Of the element count of a dynamic array: elements that there is room for. Else -1.
  std::int64_t largestCount = -1;
  bool fillsArray = false;  // a text whose length is the count
};

// One value in all its forms.
struct PlainValue {
  Bytes bytes;
  Bytes mask;  // bits that members cover
  json::Value json;
  std::vector<Leaf> leaves;
  bool overlaps = false;     // two leaves share a bit
  bool leavesUnion = false;  // a leaf of a union lies outside of the bytes of the union
  bool hasWideText = false;  // text whose characters are wider than the elements of its array
};

// Draws and reads the values of one tree under the options of the manager. Which values come back
// from JSON as the same bits, all others being left out:
//
//   bits that no member covers   are not in the JSON; all comparisons leave them out
//   limits                       a number outside of them is cut, or refused; the invalid marker is
//                                always taken
//   multiplier 0                 shows every raw number as 0, which comes back as raw -c
//   scaled floats                are snapped to whole raw numbers on the way back: whole ones up
//                                to 2^20 only, -0.0 not, and 0 without an offset c, whose error is
//                                all that is left of it; in doubles, where each error in the last
//                                place shows, with exponents from 0 on only
//   scaled integers              all of them: with exponents from -20 to 20 the error of the
//                                calculation stays far below half a raw step
//   NaN                          as the one quiet NaN: its other bits may change between single
//                                and double; JSON text has neither NaN nor infinities
//   text                         well formed in its encoding, and zeros behind the first zero
//   counts                       up to what their array holds; the count of a text is the length of
//                                the text, which so fills its array
//   bits that members share      (alternatives of a union; a bit field at the start of a byte
//                                that does not end it, with what follows in the same byte) when
//                                all of them can hold what stands there
class PlainReader {
 public:
  // `isForText`: the numbers go through JSON text.
  PlainReader(korvat::TypeManager& manager, base::Endianess order, bool isForText)
      : _manager(manager), _order(order), _isForText(isForText) {}

  // Draws a value that comes back from JSON. False when none was found: members that share bits may
  // leave none.
  bool draw(const korvat::Member& root, Random& random, PlainValue& value) {
    constexpr unsigned kMaxPasses = 12;
    _random = &random;
    value.bytes.clear();
    for (unsigned pass = 0; pass < kMaxPasses; ++pass) {
      _drawsAll = pass == 0;
      _hasChanged = false;
      _isHopeless = false;
      read(root, value);
      if (_isHopeless) return false;
      if (!_hasChanged) return true;
    }
    return false;
  }

  // Draws what one leaf holds anew.
  void redraw(const Leaf& leaf, Random& random, Bytes& bytes) {
    _random = &random;
    drawLeaf(leaf, bytes);
  }

  json::Value toJson(const Leaf& leaf, const Bytes& bytes) const {
    json::Value node;
    if (leaf.member == nullptr) {
      node.setValue(toHex(bytes, leaf.bytePos, leaf.byteCount));
    } else if (leaf.text != TextForm::None) {
      node.setValue(readPlainText(cut(leaf, bytes), leaf.text, _order).value_or(""));
    } else {
      setNumber(leaf, bytes, node);
    }
    return node;
  }

  // The bits that the leaf covers in each of its bytes.
  static std::uint8_t maskOf(const Leaf& leaf) {
    if (leaf.member == nullptr || leaf.member->getKind() != Kind::Bitfield) return 0xFF;
    const korvat::BitSlot& slot = static_cast<const korvat::MemBitfield&>(*leaf.member).getSlot();
    return static_cast<std::uint8_t>(((1u << slot.width) - 1) << (8 - slot.offset - slot.width));
  }

  static std::string toHex(const Bytes& bytes, std::size_t pos, std::size_t byteCount) {
    constexpr const char* kDigits = "0123456789ABCDEF";
    std::string hex;
    for (std::size_t i = pos; i < pos + byteCount; ++i) {
      hex += kDigits[bytes[i] / 16];
      hex += kDigits[bytes[i] % 16];
    }
    return hex;
  }

 private:
  using Kind = korvat::Member::Kind;

  // --- The walk ---

  void read(const korvat::Member& root, PlainValue& value) {
    _value = &value;
    value.mask.clear();
    value.leaves.clear();
    value.json.clear();
    value.overlaps = false;
    value.leavesUnion = false;
    value.hasWideText = false;
    _bytePos = 0;
    _end = 0;
    _isByteOpen = false;
    _count = -1;
    _selectedWidth = -1;
    _followsCharSet = false;
    _isArrayCounted = false;
    _path.clear();
    readMember(root, value.json, nullptr);
    closeByte();
    _end = std::max(_end, _bytePos);
    reach(_end);
    value.bytes.resize(_end);
    value.mask.resize(_end);
  }

  void readMember(const korvat::Member& member, json::Value& node,
                  const korvat::Member* countedArray) {
    if (!member.isArray()) return readElement(member, node, countedArray);

    const unsigned elementCount = countElements(member);
    const bool isCounted = std::exchange(_isArrayCounted, false);
    if (member.getKind() == Kind::Scalar) {
      const auto& scalar = static_cast<const korvat::MemScalar&>(member);
      const TextForm form = takeTextForm(scalar);
      if (form != TextForm::None) return readText(scalar, form, elementCount, isCounted, node);
    }
    node.switchType(json::JsonType::Array);
    for (unsigned i = 0; i < elementCount; ++i) {
      _path.push_back({"", i});
      readElement(member, node[i], nullptr);
      _path.pop_back();
    }
    _count = -1;
  }

  unsigned countElements(const korvat::Member& member) const {
    const bool isCounted = member.isDynamicArray() && _manager.getUseDynamicArrays() && _count >= 0;
    if (!isCounted) return member.getArraySize();
    return static_cast<unsigned>(std::min<std::int64_t>(_count, member.getArraySize()));
  }

  void readElement(const korvat::Member& member, json::Value& node,
                   const korvat::Member* countedArray) {
    const bool isRef = member.getKind() == Kind::Ref;
    if (member.getKind() != Kind::Bitfield) closeByte();
    _followsCharSet = member.getProgName() == "char_set" || (_followsCharSet && isRef);
    if (isRef) return readReference(static_cast<const korvat::MemRef&>(member), node);
    if (member.getKind() == Kind::Aggregate) {
      return readAggregate(static_cast<const korvat::MemAggregate&>(member), node);
    }

    Leaf leaf;
    leaf.member = &member;
    leaf.byteCount = byteCountOf(member);
    if (countedArray != nullptr) leaf.largestCount = countedArray->getArraySize();
    addLeaf(leaf, node);
    noteLeaf(leaf, node);
    if (member.getKind() == Kind::Bitfield) {
      const korvat::BitSlot& slot = static_cast<const korvat::MemBitfield&>(member).getSlot();
      const bool endsByte = slot.offset + slot.width == 8;
      _isByteOpen = !endsByte && slot.offset != 0;
      if (endsByte) ++_bytePos;
    } else {
      _bytePos += leaf.byteCount;
    }
  }

  // Keeps what members after this one depend on.
  void noteLeaf(const Leaf& leaf, const json::Value& node) {
    const Kind kind = leaf.member->getKind();
    if (kind == Kind::Float) _count = -1;
    if (kind == Kind::Scalar && node.isInteger()) _count = readRaw(leaf, _value->bytes);
    if (kind != Kind::Enum) return;
    if (static_cast<const korvat::MemEnum&>(*leaf.member).getRefId().getId() != "char_encoding_t") {
      return;
    }
    switch (readRaw(leaf, _value->bytes)) {
      case 0:
        _selectedWidth = 1;
        break;
      case 2:
        _selectedWidth = 4;
        break;
      case 1:
      case 3:
      case 4:
        _selectedWidth = 2;
        break;
      default:
        _selectedWidth = -1;
    }
  }

  void readReference(const korvat::MemRef& reference, json::Value& node) {
    const korvat::Member* root = &reference;
    while (root->getKind() == Kind::Ref) {
      const korvat::TypeId& id = static_cast<const korvat::MemRef&>(*root).getRefId();
      root = _manager.getVarType(id)->getMember();
    }
    readMember(*root, node, nullptr);
  }

  void readAggregate(const korvat::MemAggregate& aggregate, json::Value& node) {
    const bool isHex = aggregate.isUnion() && _manager.isUnionRawToRawHex();
    const unsigned start = _bytePos;
    unsigned extent = 0;
    node.switchType(json::JsonType::Object);
    if (isHex) ++_hexUnions;
    const auto& children = aggregate.getChildren();
    for (std::size_t i = 0; i < children.size(); ++i) {
      const korvat::Member& child = *children[i];
      const korvat::Member* array = aggregate.isUnion() ? nullptr : findCounted(children, i);
      _path.push_back({child.getProgName(), 0});
      if (child.isDynamicArray()) _isArrayCounted = _count >= 0;
      const unsigned endBefore = std::exchange(_end, 0);
      readMember(child, node[child.getProgName()], array);
      _path.pop_back();
      const unsigned furthest = std::exchange(_end, std::max(_end, endBefore));
      if (!aggregate.isUnion()) continue;
      closeByte();
      extent = std::max(extent, _bytePos - start);
      // The byte of a bit field counts when another member begins behind it, or the field ends it,
      // or does not begin it.
      if (furthest > start + extent) _value->leavesUnion = true;
      _bytePos = start;
    }
    _count = -1;
    if (aggregate.isUnion()) {
      _bytePos = start + extent;
      _isByteOpen = false;
    }
    if (isHex && --_hexUnions == 0) {
      Leaf leaf;
      leaf.byteCount = extent;
      _bytePos = start;
      addLeaf(leaf, node);
      _bytePos += extent;
    }
  }

  // The dynamic array that the member at `index` counts.
  static const korvat::Member* findCounted(
      const std::vector<std::unique_ptr<korvat::Member>>& children, std::size_t index) {
    if (children[index]->getKind() != Kind::Scalar || children[index]->isArray()) return nullptr;
    for (std::size_t i = index + 1; i < children.size(); ++i) {
      const Kind kind = children[i]->getKind();
      if (children[i]->isDynamicArray()) return children[i].get();
      if (children[i]->isArray() || (kind != Kind::Enum && kind != Kind::Bitfield)) break;
    }
    return nullptr;
  }

  TextForm takeTextForm(const korvat::MemScalar& scalar) {
    const korvat::NcType type = scalar.getNcType();
    const bool isChar = type == korvat::NcType::UnsignedChar || type == korvat::NcType::SignedChar;
    const auto width = static_cast<int>(byteCountOf(scalar));
    const bool followsCharSet = std::exchange(_followsCharSet, false);
    int unitSize = followsCharSet ? width : -1;
    if (_selectedWidth >= 0 && (isChar || width == _selectedWidth)) {
      unitSize = std::exchange(_selectedWidth, -1);
    }
    if (unitSize < 0) return isChar ? TextForm::Latin1 : TextForm::None;
    if (unitSize == 1) return TextForm::Utf8;
    return unitSize == 2 ? TextForm::Utf16 : TextForm::Utf32;
  }

  void readText(const korvat::MemScalar& scalar, TextForm form, unsigned elementCount,
                bool isCounted, json::Value& node) {
    if (elementCount > 0) closeByte();
    Leaf leaf;
    leaf.member = &scalar;
    leaf.text = form;
    leaf.byteCount = elementCount * byteCountOf(scalar);
    leaf.fillsArray = isCounted && scalar.isDynamicArray() && _manager.getUseDynamicArrays();
    if (leaf.fillsArray && leaf.byteCount % unitSizeOf(form) != 0) _isHopeless = true;
    if (unitSizeOf(form) != byteCountOf(scalar)) _value->hasWideText = true;
    addLeaf(leaf, node);
    _bytePos += leaf.byteCount;
    _count = -1;
  }

  void closeByte() {
    if (_isByteOpen) ++_bytePos;
    _isByteOpen = false;
  }

  // Puts the leaf at the position, with a value that it can represent, and sets its node.
  void addLeaf(Leaf& leaf, json::Value& node) {
    leaf.bytePos = _bytePos;
    leaf.path = _path;
    reach(_bytePos + leaf.byteCount);
    if (_hexUnions == 0) _end = std::max(_end, _bytePos + leaf.byteCount);
    Bytes& bytes = _value->bytes;
    if (_hexUnions == 0 && (_drawsAll || !isRepresentable(leaf, bytes))) {
      drawLeaf(leaf, bytes);
      _hasChanged = true;
    }
    node = toJson(leaf, bytes);
    if (_hexUnions > 0) return;
    _value->leaves.push_back(leaf);
    for (unsigned i = 0; i < leaf.byteCount; ++i) {
      std::uint8_t& mask = _value->mask[_bytePos + i];
      if ((mask & maskOf(leaf)) != 0) _value->overlaps = true;
      mask = static_cast<std::uint8_t>(mask | maskOf(leaf));
    }
  }

  // Makes bytes up to `end`: at random, or all bits equal.
  void reach(unsigned end) {
    Bytes& bytes = _value->bytes;
    const unsigned style = _random->below(4);
    while (bytes.size() < end) {
      const std::uint8_t equal = style == 0 ? 0x00 : 0xFF;
      bytes.push_back(style < 2 ? equal : static_cast<std::uint8_t>(_random->bits()));
    }
    if (_value->mask.size() < end) _value->mask.resize(end);
  }

  // --- Values ---

  static unsigned byteCountOf(const korvat::Member& member) {
    static constexpr std::array<unsigned, 12> kByteCounts{0, 1, 1, 1, 1, 2, 2, 4, 4, 4, 8, 0};
    const auto* typed = dynamic_cast<const korvat::NcTyped*>(&member);
    return typed == nullptr ? 1 : kByteCounts[static_cast<std::size_t>(typed->getNcType())];
  }

  static Bytes cut(const Leaf& leaf, const Bytes& bytes) {
    const auto begin = bytes.begin() + leaf.bytePos;
    return Bytes(begin, begin + leaf.byteCount);
  }

  static bool isSignedLeaf(const Leaf& leaf) {
    switch (leaf.member->getKind()) {
      case Kind::Scalar:
        switch (static_cast<const korvat::MemScalar&>(*leaf.member).getNcType()) {
          case korvat::NcType::SignedChar:
          case korvat::NcType::SignedShort:
          case korvat::NcType::SignedLong:
          case korvat::NcType::SignedQuad:
            return true;
          default:
            return false;
        }
      case Kind::Bitfield:
        return static_cast<const korvat::MemBitfield&>(*leaf.member).getSlot().isSigned;
      default:
        return true;
    }
  }

  static unsigned bitCountOf(const Leaf& leaf) {
    if (leaf.member->getKind() != Kind::Bitfield) return 8 * leaf.byteCount;
    return static_cast<const korvat::MemBitfield&>(*leaf.member).getSlot().width;
  }

  // Position of a bit field's last bit in its byte.
  static unsigned shiftOf(const Leaf& leaf) {
    if (leaf.member->getKind() != Kind::Bitfield) return 0;
    const korvat::BitSlot& slot = static_cast<const korvat::MemBitfield&>(*leaf.member).getSlot();
    return 8u - slot.offset - slot.width;
  }

  std::int64_t readRaw(const Leaf& leaf, const Bytes& bytes) const {
    const std::uint64_t all = loadNumber(&bytes[leaf.bytePos], leaf.byteCount, _order);
    const std::uint64_t span = std::uint64_t{1} << bitCountOf(leaf);
    const std::uint64_t bits = (all >> shiftOf(leaf)) % span;
    const bool isNegative = isSignedLeaf(leaf) && bits >= span / 2;
    return static_cast<std::int64_t>(bits) - (isNegative ? static_cast<std::int64_t>(span) : 0);
  }

  void writeRaw(const Leaf& leaf, std::int64_t raw, Bytes& bytes) const {
    const std::uint64_t span = std::uint64_t{1} << bitCountOf(leaf);
    const std::uint64_t mask = (span - 1) << shiftOf(leaf);
    const std::uint64_t old = loadNumber(&bytes[leaf.bytePos], leaf.byteCount, _order);
    const std::uint64_t bits = (static_cast<std::uint64_t>(raw) << shiftOf(leaf)) & mask;
    storeNumber((old & ~mask) | bits, leaf.byteCount, _order, &bytes[leaf.bytePos]);
  }

  double readFloat(const Leaf& leaf, const Bytes& bytes) const {
    const std::uint64_t bits = loadNumber(&bytes[leaf.bytePos], leaf.byteCount, _order);
    if (leaf.byteCount == 8) return std::bit_cast<double>(bits);
    return static_cast<double>(std::bit_cast<float>(static_cast<std::uint32_t>(bits)));
  }

  void writeFloat(const Leaf& leaf, double number, Bytes& bytes) const {
    const std::uint64_t bits = leaf.byteCount == 8
                                   ? std::bit_cast<std::uint64_t>(number)
                                   : std::bit_cast<std::uint32_t>(static_cast<float>(number));
    storeNumber(bits, leaf.byteCount, _order, &bytes[leaf.bytePos]);
  }

  static const korvat::Scaling& scalingOf(const Leaf& leaf) {
    return static_cast<const korvat::MemNumeric&>(*leaf.member).getScaling();
  }

  static bool isScaled(const Leaf& leaf) {
    const korvat::Scaling& scaling = scalingOf(leaf);
    return scaling.a != 1 || scaling.b != 0 || scaling.c != 0;
  }

  template <typename T>
  static bool isWithinLimits(const korvat::TMemNumeric<T>& member, T raw) {
    if (member.hasInvalid() && raw == member.getInvalid()) return true;
    const bool isBelow = member.hasMin() && raw < member.getMin();
    return !isBelow && !(member.hasMax() && raw > member.getMax());
  }

  // The one place that decides what comes back from JSON; the reasons stand above the class.
  bool isRepresentable(const Leaf& leaf, const Bytes& bytes) const {
    if (leaf.member == nullptr) return true;
    if (leaf.text != TextForm::None) {
      const Bytes part = cut(leaf, bytes);
      if (!readPlainText(part, leaf.text, _order)) return false;
      return !leaf.fillsArray || part.empty() || !endsWithZeroUnit(part, leaf.text);
    }
    switch (leaf.member->getKind()) {
      case Kind::Scalar:
        return isIntegerRepresentable<std::int64_t, korvat::MemScalar>(leaf, bytes);
      case Kind::Bitfield:
        return isIntegerRepresentable<std::int16_t, korvat::MemBitfield>(leaf, bytes);
      case Kind::Float:
        return isFloatRepresentable(leaf, bytes);
      default:
        return true;
    }
  }

  bool endsWithZeroUnit(const Bytes& part, TextForm form) const {
    const unsigned unitSize = unitSizeOf(form);
    return loadNumber(&part[part.size() - unitSize], unitSize, _order) == 0;
  }

  template <typename T, typename M>
  bool isIntegerRepresentable(const Leaf& leaf, const Bytes& bytes) const {
    const std::int64_t raw = readRaw(leaf, bytes);
    if (leaf.largestCount >= 0 && (raw < 0 || raw > leaf.largestCount)) return false;
    if (scalingOf(leaf).a == 0 && raw != -scalingOf(leaf).c) return false;
    return isWithinLimits<T>(static_cast<const M&>(*leaf.member), static_cast<T>(raw));
  }

  bool isFloatRepresentable(const Leaf& leaf, const Bytes& bytes) const {
    constexpr double kLargestScaled = 1048576;  // 2^20
    const double number = readFloat(leaf, bytes);
    if (std::isnan(number)) {
      Bytes quiet = bytes;
      writeFloat(leaf, std::numeric_limits<double>::quiet_NaN(), quiet);
      return !_isForText && !isScaled(leaf) && quiet == bytes;
    }
    if (!std::isfinite(number) && _isForText) return false;
    if (isScaled(leaf)) {
      const bool isWhole = std::trunc(number) == number && std::abs(number) <= kLargestScaled;
      const bool isZeroKept = scalingOf(leaf).c == 0 && !std::signbit(number);
      if (!isWhole || (number == 0 && !isZeroKept)) return false;
    }
    return isWithinLimits<double>(static_cast<const korvat::MemFloat&>(*leaf.member), number);
  }

  // --- Drawing ---

  void drawLeaf(const Leaf& leaf, Bytes& bytes) {
    if (leaf.member == nullptr) {
      for (unsigned i = 0; i < leaf.byteCount; ++i) {
        bytes[leaf.bytePos + i] = static_cast<std::uint8_t>(_random->bits());
      }
    } else if (leaf.text != TextForm::None) {
      drawText(leaf, bytes);
    } else if (leaf.member->getKind() == Kind::Float) {
      drawFloat(leaf, bytes);
    } else {
      drawInteger(leaf, bytes);
    }
  }

  void drawInteger(const Leaf& leaf, Bytes& bytes) {
    const std::int64_t span = std::int64_t{1} << bitCountOf(leaf);
    std::int64_t lowest = isSignedLeaf(leaf) ? -span / 2 : 0;
    std::int64_t highest = lowest + span - 1;
    std::int64_t invalid = lowest;
    bool hasInvalid = false;
    const auto narrow = [&](const auto& member) {
      if (member.hasMin()) lowest = std::max<std::int64_t>(lowest, member.getMin());
      if (member.hasMax()) highest = std::min<std::int64_t>(highest, member.getMax());
      hasInvalid = member.hasInvalid();
      invalid = member.getInvalid();
      if (member.getScaling().a == 0) lowest = highest = -member.getScaling().c;
    };
    if (leaf.member->getKind() == Kind::Scalar) {
      narrow(static_cast<const korvat::MemScalar&>(*leaf.member));
    } else if (leaf.member->getKind() == Kind::Bitfield) {
      narrow(static_cast<const korvat::MemBitfield&>(*leaf.member));
    }
    if (leaf.largestCount >= 0) {
      lowest = 0;
      highest = std::min(highest, leaf.largestCount);
    }
    const unsigned choice = _random->below(10);
    std::int64_t raw = _random->between(lowest, highest);
    if (choice == 0) raw = lowest;
    if (choice == 1) raw = highest;
    if (choice == 2 && hasInvalid) raw = invalid;
    writeRaw(leaf, raw, bytes);
  }

  void drawFloat(const Leaf& leaf, Bytes& bytes) {
    constexpr unsigned kMaxTries = 8;
    const auto& member = static_cast<const korvat::MemFloat&>(*leaf.member);
    for (unsigned i = 0; i < kMaxTries; ++i) {
      switch (_random->below(6)) {
        case 0:
          writeFloat(leaf, std::numeric_limits<double>::quiet_NaN(), bytes);
          break;
        case 1:
          writeFloat(leaf, -std::numeric_limits<double>::infinity(), bytes);
          break;
        case 2:
          if (member.hasInvalid()) writeFloat(leaf, member.getInvalid(), bytes);
          break;
        default:
          storeNumber(_random->bits(), leaf.byteCount, _order, &bytes[leaf.bytePos]);
      }
      if (isRepresentable(leaf, bytes)) return;
    }
    const double lowest = member.hasMin() ? member.getMin() : -1000;
    const double highest = member.hasMax() ? member.getMax() : 1000;
    writeFloat(leaf,
               static_cast<double>(_random->between(static_cast<std::int64_t>(lowest),
                                                    static_cast<std::int64_t>(highest))),
               bytes);
  }

  void drawText(const Leaf& leaf, Bytes& bytes) {
    const unsigned unitSize = unitSizeOf(leaf.text);
    const unsigned capacity = leaf.byteCount / unitSize;
    const unsigned unitCount = leaf.fillsArray ? capacity : _random->below(capacity + 1);
    std::vector<std::uint32_t> units;
    while (units.size() < unitCount) {
      std::vector<std::uint32_t> more = unitsOf(drawCharacter(leaf.text), leaf.text);
      if (units.size() + more.size() > unitCount) more = {'x'};
      units.insert(units.end(), more.begin(), more.end());
    }
    std::fill_n(bytes.begin() + leaf.bytePos, leaf.byteCount, std::uint8_t{0});
    for (std::size_t i = 0; i < units.size(); ++i) {
      storeNumber(units[i], unitSize, _order, &bytes[leaf.bytePos + i * unitSize]);
    }
  }

  std::uint32_t drawCharacter(TextForm form) {
    constexpr std::uint32_t kAbove[] = {0x80, 0x100, 0x800, 0x10000, 0x110000};
    const unsigned choice = _random->below(form == TextForm::Latin1 ? 2 : 5);
    while (true) {
      const std::uint32_t code = 1 + _random->below(kAbove[choice] - 1);
      if (isScalarValue(code)) return code;
    }
  }

  // --- JSON ---

  void setNumber(const Leaf& leaf, const Bytes& bytes, json::Value& node) const {
    const Kind kind = leaf.member->getKind();
    if (kind == Kind::Float) return setFloat(leaf, bytes, node);
    const std::int64_t raw = readRaw(leaf, bytes);
    if (kind == Kind::Enum) return setEnumerator(leaf, raw, node);
    if (kind == Kind::Scalar && _manager.isSupportInvalidKeyword()) {
      const auto& scalar = static_cast<const korvat::MemScalar&>(*leaf.member);
      if (scalar.hasInvalid() && scalar.getInvalid() == raw) return node.setValue("invalid");
    }
    if (!isScaled(leaf)) return node.setValue(raw);
    node.setValue(scale(raw, scalingOf(leaf)));
  }

  void setFloat(const Leaf& leaf, const Bytes& bytes, json::Value& node) const {
    const double number = readFloat(leaf, bytes);
    // Scaled ones that come back are whole and small; any other may show as anything.
    const bool isWhole = std::abs(number) < 9e15 && std::trunc(number) == number;
    if (isScaled(leaf) && isWhole) {
      node.setValue(scale(static_cast<std::int64_t>(number), scalingOf(leaf)));
    } else if (leaf.byteCount == 8) {
      node.setValue(number);
    } else {
      node.setValue(static_cast<float>(number));
    }
  }

  void setEnumerator(const Leaf& leaf, std::int64_t raw, json::Value& node) const {
    const auto& member = static_cast<const korvat::MemEnum&>(*leaf.member);
    const auto* type = dynamic_cast<const korvat::EnumType*>(_manager.getType(member.getRefId()));
    for (const auto& [value, name] : type->getItemsByValue()) {
      if (value == raw) return node.setValue(name);
    }
    node.setValue(std::to_string(raw));
  }

  // The double nearest to the decimal number a * (raw + c) * 10^b.
  static double scale(std::int64_t raw, const korvat::Scaling& scaling) {
    const std::int64_t digits = scaling.a * (raw + scaling.c);
    const std::string text = std::to_string(digits) + "e" + std::to_string(scaling.b);
    return std::strtod(text.c_str(), nullptr);
  }

  korvat::TypeManager& _manager;
  base::Endianess _order;
  bool _isForText;

  Random* _random = nullptr;
  bool _drawsAll = false;    // every leaf gets a new value
  bool _hasChanged = false;  // some leaf got one in this pass
  bool _isHopeless = false;  // no value of this shape comes back

  // Of the walk:
  PlainValue* _value = nullptr;
  std::vector<Leaf::Step> _path;
  unsigned _bytePos = 0;
  unsigned _end = 0;         // of the leaf that reaches furthest
  bool _isByteOpen = false;  // bit fields have used a part of the byte at the position
  std::int64_t _count = -1;  // the last integer, as an element count
  int _selectedWidth = -1;   // bytes a character, by a character encoding before
  bool _followsCharSet = false;
  bool _isArrayCounted = false;  // the array that comes next has a count
  unsigned _hexUnions = 0;       // open unions, where they are hexadecimal text
};

}  // namespace zavri::test
