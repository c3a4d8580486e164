#include "korvat/members/MemEnum.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "korvat/types/EnumType.h"
#include "korvat/types/TypeManager.h"
#include "tests/LogCapture.h"
#include "tests/TempCatalogue.h"
#include "tests/members/MemberTree.h"

namespace zavri::korvat {
namespace {

using base::Logger;
using test::makeEnum;
using Lines = std::vector<std::string>;

TEST(MemEnum, RefersToEnumerationsOnly) {
  MemEnum member;
  EXPECT_EQ(member.getRefId().getType(), ResourceType::Enum);
  EXPECT_TRUE(member.setRefType(ResourceType::Enum));
  for (const ResourceType type :
       {ResourceType::Invalid, ResourceType::Nv, ResourceType::Cp, ResourceType::Fp}) {
    EXPECT_FALSE(member.setRefType(type));
    EXPECT_EQ(member.getRefId().getType(), ResourceType::Enum);
  }
}

TEST(MemEnum, TakesUpOneByteWhetherItsTypeExistsOrNot) {
  EXPECT_EQ(makeEnum("e", "missing_t")->getBitCount(nullptr), 8u);
  const auto structure = test::makeStruct("s", test::makeBitfield("b", 1, 1),
                                          makeEnum("e", "missing_t"), test::makeScalar("x"));
  EXPECT_EQ(test::recordWalk(*structure),
            (Lines{"s @0 d0", "b @0.1 d1", "e @1 d1", "x @2 d1", "end s @3 d0"}));
}

TEST(MemEnum, ResolvesToItsEnumeration) {
  test::TempCatalogue files;
  files.write(TypeId::StdPrefix, "enums",
              "<enumt id=\"colour_t\" idx=\"1\"><members>"
              "<e-member id=\"RED\"><value>0</value></e-member>"
              "<e-member id=\"GREEN\"><value>-1</value></e-member>"
              "</members></enumt>");
  TypeManager manager = files.makeManager();
  const EnumType* type = makeEnum("e", "colour_t")->resolveEnum(&manager);
  ASSERT_NE(type, nullptr);
  EXPECT_EQ(type->getName(std::int8_t{-1}), "GREEN");
}

TEST(MemEnum, ReportsAMissingEnumeration) {
  test::TempCatalogue files;
  files.write(TypeId::StdPrefix, "enums", "");
  TypeManager manager = files.makeManager();
  test::LogCapture log(Logger::Warning);
  EXPECT_EQ(makeEnum("e", "missing_t")->resolveEnum(&manager), nullptr);
  EXPECT_EQ(log.texts(Logger::Warning),
            Lines{"[korvat] could not resolve enum 0000000000000000-0/missing_t\n"});
  EXPECT_EQ(log.lines().size(), 1u);
}

TEST(MemEnum, ResolvesToNothingWithoutAManager) {
  test::LogCapture log;
  EXPECT_EQ(makeEnum("e", "colour_t")->resolveEnum(nullptr), nullptr);
  EXPECT_EQ(log.texts(Logger::Warning),
            Lines{"[korvat] could not resolve enum 0000000000000000-0/colour_t\n"});
}

TEST(MemEnum, ResolvesToNothingThroughATypeThatIsNoEnumeration) {
  test::TempCatalogue files;
  files.write(TypeId::StdPrefix, "nvs", test::nvtXml("_a", test::scalarXml("unsigned char")));
  TypeManager manager = files.makeManager();
  const auto member = makeEnum("e", "_a");
  member->getRefId().setType(ResourceType::Nv);
  test::LogCapture log(Logger::Warning);
  EXPECT_EQ(member->resolveEnum(&manager), nullptr);
  EXPECT_TRUE(log.lines().empty());
}

TEST(MemEnum, ClonesItsReference) {
  const std::unique_ptr<Member> clone = makeEnum("e", "colour_t")->clone();
  EXPECT_EQ(clone->getKind(), Member::Kind::Enum);
  const auto* copy = dynamic_cast<const MemEnum*>(clone.get());
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(copy->getRefId(), TypeId(ResourceType::Enum, TypeId::StdPrefix, "colour_t"));
}

}  // namespace
}  // namespace zavri::korvat
