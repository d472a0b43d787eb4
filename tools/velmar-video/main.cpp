#include <fcntl.h>
#include <unistd.h>

#include "Tool.h"

namespace {

/// A standard stream that is closed must not become the number of a file that is opened later.
void occupyStandardStreams() {
  int fd = 0;
  while (fd >= 0 && fd <= STDERR_FILENO) fd = ::open("/dev/null", O_RDONLY);
  if (fd > STDERR_FILENO) ::close(fd);
}

}  // namespace

int main(int argc, char** argv) {
  occupyStandardStreams();
  return runTool(argc, argv);
}
