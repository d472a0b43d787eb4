// Writes the manual page and the completions of the tool into files.
#include <fstream>
#include <iostream>

#include "Forms.h"
#include "program/Tool.h"

using namespace velmar::tool;

namespace {

bool writeFile(const char* path, const std::string& text) {
  std::ofstream file(path);
  file << text;
  file.close();
  if (!file) std::cerr << path << ": cannot write it\n";
  return !file.fail();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 5) {
    std::cerr << "usage: velmar-video-reference MANUAL-PAGE BASH ZSH FISH\n";
    return 2;
  }
  Tool tool;
  addCommands(tool);
  const bool written =
      writeFile(argv[1], manualPage(tool.app)) && writeFile(argv[2], bashCompletion(tool.app)) &&
      writeFile(argv[3], zshCompletion(tool.app)) && writeFile(argv[4], fishCompletion(tool.app));
  return written ? 0 : 1;
}
