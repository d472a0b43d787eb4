#include "support/TestSupport.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "velmar_logger/control.h"

TempFolder::TempFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "velmar-XXXXXX").string();
  if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("no folder for the test");
  path_ = name;
}

TempFolder::~TempFolder() { std::filesystem::remove_all(path_); }

LogCapture::LogCapture() {
  velmar_logger::setSink([this](int level, const char* tag, const char* message) {
    lines_.push_back(std::to_string(level) + " " + tag + ": " + message);
  });
}

LogCapture::~LogCapture() { velmar_logger::setSink({}); }

std::vector<std::string> LogCapture::errors() const {
  std::vector<std::string> found;
  std::copy_if(lines_.begin(), lines_.end(), std::back_inserter(found),
               [](const std::string& line) { return line[0] == '3'; });
  return found;
}

bool LogCapture::has(const std::string& line) const {
  return std::find(lines_.begin(), lines_.end(), line) != lines_.end();
}

std::shared_ptr<VelmarVideoFileReader> openedReader(const std::string& path) {
  auto reader = makeVelmarVideoFileReader(path);
  EXPECT_EQ(reader->open(), kSuccess);
  return reader;
}

std::string storedFrame(VelmarVideoFileReader& reader, unsigned int index) {
  std::string bytes;
  EXPECT_EQ(reader.getRawImage(index, bytes), kSuccess);
  return bytes;
}

bool exists(const std::string& path) { return std::filesystem::exists(path); }

std::string readFile(const std::string& path) {
  std::ostringstream bytes;
  bytes << std::ifstream(path, std::ios::binary).rdbuf();
  return bytes.str();
}

void writeFile(const std::string& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

unsigned long numberFrom(const char* variable, unsigned long otherwise) {
  const char* text = std::getenv(variable);
  return text != nullptr ? std::stoul(text) : otherwise;
}

unsigned long bigEndian(const std::string& bytes, std::size_t offset, std::size_t width) {
  unsigned long value = 0;
  for (const char byte : bytes.substr(offset, width)) {
    value = value << 8 | static_cast<unsigned char>(byte);
  }
  return value;
}

std::string bigEndianBytes(unsigned long value, std::size_t width) {
  std::string bytes(width, '\0');
  for (std::size_t i = width; i-- > 0; value >>= 8) bytes[i] = static_cast<char>(value & 0xFF);
  return bytes;
}

bool inChildProcess(const std::function<bool()>& work) {
  const pid_t child = ::fork();
  if (child == 0) ::_exit(work() ? 0 : 1);
  int status = -1;
  return child > 0 && ::waitpid(child, &status, 0) == child && status == 0;
}
