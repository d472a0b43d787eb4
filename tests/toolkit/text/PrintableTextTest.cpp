#include "toolkit/text/PrintableText.h"

#include <gtest/gtest.h>

using namespace velmar::toolkit;

namespace {

using namespace std::string_literals;

TEST(PrintableText, KeepsWhatIsTextAndNothingElse) {
  const std::pair<std::string, std::string> cases[] = {
      {"", ""},
      {"drive 1.img", "drive 1.img"},
      {"Fahrt ä, 夜, 🚗.img", "Fahrt ä, 夜, 🚗.img"},
      {"\x1B[31m\a\n\0."s, R"(\x1B[31m\x07\x0A\x00.)"},
      {"\x7F\u0080\u009F\u00A0", "\\x7F\\xC2\\x80\\xC2\\x9F\u00A0"},
      {"a\u202E\u2066z", R"(a\xE2\x80\xAE\xE2\x81\xA6z)"},
      {"\x9B"
       "31m\xFF\xC0",
       R"(\x9B31m\xFF\xC0)"},
      {"\xE5\xA4.\xE5", R"(\xE5\xA4.\xE5)"},                // cut short
      {"\xC1\xA1\xE0\x80\x9B", R"(\xC1\xA1\xE0\x80\x9B)"},  // longer than it has to be
      {"\xED\xA0\x80\xF8\x88", R"(\xED\xA0\x80\xF8\x88)"},  // beyond all characters
  };
  for (const auto& [text, shown] : cases) EXPECT_EQ(printable(text), shown);
  EXPECT_EQ(printableJson("夜\u202E\x7F\xFF"), R"(夜\u202E\u007F\uFFFD)");
}

}  // namespace
