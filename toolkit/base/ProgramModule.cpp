#include "toolkit/base/ProgramModule.h"

#include <dlfcn.h>

#include <filesystem>

#include "toolkit/base/Failure.h"

namespace velmar::toolkit {

const void* symbolOf(const ProgramModule& module, const char* name, const std::string& about) {
  const auto refusal = [&about](const std::string& words) {
    return Failure(about, words, VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
  };
  std::error_code error;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
  const std::filesystem::path path = program.parent_path() / module.path;
  if (!std::filesystem::exists(path, error)) throw refusal(module.missing);
  void* const loaded = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  const void* const symbol = loaded != nullptr ? dlsym(loaded, name) : nullptr;
  if (symbol != nullptr) return symbol;
  const char* const words = dlerror();
  throw refusal(module.refusal + ": " + (words != nullptr ? words : path.c_str()));
}

}  // namespace velmar::toolkit
