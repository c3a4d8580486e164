#include "korvat/types/VarType.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "korvat/format/Format.h"
#include "korvat/members/MemAggregate.h"
#include "korvat/members/MemBitfield.h"
#include "korvat/members/MemEnum.h"
#include "korvat/members/MemFloat.h"
#include "korvat/members/MemRef.h"
#include "korvat/members/MemScalar.h"
#include "korvat/types/NvType.h"
#include "korvat/types/TypeManager.h"
#include "tests/LogCapture.h"

namespace zavri::korvat {
namespace {

const auto rowName = [](const auto& info) { return info.param.name; };

using MemberPtr = std::unique_ptr<Member>;

MemberPtr named(const std::string& name, MemberPtr member) {
  member->setProgName(name);
  return member;
}

MemberPtr scalar(NcType ncType, std::uint32_t elementCount = 0) {
  auto member = std::make_unique<MemScalar>();
  member->setNcType(ncType);
  member->setArraySize(elementCount);
  return member;
}

MemberPtr floating(NcType ncType) {
  auto member = std::make_unique<MemFloat>();
  member->setNcType(ncType);
  return member;
}

MemberPtr bits(std::uint8_t offset, std::uint8_t width) {
  auto member = std::make_unique<MemBitfield>();
  member->setOffset(offset);
  member->setWidth(width);
  return member;
}

MemberPtr enumeration(std::uint32_t elementCount = 0) {
  auto member = std::make_unique<MemEnum>();
  member->setArraySize(elementCount);
  return member;
}

template <typename... Children>
MemberPtr aggregate(bool isUnion, Children... children) {
  auto member = std::make_unique<MemAggregate>();
  member->setUnion(isUnion);
  (member->addChild(std::move(children)), ...);
  member->buildLookup();
  return member;
}

template <typename... Children>
MemberPtr structure(Children... children) {
  return aggregate(false, std::move(children)...);
}

template <typename... Children>
MemberPtr unionOf(Children... children) {
  return aggregate(true, std::move(children)...);
}

MemberPtr arrayOf(std::uint32_t elementCount, MemberPtr member) {
  member->setArraySize(elementCount);
  return member;
}

// A layout without content that counts how often it was deleted.
class CountedMember : public Member {
 public:
  explicit CountedMember(int& deletions) : Member(Kind::Invalid), _deletions(deletions) {}
  ~CountedMember() override { ++_deletions; }
  std::unique_ptr<Member> clone() const override {
    return std::make_unique<CountedMember>(_deletions);
  }
  bool traverseMember(Context&, const MemberCallback&, const StructEndCallback&) const override {
    return true;
  }
  std::uint64_t countElementBits(BitCount&) const override { return 0; }

