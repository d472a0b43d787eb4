#include "support.h"
#include "toolkit/base/Failure.h"
#include "toolkit/logs/LogReader.h"
#include "toolkit/tables/TagsCsv.h"
#include "toolkit/tables/TimesCsv.h"
#include "toolkit/text/CsvTable.h"

using namespace velmar::toolkit;

namespace {

const std::vector<std::string> kFiles = {"in/1.jpg", "in/2.jpg", "a/2.jpg"};

void consumeTags(const CsvTable& table, version_e version) {
  try {
    for (const FrameTag& tag : readTags(table, kFiles, version)) {
      consume(&tag.can, sizeof tag.can);
    }
  } catch (const Failure& failure) {
    consume(failure.what());
  }
}

void consumeTimes(const std::vector<FrameTimes>& times, std::size_t count) {
  require(times.size() == count);
  consume(times.data(), times.size() * sizeof times[0]);
}

void consumeTimes(const CsvTable& table) {
  try {
    consumeTimes(readAllTimes(table), table.rows().size());
    consumeTimes(readTimes(table, kFiles), kFiles.size());
  } catch (const Failure& failure) {
    consume(failure.what());
  }
}

// Tables with a time, and GPX.
void consumeLog(const std::uint8_t* data, std::size_t size) {
  static const TemporaryFile file(".log");
  file.write(data, size);
  LogRequest request;
  request.files = {file.path()};
  for (const ReadLog& log : readLogs(request, tagColumns(RTV_VER_04))) {
    for (const LogSeries& series : log.series) {
      consume(series.samples.data(), series.samples.size() * sizeof series.samples[0]);
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    const CsvTable table("table.csv", {reinterpret_cast<const char*>(data), size});
    consumeTimes(table);
    for (const auto version : {RTV_VER_02, RTV_VER_03, RTV_VER_04}) consumeTags(table, version);
  } catch (const Failure& failure) {
    consume(failure.what());
  }
  try {
    consumeLog(data, size);
  } catch (const Failure& failure) {
    consume(failure.what());
  }
  return 0;
}
