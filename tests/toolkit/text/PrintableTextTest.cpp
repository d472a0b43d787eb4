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
      {"\x1B[31m\a\n\r\t\0."s, "?[31m?????."},
      {"\x7F\u0080\u009B\u009F\u00A0",
       "???"
       "?\u00A0"},
      {"a\u202E\u2028\u2066"
       "b",
       "a???b"},
      {"\x9B"
       "31m\xFF\xC0\x80",
       "?31m???"},
      {"\xE5\xA4.\xE5", "??.?"},                              // cut short
      {"\xC1\xA1\xE0\x80\x9B\xF0\x80\x80\x9B", "?????????"},  // longer than it has to be
      {"\xED\xA0\x80\xF4\x90\x80\x80\xF8\x88\x80\x80\x80",
       "????????????"},  // beyond all characters
  };
  for (const auto& [text, shown] : cases) EXPECT_EQ(printable(text), shown);
}

}  // namespace
