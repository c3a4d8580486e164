#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "korvat/base/Buffer.h"
#include "korvat/base/Value.h"
#include "korvat/members/Member.h"
#include "korvat/types/TypeManager.h"
#include "korvat/types/VarType.h"
#include "tests/LogCapture.h"
#include "tests/convert/StandardValues.h"

// Every type of the catalogue that comes with the library.
namespace zavri::korvat {
namespace {

using base::Buffer;
using base::Endianess;
using base::Logger;
using test::LogCapture;

using Lines = std::vector<std::string>;

class EmbeddedCatalogue : public testing::Test {
 protected:
  std::vector<const VarType*> getTypes(ResourceType kind) {
    return test::findStandardTypes(_manager, kind);
  }

  std::vector<const VarType*> getLayouts() { return test::findStandardLayouts(_manager); }

  TypeManager _manager = test::makeStandardTypes();
};

Buffer makeBuffer(std::int32_t size, std::uint8_t byte) {
  const std::vector<std::uint8_t> bytes(static_cast<std::size_t>(size), byte);
  return Buffer(bytes.data(), static_cast<unsigned>(bytes.size()));
}

TEST_F(EmbeddedCatalogue, LoadsWithoutAWarning) {
  const LogCapture log(Logger::Warning);
  EXPECT_GE(getTypes(ResourceType::Nv).size(), 86u);
  EXPECT_GE(getTypes(ResourceType::Cp).size(), 53u);
  EXPECT_EQ(log.texts(), Lines());
}

TEST_F(EmbeddedCatalogue, HasALayoutForEveryNetworkVariableType) {
  for (const VarType* type : getTypes(ResourceType::Nv)) {
    EXPECT_NE(type->getMember(), nullptr) << type->getName();
  }
}

TEST_F(EmbeddedCatalogue, DeclaresASizeJustWhereItHasALayout) {
  for (const VarType* type : getTypes(ResourceType::Cp)) {
    const bool hasLayout = type->getMember() != nullptr;
    EXPECT_EQ(type->getSize() != 0, hasLayout) << type->getName();
  }
}

TEST_F(EmbeddedCatalogue, GivesEveryTypeANumberOfItsOwn) {
  for (const ResourceType kind : {ResourceType::Nv, ResourceType::Cp}) {
    std::set<std::int32_t> numbers;
    for (const VarType* type : getTypes(kind)) {
      if (type->hasFlags(BaseType::kDerivedFormat)) continue;  // found by name only
      SCOPED_TRACE(type->getTypeId().toString());
      EXPECT_GT(type->getIndex(), 0);
      EXPECT_TRUE(numbers.insert(type->getIndex()).second);
      EXPECT_EQ(_manager.getVarTypeByIndex(TypeId::StdPrefix, kind, type->getIndex()), type);
    }
  }
}

TEST_F(EmbeddedCatalogue, DeclaresTheSizeThatEachLayoutHas) {
  const LogCapture log(Logger::Warning);
  for (const VarType* type : getLayouts()) {
    SCOPED_TRACE(type->getTypeId().toString());
    EXPECT_GT(type->getSize(), 0);

    // Bit fields may leave the end of a byte unused.
    const std::uint32_t bitCount = type->getMember()->getBitCount(&_manager);
    EXPECT_EQ((bitCount + 7) / 8, static_cast<std::uint32_t>(type->getSize()));

    unsigned byteCount = 0;
    EXPECT_TRUE(type->getMaxSize(&_manager, byteCount));
    EXPECT_EQ(byteCount, static_cast<unsigned>(type->getSize()));
  }
  EXPECT_EQ(log.texts(), Lines());
}

TEST_F(EmbeddedCatalogue, DecodesAnyValueOfZerosAndOfOnes) {
  const LogCapture log(Logger::Warning);
  for (const VarType* type : getLayouts()) {
    SCOPED_TRACE(type->getTypeId().toString());
    for (const std::uint8_t byte : {std::uint8_t{0x00}, std::uint8_t{0xFF}}) {
      for (const Endianess order : {Endianess::Big, Endianess::Little}) {
        json::Value value;
        EXPECT_TRUE(_manager.rawToJson(type->getTypeId(), makeBuffer(type->getSize(), byte), value,
                                       order, true));
        EXPECT_FALSE(value.isNull());
      }
    }
  }
  EXPECT_EQ(log.texts(), Lines());
}

TEST_F(EmbeddedCatalogue, DecodesUnionsAsTheirBytes) {
  _manager.setUnionModeBit(TypeManager::UnionModeBit::UnionRawHex);
  const LogCapture log(Logger::Warning);
  for (const VarType* type : getLayouts()) {
    SCOPED_TRACE(type->getTypeId().toString());
    json::Value value;
    EXPECT_TRUE(_manager.rawToJson(type->getTypeId(), makeBuffer(type->getSize(), 0xFF), value));
  }
  EXPECT_EQ(log.texts(), Lines());
}

// What lies beyond the end of a value reads as zeros, so every cut of a value of zeros is that
// value.
TEST_F(EmbeddedCatalogue, DecodesValuesCutAtAnyLength) {
  for (const VarType* type : getLayouts()) {
    SCOPED_TRACE(type->getTypeId().toString());
    json::Value whole;
    ASSERT_TRUE(_manager.rawToJson(type->getTypeId(), makeBuffer(type->getSize(), 0), whole));
    for (std::int32_t size = 0; size < type->getSize(); ++size) {
      json::Value cut;
      EXPECT_TRUE(_manager.rawToJson(type->getTypeId(), makeBuffer(size, 0), cut));
      EXPECT_EQ(cut.stringify(0), whole.stringify(0)) << size << " bytes";
    }
  }
}

}  // namespace
}  // namespace zavri::korvat
