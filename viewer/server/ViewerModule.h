/// The server's libraries take longer to load than most commands run. It is a module that is loaded
/// when recordings are viewed.
#ifndef VELMAR_VIEWER_VIEWER_MODULE_H
#define VELMAR_VIEWER_VIEWER_MODULE_H

#include "server/ViewerServer.h"

namespace velmar::viewer {

/// What the module has under the name `velmarViewerModule`.
struct ViewerModule {
  decltype(&startServer) start;
};

}  // namespace velmar::viewer

#endif
