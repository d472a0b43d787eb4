#include "commands/catalog/CatalogOptions.h"

#include <CLI/CLI.hpp>

namespace velmar::tool {

void addDatabaseOption(CLI::App& command, std::string& file) {
  command.add_option("database", file, "The catalogue")->required();
}

void addRowFormOptions(CLI::App& command, bool& csv) {
  CLI::Option* json = command.add_flag("--json");
  json->description("One JSON object a line; so it is without --csv, too");
  command.add_flag("--csv", csv, "Comma-separated values with a header line")->excludes(json);
}

}  // namespace velmar::tool
