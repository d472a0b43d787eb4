#include "toolkit/files/OutputFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "base/FileDescriptor.h"
#include "toolkit/base/Failure.h"

namespace velmar::toolkit {

void replaceFile(const std::string& path, const std::string& bytes) {
  // A name of its own and a file of its own: what has that name already, a link to the input
  // perhaps, must not be written to.
  const std::string temporary = path + "." + std::to_string(::getpid()) + ".tmp";
  detail::FileDescriptor file(temporary, O_WRONLY | O_CREAT | O_EXCL, 0666);
  if (!file.isOpen()) throw Failure::ofCreation(path, errno);
  const bool written = file.write(bytes.data(), bytes.size());
  file.close();
  if (written && std::rename(temporary.c_str(), path.c_str()) == 0) return;
  const int cause = errno;
  ::unlink(temporary.c_str());
  throw Failure::ofSystem(path, "cannot write it", cause);
}

}  // namespace velmar::toolkit
