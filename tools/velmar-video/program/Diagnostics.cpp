#include "program/Diagnostics.h"

#include <unistd.h>

#include <iostream>

#include "program/Toolkit.h"
#include "toolkit/text/PrintableText.h"

namespace velmar::tool {

void say(const std::string& line) {
  // On a terminal the line replaces the progress that may stand there.
  std::string text = isatty(STDERR_FILENO) != 0 ? "\r\033[K" : "";
  text += "velmar-video: " + printable(line) + "\n";
  std::cerr << text;
}

}  // namespace velmar::tool
