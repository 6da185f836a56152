// Wildcard substitution, and the simulator's texts.
#include "simulator/text.h"

#include <gtest/gtest.h>

#include <sstream>

#include "qutil/wildcard.h"

namespace {

TEST(WildcardTest, Substitution) {
  std::istringstream rows(
      "ABCDEF X?Z XBZ  ABCDEF AB* ABCDEF  ABCDEF *-new ABCDEF-new  ABCDEF ?\?-* AB-DEF  ABCDEF Q*x?y* QBCDEFxy "
      "ABCDEF ABCDEFGH? ABCDEFGH  AB 123*4 1234  AB 12* 12  AB **?* AB");
  for (std::string source, pattern, expected; rows >> source >> pattern >> expected;) {
    std::string output = "kept:";
    MyReplace(source, pattern, output);
    EXPECT_EQ(output, "kept:" + expected) << source << " " << pattern;
  }
  std::string text = "aabacaa";
  RemoveChar(text, 'a');
  EXPECT_EQ(text, "bc");
}

TEST(TextTest, Utf8RoundTripAndWhatIsNoCharacter) {
  const std::string text = "a\u00FC\u20AC\U0001F527";
  EXPECT_EQ(simulator::fromUtf8(text), L"a\u00FC\u20AC\U0001F527");
  EXPECT_EQ(simulator::toUtf8(L"a\u00FC\u20AC\U0001F527"), text);
  EXPECT_EQ(simulator::characterCount(text), 4U);
  for (const unsigned bad : {0xD800U, 0xDFFFU, 0x110000U, 0x44434241U, 0xFFFFFFFFU})
    EXPECT_EQ(simulator::toUtf8(std::wstring(1, static_cast<wchar_t>(bad))), std::nullopt);
}

}  // namespace
