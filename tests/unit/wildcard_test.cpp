// Wildcard substitution.
#include "qutil/wildcard.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

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

}  // namespace