 private:
  int& _deletions;
};

TEST(VarType, StartsWithoutLayoutSizeAndFormats) {
  NvType type;
  EXPECT_EQ(type.getMember(), nullptr);
  EXPECT_EQ(type.getSize(), 0);
  EXPECT_TRUE(type.getFormats().empty());
  EXPECT_EQ(type.getIndex(), -1);
  EXPECT_EQ(type.getFlags(), 0u);
}

TEST(VarType, KeepsOneTextPerFormat) {
  NvType type;
  type.setFormatText("", "text(\"%f\")");
  type.setFormatText("US", "first");
  type.setFormatText("US", "second");
  EXPECT_EQ(type.getFormats(),
            (std::map<std::string, std::string>{{"", "text(\"%f\")"}, {"US", "second"}}));
}

TEST(VarType, DeletesItsLayoutOnce) {
  int deletions = 0;
  {
    NvType type;
    type.setMember(std::make_unique<CountedMember>(deletions));
    EXPECT_EQ(deletions, 0);
  }
  EXPECT_EQ(deletions, 1);
}

TEST(VarType, DeletesALayoutThatIsReplaced) {
  int deletions = 0;
  NvType type;
  type.setMember(std::make_unique<CountedMember>(deletions));
  type.setMember(scalar(NcType::UnsignedChar));
  EXPECT_EQ(deletions, 1);
  EXPECT_EQ(type.getMember()->getKind(), Member::Kind::Scalar);
}

TEST(VarType, DeletesTheLayoutOfACloneForItself) {
  int deletions = 0;
  NvType type;
  type.setMember(std::make_unique<CountedMember>(deletions));
  type.clone(true).reset();
  EXPECT_EQ(deletions, 1);
}

class VarTypeClone : public testing::TestWithParam<bool> {};

TEST_P(VarTypeClone, CopiesEverythingButWhatWasNotWanted) {
  const bool withoutFormats = GetParam();
  NvType source;
  source.getTypeId() = TypeId(ResourceType::Nv, "8000010000000000-3", "flow");
  source.setIndex(12);
  source.addFlags(BaseType::kObsolete);
  source.setSize(3);
  source.setFormatText("", "text(\"%d\")");
  source.setFormatText("US", "text(\"%d\", *2+0)");
  source.setMember(structure(named("a", scalar(NcType::UnsignedLong)), named("b", enumeration())));
  auto format = std::make_unique<Format>("text(\"%d\")");
  format->setName("SI");
  source.setFormat(std::move(format));

  const std::unique_ptr<VarType> copy = source.clone(withoutFormats);
  EXPECT_NE(dynamic_cast<NvType*>(copy.get()), nullptr);
  EXPECT_EQ(copy->getTypeId().toString(), "8000010000000000-3/UNVTflow");
  EXPECT_EQ(copy->getIndex(), 12);
  EXPECT_EQ(copy->getFlags(), 0x1u);
  EXPECT_EQ(copy->getSize(), 3);
  const std::map<std::string, std::string> formats = {{"", "text(\"%d\")"},
                                                      {"US", "text(\"%d\", *2+0)"}};
  EXPECT_EQ(copy->getFormats(), withoutFormats ? decltype(formats){} : formats);
  EXPECT_EQ(copy->getFormat() == nullptr, withoutFormats);
  if (!withoutFormats) {
    EXPECT_NE(copy->getFormat(), source.getFormat());
    EXPECT_EQ(copy->getFormat()->getName(), "SI");
    EXPECT_EQ(copy->getFormat()->getText(), "text(\"%d\")");
  }

  const auto& tree = dynamic_cast<const MemAggregate&>(*copy->getMember());
  ASSERT_EQ(tree.getChildren().size(), 2u);
  EXPECT_EQ(tree.getChildren()[0]->getProgName(), "a");
  EXPECT_EQ(tree.getChildren()[0]->getBitCount(nullptr), 16u);
  EXPECT_EQ(tree.getChildren()[1]->getProgName(), "b");
  EXPECT_EQ(tree.getChildren()[1]->getKind(), Member::Kind::Enum);
}

INSTANTIATE_TEST_SUITE_P(Formats, VarTypeClone, testing::Bool(), [](const auto& info) {
  return info.param ? "WithoutFormats" : "WithFormats";
});

TEST(VarType, HasAnIndependentClone) {
  auto source = std::make_unique<NvType>();
  source->setFormatText("", "first");
  source->setMember(structure(named("a", scalar(NcType::UnsignedLong))));
  const std::unique_ptr<VarType> copy = source->clone(false);

  source->setFormatText("", "second");
  source->setSize(9);
  static_cast<MemAggregate*>(source->getMember())->getChildren()[0]->setProgName("changed");
  source.reset();

  EXPECT_EQ(copy->getFormats().at(""), "first");
  EXPECT_EQ(copy->getSize(), 0);
  EXPECT_NE(static_cast<MemAggregate*>(copy->getMember())->findChild("a"), nullptr);
}

TEST(VarType, ClonesWithoutALayout) {
  const NvType source;
  EXPECT_EQ(source.clone(false)->getMember(), nullptr);
}

// --- Size of the layout ---

struct MaxSizeCase {
  std::string name;
  MemberPtr (*make)();
  unsigned byteCount;
};
class VarTypeMaxSize : public testing::TestWithParam<MaxSizeCase> {};

TEST_P(VarTypeMaxSize, ReachesTheEndOfTheLastMember) {
  NvType type;
  type.setMember(GetParam().make());
  unsigned byteCount = 99;
  ASSERT_TRUE(type.getMaxSize(nullptr, byteCount));
  EXPECT_EQ(byteCount, GetParam().byteCount);
}

MemberPtr makeDynamicArray() {
  MemberPtr values = scalar(NcType::UnsignedLong, 5);
  values->setArrayMinSize(0);
  return structure(named("count", scalar(NcType::UnsignedShort)),
                   named("values", std::move(values)));
}

INSTANTIATE_TEST_SUITE_P(
    Layouts, VarTypeMaxSize,
    testing::ValuesIn(std::vector<MaxSizeCase>{
        {"OneByte", [] { return scalar(NcType::UnsignedChar); }, 1},
        {"TwoBytes", [] { return scalar(NcType::SignedLong); }, 2},
        {"FourBytes", [] { return scalar(NcType::SignedQuad); }, 4},
        {"Single", [] { return floating(NcType::Float); }, 4},
        {"Double", [] { return floating(NcType::Double); }, 8},
        {"Enumeration", [] { return enumeration(); }, 1},
        {"BitField", [] { return bits(0, 3); }, 1},
        {"Array", [] { return scalar(NcType::UnsignedLong, 31); }, 62},
        {"Structure",
         [] {
           return structure(named("a", scalar(NcType::UnsignedLong)), named("b", enumeration()));
         },
         3},
        {"EmptyStructure", [] { return structure(); }, 0},
        {"BitFieldsOfOneByte",
         [] { return structure(named("a", bits(0, 3)), named("b", bits(3, 5))); }, 1},
        {"NumberBehindAPartlyUsedByte",
         [] {
           return structure(named("a", bits(0, 1)), named("b", bits(1, 3)),
                            named("c", scalar(NcType::UnsignedLong)));
         },
         3},
        {"UnionOfItsLongest",
         [] {
           return structure(named("u", unionOf(named("a", scalar(NcType::UnsignedQuad)),
                                               named("b", scalar(NcType::UnsignedChar)))),
                            named("c", scalar(NcType::UnsignedLong)));
         },
         6},
        {"UnionWithoutFollower",
         [] {
           return unionOf(named("a", scalar(NcType::UnsignedQuad)),
                          named("b", scalar(NcType::UnsignedChar)));
         },
         4},
        {"ArrayOfStructures",
         [] {
           return arrayOf(
               3, structure(named("a", enumeration()), named("b", scalar(NcType::UnsignedLong))));
         },
         9},
        {"DynamicArrayInFull", makeDynamicArray, 11},
    }),
    rowName);

TEST(VarType, CountsDynamicArraysInFullWhateverTheManagerUses) {
  TypeManager manager("drv");
  manager.setUseDynamicArrays(true);
  NvType type;
  type.setMember(makeDynamicArray());
  unsigned byteCount = 0;
  const test::LogCapture log;
  ASSERT_TRUE(type.getMaxSize(&manager, byteCount));
  EXPECT_EQ(byteCount, 11u);
  EXPECT_TRUE(log.lines().empty());
}

TEST(VarType, HasNoMaxSizeWithoutALayout) {
  const NvType type;
  unsigned byteCount = 99;
  EXPECT_FALSE(type.getMaxSize(nullptr, byteCount));
  EXPECT_EQ(byteCount, 99u);
}

TEST(VarType, HasNoMaxSizeWithAReferenceThatLeadsNowhere) {
  NvType type;
  type.setMember(structure(named("a", enumeration()), named("r", std::make_unique<MemRef>())));
  unsigned byteCount = 99;
  const test::LogCapture log;
  EXPECT_FALSE(type.getMaxSize(nullptr, byteCount));
  EXPECT_EQ(byteCount, 99u);
  EXPECT_TRUE(log.contains(base::Logger::Warning,
                           "[korvat] could not resolve ref 0000000000000000-0/SNVT\n"));
}

// --- Discriminators ---

struct DiscriminatorCase {
  std::string name;
  MemberPtr (*make)();
  std::string unionPath;
  std::string discriminator;
};
class VarTypeDiscriminator : public testing::TestWithParam<DiscriminatorCase> {};

TEST_P(VarTypeDiscriminator, IsTheNearestEnumerationBeforeTheUnion) {
  NvType type;
  type.setMember(GetParam().make());
  type.resolveDiscriminators();
  EXPECT_EQ(type.findDiscriminator(GetParam().unionPath), GetParam().discriminator);
}

MemberPtr number() {
  return scalar(NcType::UnsignedChar);
}
MemberPtr alternatives() {
  return unionOf(named("x", number()), named("y", number()));
}

INSTANTIATE_TEST_SUITE_P(
    Layouts, VarTypeDiscriminator,
    testing::ValuesIn(std::vector<DiscriminatorCase>{
        {"SameStructure",
         [] { return structure(named("kind", enumeration()), named("u", alternatives())); }, "u",
         "kind"},
        {"NotItsDirectNeighbour",
         [] {
           return structure(named("kind", enumeration()), named("n", number()),
                            named("u", alternatives()));
         },
         "u", "kind"},
        {"NearestOfTwo",
         [] {
           return structure(named("far", enumeration()), named("near", enumeration()),
                            named("u", alternatives()));
         },
         "u", "near"},
        {"NotBehindTheUnion",
         [] { return structure(named("u", alternatives()), named("kind", enumeration())); }, "u",
         ""},
        {"NoEnumeration",
         [] { return structure(named("n", number()), named("u", alternatives())); }, "u", ""},
        {"RootUnion", [] { return alternatives(); }, "", ""},
        {"InnerStructureFirst",
         [] {
           return structure(
               named("outer", enumeration()),
               named("s", structure(named("inner", enumeration()), named("u", alternatives()))));
         },
         "s.u", "s.inner"},
        {"Outwards",
         [] {
           return structure(
               named("outer", enumeration()),
               named("s", structure(named("n", number()), named("u", alternatives()))));
         },
         "s.u", "outer"},
        {"TwoStepsOutwards",
         [] {
           return structure(
               named("kind", enumeration()),
               named("s", structure(named("t", structure(named("u", alternatives()))))));
         },
         "s.t.u", "kind"},
        {"OneStepBeatsTwo",
         [] {
           return structure(
               named("far", enumeration()),
               named("s", structure(named("near", enumeration()),
                                    named("t", structure(named("u", alternatives()))))));
         },
         "s.t.u", "s.near"},
        {"UnionInAUnion",
         [] {
           return structure(
               named("kind", enumeration()),
               named("u", unionOf(named("e", enumeration()), named("v", alternatives()))));
         },
         "u.v", "kind"},
        {"StructureInAUnion",
         [] {
           return structure(named("kind", enumeration()),
                            named("u", unionOf(named("s", structure(named("inner", enumeration()),
                                                                    named("v", alternatives()))))));
         },
         "u.s.v", "u.s.inner"},
        {"ArrayOfEnumerationsIsNone",
         [] { return structure(named("kinds", enumeration(3)), named("u", alternatives())); }, "u",
         ""},
        {"NamelessEnumerationIsNone",
         [] {
           return structure(named("kind", enumeration()), enumeration(),
                            named("u", alternatives()));
         },
         "u", "kind"},
        {"UnknownPath",
         [] { return structure(named("kind", enumeration()), named("u", alternatives())); }, "v",
         ""},
        {"PathThroughANumber",
         [] { return structure(named("kind", enumeration()), named("n", number())); }, "n.u", ""},
        {"NoLayout", [] { return MemberPtr(); }, "u", ""},
    }),
    rowName);

}  // namespace
}  // namespace zavri::korvat
