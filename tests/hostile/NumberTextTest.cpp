#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <map>
#include <random>
#include <stdexcept>
#include <string>
#include <tuple>

#include "korvat/base/Value.h"
#include "korvat/members/MemBitfield.h"
#include "korvat/members/MemScalar.h"
#include "korvat/members/NcType.h"
#include "korvat/types/ResourceFileSet.h"
#include "korvat/types/ResourceGroup.h"
#include "korvat/types/TypeManager.h"
#include "korvat/types/VarType.h"

// The text of a physical number is the decimal that the scaling makes of the raw one, digit for
// digit: 3674 tenths are 367.4 and nothing longer.
namespace zavri::korvat {
namespace {

// A decimal number: digits * 10^exponent, without zeros at the end of the digits.
struct Decimal {
  std::int64_t digits = 0;
  int exponent = 0;

  bool operator==(const Decimal& other) const {
    return digits == other.digits && exponent == other.exponent;
  }
};

Decimal shortened(std::int64_t digits, int exponent) {
  if (digits == 0) return {};
  while (digits % 10 == 0) {
    digits /= 10;
    ++exponent;
  }
  return {digits, exponent};
}

// In whole numbers, whatever the library does.
Decimal scaled(std::int64_t raw, const Scaling& scaling) {
  return shortened(scaling.a * (raw + scaling.c), scaling.b);
}

// The number that a text states, digit by digit: "-12.5", "1e-7".
Decimal readText(const std::string& text) {
  std::int64_t digits = 0;
  int exponent = 0;
  bool isBehindPoint = false;
  std::size_t i = text[0] == '-' ? 1 : 0;
  for (; i < text.size() && text[i] != 'e' && text[i] != 'E'; ++i) {
    if (text[i] == '.') {
      isBehindPoint = true;
      continue;
    }
    if (digits > std::numeric_limits<std::int64_t>::max() / 10 - 1) return {-1, 9999};  // too long
    digits = 10 * digits + (text[i] - '0');
    if (isBehindPoint) --exponent;
  }
  if (i < text.size()) exponent += std::atoi(text.c_str() + i + 1);
  return shortened(text[0] == '-' ? -digits : digits, exponent);
}

// A scaling, the bits of the raw numbers that it is used for, and whether they have a sign.
using Use = std::tuple<std::int16_t, std::int16_t, std::int16_t, unsigned, bool>;

// Of the catalogue that comes with the library, each with a type that has it.
std::map<Use, std::string> findUses() {
  std::map<Use, std::string> uses;
  TypeManager manager("drv");
  ResourceFileSet& fileSet = manager.getResourceFileSet(TypeId::StdPrefix);
  for (const ResourceType kind : {ResourceType::Nv, ResourceType::Cp}) {
    const ResourceGroup* const group = fileSet.getGroup(kind, true, &manager);
    if (group == nullptr) throw std::runtime_error("no catalogue");
    for (const auto& [name, type] : group->getTypesByName()) {
      const auto* varType = dynamic_cast<const VarType*>(type.get());
      if (varType == nullptr || varType->getMember() == nullptr) continue;
      const auto note = [&uses, &type = type](const Scaling& scaling, unsigned bitCount,
                                              bool isSigned) {
        if (scaling.isIdentity()) return;
        uses.try_emplace({scaling.a, scaling.b, scaling.c, bitCount, isSigned},
                         type->getTypeId().toLonFormatId());
      };
      const auto onMember = [&note](Member::Context&, const Member& member) {
        if (member.getKind() == Member::Kind::Scalar) {
          const auto& scalar = static_cast<const MemScalar&>(member);
          note(scalar.getScaling(), 8 * scalar.getByteCount(),
               ncTypeRow(scalar.getNcType()).isSigned);
        } else if (member.getKind() == Member::Kind::Bitfield) {
          note(static_cast<const MemBitfield&>(member).getScaling(), 8, false);
        }
        return true;
      };
      static_cast<void>(
          varType->getMember()->traverse(&manager, base::Buffer(), onMember,
                                         [](Member::Context&, const Member&) { return true; }));
    }
  }
  return uses;
}

void expectShortText(std::int64_t raw, const Scaling& scaling) {
  json::Value value;
  value.setValue(toPhysical(static_cast<double>(raw), scaling));
  const std::string text = value.stringify();
  EXPECT_TRUE(readText(text) == scaled(raw, scaling)) << raw << " is shown as " << text;
}

TEST(NumberText, IsTheDecimalOfEveryRawNumberOfTheCatalogue) {
  constexpr std::uint64_t kSeed = 367;
  constexpr int kSampleSize = 200'000;  // of the raw numbers of more than two bytes
  const std::map<Use, std::string> uses = findUses();
  EXPECT_GT(uses.size(), 15u);
  for (const auto& [use, typeName] : uses) {
    const auto& [a, b, c, bitCount, isSigned] = use;
    const Scaling scaling{a, b, c};
    SCOPED_TRACE(typeName + ", " + std::to_string(a) + " * 10^" + std::to_string(b) + " * (raw + " +
                 std::to_string(c) + "), " + std::to_string(bitCount) + " bits, seed " +
                 std::to_string(kSeed));
    const std::int64_t lowest = isSigned ? -(std::int64_t{1} << (bitCount - 1)) : 0;
    const std::int64_t highest = lowest + (std::int64_t{1} << bitCount) - 1;
    if (bitCount <= 16) {
      for (std::int64_t raw = lowest; raw <= highest; ++raw) expectShortText(raw, scaling);
    } else {
      std::mt19937_64 random(kSeed);
      const auto range = static_cast<std::uint64_t>(highest - lowest) + 1;
      for (const std::int64_t raw : {lowest, std::int64_t{0}, highest}) {
        expectShortText(raw, scaling);
      }
      for (int i = 0; i < kSampleSize; ++i) {
        expectShortText(lowest + static_cast<std::int64_t>(random() % range), scaling);
      }
    }
    if (HasFailure()) break;
  }
}

struct TextCase {
  std::string text;
  std::int64_t digits;
  int exponent;
};

TEST(NumberText, IsReadDigitByDigit) {
  for (const TextCase& c :
       {TextCase{"-12.50", -125, -1}, TextCase{"367.40000000000003", 36740000000000003, -14},
        TextCase{"1e-7", 1, -7}, TextCase{"7000.0", 7, 3}, TextCase{"0.0", 0, 0}}) {
    EXPECT_TRUE(readText(c.text) == (Decimal{c.digits, c.exponent})) << c.text;
  }
}

}  // namespace
}  // namespace zavri::korvat
