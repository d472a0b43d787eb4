// The module's only symbol that programs see.
#include "server/ViewerModule.h"

namespace velmar::viewer {

extern "C" __attribute__((visibility("default")))
const ViewerModule velmarViewerModule = {&startServer};

}  // namespace velmar::viewer
