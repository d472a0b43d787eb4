#include "program/Diagnostics.h"

#include <unistd.h>

#include <iostream>

namespace velmar::tool {

void say(const std::string& line) {
  // On a terminal the line replaces the progress that may stand there.
  std::string text = isatty(STDERR_FILENO) != 0 ? "\r\033[K" : "";
  text += "velmar-video: " + printable(line) + "\n";
  std::cerr << text;
}

std::string printable(std::string text) {
  for (char& character : text) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte < ' ' || byte == 0x7F) character = '?';
  }
  return text;
}

}  // namespace velmar::tool
