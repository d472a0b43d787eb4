#ifndef VELMAR_TOOLKIT_PROGRAM_MODULE_H
#define VELMAR_TOOLKIT_PROGRAM_MODULE_H

#include <string>

namespace velmar::toolkit {

/// A part of the program in a file of its own, for work whose libraries take longer to load than
/// most commands run.
struct ProgramModule {
  std::string path;     ///< from the folder of the program, since both may be installed anywhere
  std::string missing;  ///< the words for a build without it
  std::string refusal;  ///< the words for one that cannot be loaded
};

/// What has this name in the module, which stays loaded for the rest of the process. Throws
/// Failure.
/// \param about  what the failure is about, such as a file
const void* symbolOf(const ProgramModule& module, const char* name, const std::string& about);

}  // namespace velmar::toolkit

#endif
