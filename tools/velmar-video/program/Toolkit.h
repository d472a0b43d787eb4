/// The tool is written in the toolkit's words: this makes them its own.
#ifndef VELMAR_TOOL_TOOLKIT_H
#define VELMAR_TOOL_TOOLKIT_H

namespace velmar::toolkit {}

namespace velmar::tool {
using namespace toolkit;
}  // namespace velmar::tool

#endif
