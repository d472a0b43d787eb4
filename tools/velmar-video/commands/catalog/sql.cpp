#include "toolkit/catalog/Catalog.h"

#include <cmath>

#include "commands/catalog/CatalogOptions.h"
#include "program/StandardOutput.h"
#include "program/Tool.h"
#include "toolkit/text/CsvTable.h"
#include "toolkit/text/JsonText.h"
#include "toolkit/text/NumberText.h"

namespace velmar::tool {

namespace {

struct Options {
  std::string file;
  std::string query;
  bool csv = false;
};

std::string cellOf(const Statement& row, int column, bool isCsv) {
  const bool isUnknown =
      row.isNull(column) || (row.isReal(column) && !std::isfinite(row.real(column)));
  if (isUnknown) return isCsv ? "" : "null";
  if (row.isInteger(column)) return numberText(row.number(column));
  if (row.isReal(column)) return numberText(row.real(column));
  return isCsv ? csvText(row.text(column)) : toJsonText(row.text(column));
}

std::string lineOf(const Statement& row, bool isCsv) {
  std::string line;
  for (int i = 0; i < row.columns(); ++i) {
    line += i == 0 ? "" : ",";
    if (!isCsv) line += toJsonText(row.columnName(i)) + ":";
    line += cellOf(row, i, isCsv);
  }
  return isCsv ? line + "\n" : "{" + line + "}\n";
}

ExitStatus ask(const Options& options, CommandJob& job) {
  Catalog catalog(options.file, Database::Access::Read);
  catalog.database().allowSelectOnly();
  Statement rows(catalog.database(), options.query);
  StandardOutput output;
  if (options.csv) {
    std::string header;
    for (int i = 0; i < rows.columns(); ++i)
      header += (i == 0 ? "" : ",") + csvText(rows.columnName(i));
    output.write(header + "\n");
  }
  while (rows.step()) output.write(lineOf(rows, options.csv));
  output.flush();
  return job.status();
}

void addOptions(CLI::App& command, Options& options) {
  addDatabaseOption(command, options.file);
  command.add_option("query", options.query, "A SELECT")->required();
  addRowFormOptions(command, options.csv);
}

}  // namespace

void addCatalogSqlCommand(Tool& tool) {
  tool.addCommand<Options>(
      {"catalog sql", "Answer a question in SQL about the tables of a catalogue.",
       "catalog sql fleet.db 'SELECT file, frames FROM recordings' --csv"},
      {addOptions, ask});
}

}  // namespace velmar::tool
