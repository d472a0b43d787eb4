#include "program/StandardOutput.h"

#include <unistd.h>

#include <cerrno>

namespace velmar::tool {

void StandardOutput::write(std::string_view text) {
  constexpr std::size_t kPiece = 1 << 16;
  pending_.append(text);
  if (mode_ == Mode::Direct && pending_.size() >= kPiece) flush();
}

void StandardOutput::flush() {
  std::string_view rest = pending_;
  while (!rest.empty()) {
    const ssize_t count = ::write(STDOUT_FILENO, rest.data(), rest.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) {
      throw OutputFailure(Failure::ofSystem("standard output", "cannot write to it", errno));
    }
    rest.remove_prefix(static_cast<std::size_t>(count));
  }
  pending_.clear();
}

}  // namespace velmar::tool
