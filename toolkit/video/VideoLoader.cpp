// openVideo() and createVideo() of programs that load the module.
#include "toolkit/video/VideoModule.h"

#include <dlfcn.h>

#include <filesystem>

#include "toolkit/base/Failure.h"

namespace velmar::toolkit {

namespace {

namespace fs = std::filesystem;

// Beside the program, since both may be installed anywhere.
fs::path modulePath() {
  std::error_code error;
  return fs::read_symlink("/proc/self/exe", error).parent_path() / VELMAR_VIDEO_MODULE;
}

VideoModule loadModule(const std::string& file) {
  const auto refusal = [&file](const std::string& words) {
    return Failure(file, words, VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
  };
  const fs::path path = modulePath();
  std::error_code error;
  if (!fs::exists(path, error)) {
    throw refusal(
        "this build knows no videos; install libavformat-dev, libavcodec-dev, libavutil-dev and "
        "libswscale-dev and build again");
  }
  // It stays for the rest of the process.
  void* const module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  const void* const symbol = module != nullptr ? dlsym(module, "velmarVideoModule") : nullptr;
  if (symbol == nullptr) {
    const char* const words = dlerror();
    throw refusal(std::string("videos cannot be read or written: ") +
                  (words != nullptr ? words : path.c_str()));
  }
  return *static_cast<const VideoModule*>(symbol);
}

const VideoModule& module(const std::string& file) {
  static const VideoModule loaded = loadModule(file);
  return loaded;
}

}  // namespace

std::unique_ptr<VideoSource> openVideo(const VideoOpening& opening, Job& job) {
  return module(opening.name()).open(opening, job);
}

std::unique_ptr<VideoWriter> createVideo(const VideoDescription& description) {
  return module(description.path).create(description);
}

}  // namespace velmar::toolkit
