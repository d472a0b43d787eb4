#include "toolkit/catalog/Catalog.h"

#include "commands/catalog/CatalogOptions.h"
#include "program/StandardOutput.h"
#include "program/Tool.h"
#include "toolkit/text/JsonText.h"
#include "toolkit/text/NumberText.h"
#include "toolkit/text/PrintableText.h"
#include "toolkit/text/TimeText.h"

namespace velmar::tool {

namespace {

struct Options {
  std::string file;
  bool json = false;
};

std::string hoursText(std::uint64_t micros) {
  constexpr double kHour = 3.6e9;
  return fixedText(static_cast<double>(micros) / kHour, 2) + " h";
}

std::string textOf(const CatalogTotals& totals) {
  return counted(totals.recordings, "recording") + ", " + counted(totals.frames, "frame") + ", " +
         hoursText(totals.duration) + ", " + sizeText(totals.bytes);
}

std::string membersOf(const CatalogTotals& totals) {
  return R"("recordings":)" + std::to_string(totals.recordings) + R"(,"frames":)" +
         std::to_string(totals.frames) + R"(,"duration_us":)" + std::to_string(totals.duration) +
         R"(,"bytes":)" + std::to_string(totals.bytes);
}

std::string jsonOf(const std::string& file, const CatalogInfo& info) {
  std::string text =
      R"({"file":)" + toJsonText(file) + "," + membersOf(info.all) + R"(,"containers":{)";
  for (const CatalogTotals& one : info.containers) {
    text += (&one == info.containers.data() ? "\"" : ",\"") + one.container + R"(":{)" +
            membersOf(one) + "}";
  }
  text += "}";
  if (info.span) {
    text += R"(,"start":")" + formatTime(info.span->first) + R"(","end":")" +
            formatTime(info.span->second) + "\"";
  }
  return text + R"(,"unreadable":)" + std::to_string(info.unreadable) + R"(,"removed":)" +
         std::to_string(info.removed) + "}\n";
}

std::string textOf(const std::string& file, const CatalogInfo& info) {
  std::string text = printable(file) + "\n  all          " + textOf(info.all) + "\n";
  for (const CatalogTotals& one : info.containers) {
    text += "  " + one.container + "          " + textOf(one) + "\n";
  }
  if (info.span) {
    text += "  captured     " + formatTime(info.span->first) + " to " +
            formatTime(info.span->second) + "\n";
  }
  return text + "  unreadable   " + std::to_string(info.unreadable) + "\n  removed      " +
         std::to_string(info.removed) + "\n";
}

ExitStatus showInfo(const Options& options, CommandJob& job) {
  const CatalogInfo info = Catalog(options.file, Database::Access::Read).info();
  StandardOutput output;
  output.write(options.json ? jsonOf(options.file, info) : textOf(options.file, info));
  output.flush();
  return job.status();
}

void addOptions(CLI::App& command, Options& options) {
  addDatabaseOption(command, options.file);
  command.add_flag("--json", options.json, "One JSON object");
}

}  // namespace

void addCatalogInfoCommand(Tool& tool) {
  tool.addCommand<Options>(
      {"catalog info", "Show how many recordings a catalogue has, and of which time.",
       "catalog info fleet.db"},
      {addOptions, showInfo});
}

}  // namespace velmar::tool
