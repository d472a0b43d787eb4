/// What the tests of several folders need.
#ifndef VELMAR_TESTS_TEST_SUPPORT_H
#define VELMAR_TESTS_TEST_SUPPORT_H

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "velmar_video/VelmarVideoFile.h"

/// A folder of the test's own, deleted with the object.
class TempFolder {
 public:
  TempFolder();
  ~TempFolder();
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  std::string operator/(const std::string& name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

/// Catches the library's log lines, as "LEVEL TAG: MESSAGE", while it lives.
class LogCapture {
 public:
  LogCapture();
  ~LogCapture();
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  const std::vector<std::string>& lines() const { return lines_; }
  /// Lines of errors only ("3 ...").
  std::vector<std::string> errors() const;
  bool has(const std::string& line) const;

 private:
  std::vector<std::string> lines_;
};

constexpr auto kSuccess = VELMAR_ERROR_CODE_SUCCESS_E;

/// A reader of the file, which is to open.
std::shared_ptr<VelmarVideoFileReader> openedReader(const std::string& path);
/// What a getter gives, which is to succeed.
template <typename Class, typename Code, typename Value>
Value got(Class& object, Code (Class::*getter)(Value&)) {
  Value value{};
  EXPECT_EQ((object.*getter)(value), Code{});
  return value;
}
template <typename Class, typename Code, typename Index, typename Value>
Value got(Class& object, Code (Class::*getter)(Index, Value&), std::type_identity_t<Index> index) {
  Value value{};
  EXPECT_EQ((object.*getter)(index, value), Code{});
  return value;
}

/// A frame as it is stored, which is to be had.
std::string storedFrame(VelmarVideoFileReader& reader, unsigned int index);

bool exists(const std::string& path);
std::string readFile(const std::string& path);
void writeFile(const std::string& path, const std::string& bytes);

/// An environment variable's number.
unsigned long numberFrom(const char* variable, unsigned long otherwise);

/// An unsigned big-endian number of `width` bytes.
unsigned long bigEndian(const std::string& bytes, std::size_t offset, std::size_t width);
std::string bigEndianBytes(unsigned long value, std::size_t width);

/// Runs `work` in a process of its own, which ends without destructors, as if killed. False if
/// `work` gave false or crashed.
bool inChildProcess(const std::function<bool()>& work);

#endif
