#include "korvat/base/KeyedHash.h"

#include <cstdint>
#include <string>

#include <gtest/gtest.h>

namespace zavri::base {
namespace {

// The example of the SipHash paper, appendix A: key bytes 00..0F, message bytes 00..0E.
TEST(SipHash, GivesTheValueOfThePaper) {
  std::string message;
  for (char byte = 0; byte < 15; ++byte) message += byte;
  EXPECT_EQ(sipHash(0x0706050403020100, 0x0F0E0D0C0B0A0908, message), 0xA129CA6149BE45E5);
}

// From the test vectors that its authors publish: the same key, messages of no and of eight bytes.
TEST(SipHash, GivesThePublishedValuesForWholeWords) {
  EXPECT_EQ(sipHash(0x0706050403020100, 0x0F0E0D0C0B0A0908, ""), 0x726FDB47DD0E0E31);
  const std::string message("\0\1\2\3\4\5\6\7", 8);
  EXPECT_EQ(sipHash(0x0706050403020100, 0x0F0E0D0C0B0A0908, message), 0x93F5F5799A932462);
}

TEST(HashText, IsTheSameForEqualTextsThroughoutTheProcess) {
  EXPECT_EQ(hashText("state"), hashText(std::string("state")));
  EXPECT_NE(hashText("state"), hashText("stats"));
}

// Two processes draw the same key once in 2^128 times.
TEST(HashText, DiffersFromTheHashUnderAKnownKey) {
  EXPECT_NE(hashText("state"), sipHash(0, 0, "state"));
}

}  // namespace
}  // namespace zavri::base
