#include "program/Tool.h"

namespace velmar::tool {

void addCatalogCommand(Tool& tool) {
  tool.addGroup({"catalog", "Keep a database of many recordings, and find frames by it.",
                 "catalog add fleet.db day --recursive\n"
                 "  velmar-video catalog find fleet.db --where 'speed_m_s > 20'"});
  addCatalogAddCommand(tool);
  addCatalogFindCommand(tool);
  addCatalogInfoCommand(tool);
  addCatalogSqlCommand(tool);
}

}  // namespace velmar::tool
