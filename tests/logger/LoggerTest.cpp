#include <gtest/gtest.h>

#include "support/TestSupport.h"
#include "velmar_logger/control.h"
#include "velmar_logger/velmar_logger.h"

namespace {

TEST(Logger, SinkGetsEveryLevelAndWholeLines) {
  const LogCapture log;
  const std::string longText(5000, 'x');
  velmar_logger::d("t", "%s", longText.c_str());
  velmar_logger::i("t", "%d of %u", -1, 2U);
  velmar_logger::doLogv2("f.cpp", 7, "u", 3, "ends in newline\n");
  EXPECT_TRUE(log.has("0 t: " + longText));
  EXPECT_TRUE(log.has("1 t: -1 of 2"));
  EXPECT_TRUE(log.has("3 u: ends in newline\n"));
}

TEST(Logger, DefaultSinkShowsItsLevelAndUp) {
  const auto shown = [] {
    testing::internal::CaptureStderr();
    velmar_logger::i("t", "information");
    velmar_logger::w("t", "warning");
    velmar_logger::e("t", "error\n");
    return testing::internal::GetCapturedStderr();
  };
  const std::string byDefault = shown();
  EXPECT_EQ(byDefault.find("information"), std::string::npos);
  EXPECT_NE(byDefault.find("t: warning"), std::string::npos);
  EXPECT_NE(byDefault.find("t: error"), std::string::npos);
  velmar_logger::setLevel(4);
  EXPECT_EQ(shown(), "");
  velmar_logger::setLevel(0);
  EXPECT_NE(shown().find("information"), std::string::npos);
  velmar_logger::setLevel(2);
}

}  // namespace
