#include "Diagnostics.h"

#include <unistd.h>

#include <iostream>

void say(const std::string& line) {
  // On a terminal the line replaces the progress that may stand there.
  std::string text = isatty(STDERR_FILENO) != 0 ? "\r\033[K" : "";
  text += "velmar-video: " + line;
  // A file's name must not break the line, nor command the terminal.
  for (std::size_t i = text.size() - line.size(); i < text.size(); ++i) {
    const auto character = static_cast<unsigned char>(text[i]);
    if (character < ' ' || character == 0x7F) text[i] = '?';
  }
  text += '\n';
  std::cerr << text;
}
