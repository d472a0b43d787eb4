// velmar-bench [--quick] OUT TEMPLATE DOCS [Google Benchmark's options]: measures everything and
// writes OUT/report.md, OUT/report.svg, and the document DOCS with its picture from the template.
// --quick: to see that all of it works; the figures mean nothing.

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>

#include "Bench.h"
#include "Files.h"
#include "Plot.h"
#include "Report.h"

namespace {

namespace fs = std::filesystem;

std::string readText(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  require(file.is_open(), path + ": not read");
  return {std::istreambuf_iterator<char>(file), {}};
}

void writeText(const fs::path& path, const std::string& text) {
  std::ofstream file(path, std::ios::binary);
  file << text << std::flush;
  require(file.good(), path.string() + ": not written");
}

void replaceLine(std::string& text, const std::string& mark, const std::string& by) {
  const std::size_t at = text.find(mark + '\n');
  require(at != std::string::npos, "the template has no " + mark);
  text.replace(at, mark.size() + 1, by);
}

// The template with what has been measured so far.
std::string filled(std::string text, const std::string& folder) {
  replaceLine(text, "{{machine}}", machineList(folder));
  replaceLine(text, "{{figures}}", figuresTable(results()));
  replaceLine(text, "{{growth}}", growthTable(results()));
  require(text.find("{{") == std::string::npos, "the template has a mark too many");
  return text;
}

void addAllRows() {
  addWriteRows();
  addOpenRows();
  addFramesRows();
  addDecodeRows();
  addEditRows();
  addToolRows();
  addViewerRows();
  addCatalogRows();
  addPythonRows();
  addMemoryRows();
  addGrowthRows();
}

void writeReport(const fs::path& folder) {
  std::string text = "# Measured\n\n" + machineList(folder) + "\n![ratios](report.svg)\n\n" +
                     figuresTable(results()) + "\n## Growth\n\n" + growthTable(results());
  writeText(folder / "report.md", text);
  writeText(folder / "report.svg", plot(results()));
}

void writeDocument(const fs::path& document, const std::string& text) {
  fs::create_directories(document.parent_path());
  writeText(document, text);
  writeText(fs::path(document).replace_extension(".svg"), plot(results()));
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (argc > 1 && std::string_view(argv[1]) == "--quick") {
    runQuickly();
    --argc;
    ++argv;
  }
  require(argc == 4,
          "usage: velmar-bench [--quick] OUT TEMPLATE DOCS [Google Benchmark's options]");
  const std::string folder = argv[1];
  fs::create_directories(folder);
  const std::string page = readText(argv[2]);
  (void)filled(page, folder);  // a template that does not fit is better found before than after
  const Workspace workspace(folder + "/files");
  addAllRows();
  benchmark::RunSpecifiedBenchmarks();
  writeReport(folder);
  writeDocument(argv[3], filled(page, folder));
  return EXIT_SUCCESS;
}
