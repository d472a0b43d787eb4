#include "OutputFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "Failure.h"
#include "common/FileDescriptor.h"

void writeFile(const std::string& path, const std::string& bytes) {
  const std::string temporary = path + ".tmp";
  FileDescriptor file(temporary, O_WRONLY | O_CREAT | O_TRUNC, 0666);
  if (!file.isOpen()) throw Failure::ofSystem(path, "cannot create it", errno);
  const bool written = file.write(bytes.data(), bytes.size());
  file.close();
  if (written && std::rename(temporary.c_str(), path.c_str()) == 0) return;
  const int cause = errno;
  ::unlink(temporary.c_str());
  throw Failure::ofSystem(path, "cannot write it", cause);
}
