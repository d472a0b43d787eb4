/// What several commands about catalogues have. All of it has to outlive the parsing.
#ifndef VELMAR_TOOL_CATALOG_OPTIONS_H
#define VELMAR_TOOL_CATALOG_OPTIONS_H

#include <string>

namespace CLI {
class App;
}  // namespace CLI

namespace velmar::tool {

void addDatabaseOption(CLI::App& command, std::string& file);

/// --json, which is what is printed anyway, and --csv.
void addRowFormOptions(CLI::App& command, bool& csv);

}  // namespace velmar::tool

#endif
