#include "Recovery.h"

#include <unistd.h>

#include "support.h"
#include "toolkit/rescue/Verification.h"

using namespace velmar::toolkit;

namespace {

std::vector<std::string> argumentsOf(const std::string& input, const std::string& output,
                                     const std::vector<std::string>& options) {
  std::vector<std::string> arguments{"recover", input, output, "--quiet"};
  arguments.insert(arguments.end(), options.begin(), options.end());
  return arguments;
}

}  // namespace

Recovery::Recovery(const std::string& leftover, const std::string& extension,
                   const std::vector<std::string>& options)
    : output_(leftover + ".out" + extension), command_(argumentsOf(leftover, output_, options)) {}

void Recovery::run() const {
  if (command_.run()) {
    verify(output_, false,
           [](const Finding& finding) {  // A frame that was recorded whole is kept even if it never
                                         // was a picture.
             require(finding.severity == Finding::Severity::Warning ||
                     finding.text == "has no JPEG header that can be read");
           });
  }
  ::unlink(output_.c_str());
}
