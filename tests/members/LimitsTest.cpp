#include "korvat/members/Limits.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "korvat/types/TypeManager.h"
#include "tests/LogCapture.h"
#include "tests/TempCatalogue.h"
#include "tests/members/MemberTree.h"

namespace zavri::korvat {
namespace {

using base::Logger;
using test::makeRef;
using test::makeScalar;
using test::makeStruct;
using test::withArray;
using Lines = std::vector<std::string>;

const base::Buffer kNothing;

bool accept(Member::Context&, const Member&) {
  return true;
}

// `count` structures inside each other around a byte.
std::unique_ptr<Member> makeNest(int count) {
  std::unique_ptr<Member> member = makeScalar("x");
  for (int i = 0; i < count; ++i) member = makeStruct("s", std::move(member));
  return member;
}

// A catalogue of types "_t0" to "_t<levels>": each but the last is a structure of two references
// to the next one, the last is a byte. A value of "_t0" has 2^levels bytes.
TypeManager makeDoublingManager(test::TempCatalogue& files, int levels) {
  std::string items;
  for (int level = 0; level < levels; ++level) {
    const std::string next = test::refXml("_t" + std::to_string(level + 1));
    items += test::nvtXml("_t" + std::to_string(level),
                          test::structXml(test::memberXml("a", next) + test::memberXml("b", next)));
  }
  items += test::nvtXml("_t" + std::to_string(levels), test::scalarXml("unsigned char"));
  files.write(TypeId::StdPrefix, "nvs", items);
  return files.makeManager();
}

TEST(Limits, GiveUpAWalkAfterFourMillionVisits) {
  // A short definition that describes more than 4 billion empty structures.
  const auto root = withArray(makeStruct("s", withArray(makeStruct("t"), 65536)), 65536);
  Member::Context context(nullptr, kNothing, true);
  context.describePlace = [](std::string& place) { place += "s.t"; };
  test::LogCapture log;
  EXPECT_FALSE(root->traverse(context, accept, accept));
  EXPECT_EQ(log.texts(Logger::Warning),
            Lines{"[korvat] walk given up after 4000000 visits: s.t\n"});
  EXPECT_EQ(log.lines().size(), 1u);
}

TEST(Limits, LetAWalkMakeAllItsVisits) {
  // The structure itself is the first visit.
  const auto root = makeStruct("s", makeScalar("x", NcType::UnsignedShort, 2'000'000),
                               makeScalar("y", NcType::UnsignedShort, 1'999'999));
  Member::Context context(nullptr, kNothing, true);
  EXPECT_TRUE(root->traverse(context, accept, accept));
  EXPECT_EQ(context.bytePos, 3'999'999u);

  const auto larger = makeStruct("s", makeScalar("x", NcType::UnsignedShort, 2'000'000),
                                 makeScalar("y", NcType::UnsignedShort, 2'000'000));
  Member::Context other(nullptr, kNothing, true);
  test::LogCapture log;
  EXPECT_FALSE(larger->traverse(other, accept, accept));
}

TEST(Limits, GiveUpAWalkThroughTooManyStructuresInsideEachOther) {
  Member::Context context(nullptr, kNothing, true);
  EXPECT_TRUE(makeNest(256)->traverse(context, accept, accept));

  Member::Context deeper(nullptr, kNothing, true);
  deeper.describePlace = [](std::string& place) { place += "deep"; };
  test::LogCapture log;
  EXPECT_FALSE(makeNest(257)->traverse(deeper, accept, accept));
  EXPECT_EQ(log.texts(Logger::Warning),
            Lines{"[korvat] walk given up, members nested deeper than 256: deep\n"});
  EXPECT_EQ(log.lines().size(), 1u);
}

TEST(Limits, CountNoBitsBelowTooManyStructuresInsideEachOther) {
  EXPECT_EQ(makeNest(256)->getBitCount(nullptr), 8u);

  test::LogCapture log;
  EXPECT_EQ(makeNest(257)->getBitCount(nullptr), 0u);
  EXPECT_EQ(log.texts(Logger::Warning),
            Lines{"[Member::getBitCount] given up, members nested deeper than 256\n"});
  EXPECT_EQ(log.lines().size(), 1u);
}

TEST(Limits, CountEachTypeOfAGraphOfReferencesOnce) {
  test::TempCatalogue files;
  TypeManager manager = makeDoublingManager(files, 24);
  EXPECT_EQ(makeRef("r", "_t24")->getBitCount(&manager), 8u);
  EXPECT_EQ(makeRef("r", "_t14")->getBitCount(&manager), 8u << 10);
  EXPECT_EQ(makeRef("r", "_t0")->getBitCount(&manager), 8u << 24);
}

TEST(Limits, EndTheCountOfAGraphThatIsTooLargeToBeWalked) {
  test::TempCatalogue files;
  TypeManager manager = makeDoublingManager(files, 100);
  EXPECT_EQ(makeRef("r", "_t0")->getBitCount(&manager), 0xFFFFFFFFu);
}

TEST(Limits, EndAWalkOverAGraphThatIsTooLarge) {
  test::TempCatalogue files;
  TypeManager manager = makeDoublingManager(files, 60);
  Member::Context context(&manager, kNothing, true);
  test::LogCapture log(Logger::Warning);
  EXPECT_FALSE(makeRef("r", "_t0")->traverse(context, accept, accept));
  EXPECT_EQ(log.texts(Logger::Warning), Lines{"[korvat] walk given up after 4000000 visits: \n"});
}

TEST(Limits, FindNothingAtAPathThatIsTooLong) {
  const auto root = makeStruct("s", makeScalar("x"));
  EXPECT_NE(root->findMemberAtPath(nullptr, "x[" + std::string(4'094, '1')), nullptr);
  EXPECT_EQ(root->findMemberAtPath(nullptr, "x[" + std::string(4'095, '1')), nullptr);
}

}  // namespace
}  // namespace zavri::korvat
