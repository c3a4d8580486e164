#include "korvat/builder/ElementMap.h"

#include <gtest/gtest.h>

namespace zavri::korvat::builder {
namespace {

constexpr TElementMap<5> kMap({{
    {"zoo", 1, 2, 3},
    {"a", 4, 0, 0},
    {"array-size", 0, 0, 5},
    {"array-min-size", 0, 0, 6},
    {"ab", 0, 7, 0},
}});
static_assert(kMap.isUnambiguous());

TEST(ElementMap, FindsEachNameWhateverItsOrder) {
  EXPECT_EQ(kMap.find("zoo").start, 1u);
  EXPECT_EQ(kMap.find("zoo").end, 2u);
  EXPECT_EQ(kMap.find("zoo").value, 3u);
  EXPECT_EQ(kMap.find("a").start, 4u);
  EXPECT_EQ(kMap.find("array-size").value, 5u);
  EXPECT_EQ(kMap.find("array-min-size").value, 6u);
  EXPECT_EQ(kMap.find("ab").end, 7u);
}

TEST(ElementMap, ComparesTheWholeNameAndItsCase) {
  for (const char* name : {"", "A", "Zoo", "zo", "zoos", "array-si", "array-sizes", "array-min-siz",
                           "\xC3\xA9", "zzzzzzzzzzzz"}) {
    SCOPED_TRACE(name);
    EXPECT_EQ(kMap.find(name).start, 0u);
    EXPECT_EQ(kMap.find(name).end, 0u);
    EXPECT_EQ(kMap.find(name).value, 0u);
  }
}

TEST(ElementMap, IsAmbiguousWhenTwoNamesShareEightCharacters) {
  constexpr TElementMap<2> kAmbiguous({{{"characters", 1, 0, 0}, {"characteristic", 2, 0, 0}}});
  EXPECT_FALSE(kAmbiguous.isUnambiguous());
}

}  // namespace
}  // namespace zavri::korvat::builder
