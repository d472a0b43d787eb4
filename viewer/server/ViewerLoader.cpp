// startServer() of programs that load the module.
#include "server/ViewerModule.h"
#include "toolkit/base/ProgramModule.h"

namespace velmar::viewer {

std::unique_ptr<ViewerServer> startServer(const ServerOptions& options) {
  const toolkit::ProgramModule module{VELMAR_VIEWER_MODULE,
                                      "this build has no viewer; install libcpp-httplib-dev, "
                                      "esbuild, libjs-leaflet and libjs-dygraphs and build again",
                                      "the viewer cannot be loaded"};
  const void* const symbol = toolkit::symbolOf(module, "velmarViewerModule", "viewer");
  return static_cast<const ViewerModule*>(symbol)->start(options);
}

}  // namespace velmar::viewer
