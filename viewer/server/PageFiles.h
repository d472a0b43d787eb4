/// The page, which is built into the program.
#ifndef VELMAR_VIEWER_PAGE_FILES_H
#define VELMAR_VIEWER_PAGE_FILES_H

#include <string>
#include <string_view>

namespace velmar::viewer {

struct PageFile {
  const char* name;
  const char* type;
  std::string_view bytes;
};

/// Null if there is none of the name.
const PageFile* pageFile(const std::string& name);

}  // namespace velmar::viewer

#endif
