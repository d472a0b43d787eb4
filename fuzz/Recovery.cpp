#include "Recovery.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <iostream>

#include "program/Tool.h"
#include "support.h"
#include "toolkit/rescue/Verification.h"

using namespace velmar::toolkit;
using namespace velmar::tool;

namespace {

// The command says much on standard output and error; the fuzzer goes on using the latter.
bool silence() {
  std::cerr.setstate(std::ios::failbit);
  const int nowhere = ::open("/dev/null", O_WRONLY);
  return ::dup2(nowhere, STDOUT_FILENO) == STDOUT_FILENO && ::close(nowhere) == 0;
}

}  // namespace

void recover(const std::string& leftover, const std::string& extension,
             const std::vector<std::string>& options) {
  static const bool isSilent = silence();
  require(isSilent);
  const std::string output = leftover + ".out" + extension;
  std::vector<std::string> arguments{"recover", leftover, output, "--quiet"};
  arguments.insert(arguments.end(), options.begin(), options.end());
  std::reverse(arguments.begin(), arguments.end());
  Tool tool;
  addRecoverCommand(tool);
  tool.app.parse(arguments);
  try {
    tool.run();
    verify(output, false,
           [](const Finding& finding) {  // A frame that was recorded whole is kept even if it never
                                         // was a picture.
             require(finding.severity == Finding::Severity::Warning ||
                     finding.text == "has no JPEG header that can be read");
           });
  } catch (const Failure&) {
    // Nothing that could be recovered.
  }
  ::unlink(output.c_str());
}

void verifyBytes(const std::string& extension, const std::uint8_t* bytes, std::size_t size) {
  const TemporaryFile file(extension);
  file.write(bytes, size);
  verify(file.path(), true, [](const Finding& finding) { consume(finding.text); });
}
