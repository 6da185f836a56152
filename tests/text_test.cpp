// Wildcard substitution, and the simulator's texts.
#include "simulator/text.h"

#include <gtest/gtest.h>

#include "qutil/wildcard.h"

namespace {

TEST(WildcardTest, Substitution) {
  const std::tuple<const char*, const char*, const char*> cases[] = {{"ABCDEF", "X?Z", "XBZ"},
                                                                     {"ABCDEF", "AB*", "ABCDEF"},
                                                                     {"ABCDEF", "*-new", "ABCDEF-new"},
                                                                     {"ABCDEF", "?\?-*", "AB-DEF"},
                                                                     {"ABCDEF", "Q*x?y*", "QBCDEFxy"},
                                                                     {"ABCDEF", "ABCDEFGH?", "ABCDEFGH"},
                                                                     {"ABCDEF", "", ""},
                                                                     {"AB", "123*4", "1234"},
                                                                     {"AB", "12*", "12"},
                                                                     {"", "?*x", "x"},
                                                                     {"AB", "**?*", "AB"}};
  for (const auto& [source, pattern, expected] : cases) {
    std::string output = "kept:";
    MyReplace(source, pattern, output);
    EXPECT_EQ(output, std::string("kept:") + expected) << source << " " << pattern;
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

TEST(TextTest, FillKeepsToItsCapacity) {
  for (const int32_t capacity : {1, 2, 3, 4, 5}) {
    wchar_t buffer[6] = {9, 9, 9, 9, 9, 9};
    const auto status = simulator::fill("a\u00FCc", capacity, buffer);
    EXPECT_EQ(status, capacity > 3 ? Automation::Velq::Success : simulator::WarningTextCut);
    EXPECT_EQ(std::wstring(buffer), std::wstring(L"a\u00FCc").substr(0, static_cast<size_t>(capacity) - 1));
    EXPECT_EQ(buffer[capacity], 9);
  }
  wchar_t untouched = 9;
  EXPECT_EQ(simulator::fill("a", 0, &untouched), simulator::ErrorRefused);
  EXPECT_EQ(simulator::fill("a", -1, &untouched), simulator::ErrorRefused);
  EXPECT_EQ(untouched, 9);
}

}  // namespace
