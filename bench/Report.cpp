#include "Report.h"

#include <sys/statfs.h>
#include <sys/sysinfo.h>
#include <sys/utsname.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <thread>

namespace {

std::string number(double value, int digits) {
  char text[32];
  (void)std::snprintf(text, sizeof text, "%.*f", digits, value);
  return text;
}

// Three digits or so, whatever the size.
std::string threeDigits(double value) {
  return number(value, value < 10 ? 2 : value < 100 ? 1 : 0);
}

std::string amount(double value, Unit unit) {
  if (unit == Unit::Bytes) return threeDigits(value / 1e6) + " MB";
  if (value < 1e-6) return threeDigits(value * 1e9) + " ns";
  if (value < 1e-3) return threeDigits(value * 1e6) + " µs";
  if (value < 1) return threeDigits(value * 1e3) + " ms";
  return threeDigits(value) + " s";
}

std::string ratioText(const Quartiles& ratio) { return threeDigits(ratio.median); }

std::string spreadText(const Quartiles& ratio) {
  return threeDigits(ratio.low) + "–" + threeDigits(ratio.high);
}

std::string reachText(const Result& result) {
  if (result.reach) return "≤ " + threeDigits(*result.reach);
  if (result.reachExtra) return "≤ " + amount(*result.reachExtra, result.unit) + " more";
  return "–";
}

std::string verdict(const Result& result) {
  const auto reached = result.isReached();
  return !reached ? "not measured" : *reached ? "yes" : "no";
}

std::string peersText(const Result& result) {
  std::string text;
  for (const Measured& peer : result.peers) {
    if (!text.empty()) text += ", ";
    text += peer.name + " " + (peer.ratio ? ratioText(*peer.ratio) : "–");
  }
  return text;
}

bool hasFigure(const Result& result) { return result.reach || result.reachExtra; }

std::string row(const std::vector<std::string>& cells) {
  std::string text = "|";
  for (const std::string& cell : cells) text += " " + cell + " |";
  return text + "\n";
}

// What both tables have.
std::vector<std::string> measuredCells(const Result& result) {
  return {result.name,
          result.limitName,
          result.limit ? amount(result.limit->median, result.unit) : "–",
          amount(result.ours.value.median, result.unit),
          result.ours.ratio ? ratioText(*result.ours.ratio) : "–",
          result.ours.ratio ? spreadText(*result.ours.ratio) : "–"};
}

std::string processor() {
  std::ifstream file("/proc/cpuinfo");
  std::string line;
  while (std::getline(file, line)) {
    const std::size_t colon = line.find(": ");
    if (line.starts_with("model name") && colon != line.npos) return line.substr(colon + 2);
  }
  return "unknown processor";
}

std::string fileSystem(const std::string& folder) {
  struct statfs status {};
  if (::statfs(folder.c_str(), &status) != 0) return "unknown";
  switch (static_cast<unsigned long>(status.f_type)) {
    case 0xEF53:
      return "ext4";
    case 0x58465342:
      return "xfs";
    case 0x9123683E:
      return "btrfs";
    case 0x01021994:
      return "tmpfs";
    case 0x794C7630:
      return "overlayfs";
    default:
      return "another";
  }
}

// Major and minor only: what follows may tell whose machine it is.
std::string kernelVersion() {
  struct utsname name {};
  if (::uname(&name) != 0) return "unknown";
  const std::string release = name.release;
  return release.substr(0, release.find('.', release.find('.') + 1));
}

double memoryBytes() {
  struct sysinfo info {};
  if (::sysinfo(&info) != 0) return 0;
  return static_cast<double>(info.totalram) * info.mem_unit;
}

}  // namespace

std::optional<double> reachRatio(const Result& result) {
  if (result.reach) return result.reach;
  if (!result.reachExtra || !result.limit) return std::nullopt;
  return 1 + *result.reachExtra / result.limit->median;
}

std::string figuresTable(const std::vector<Result>& results) {
  std::string text = row({"Work", "Limit", "Limit takes", "Ours takes", "Ratio", "Middle half",
                          "Aim", "Reached", "Peers' ratios"}) +
                     "|---|---|---:|---:|---:|---:|---:|---|---|\n";
  for (const Result& result : results) {
    if (!hasFigure(result)) continue;
    auto cells = measuredCells(result);
    cells.insert(cells.end(), {reachText(result), verdict(result), peersText(result)});
    text += row(cells);
  }
  return text;
}

std::string growthTable(const std::vector<Result>& results) {
  std::string text = row({"Work", "Limit", "Limit takes", "Ours takes", "Ratio", "Middle half"}) +
                     "|---|---|---:|---:|---:|---:|\n";
  for (const Result& result : results) {
    if (!hasFigure(result)) text += row(measuredCells(result));
  }
  return text;
}

std::string machineList(const std::string& folder) {
  std::ostringstream text;
  text << "- " << std::thread::hardware_concurrency() << " processors: " << processor() << "\n"
       << "- " << std::lround(memoryBytes() / 1e9) << " GB of memory\n"
       << "- Linux " << kernelVersion() << ", file system " << fileSystem(folder) << "\n"
       << "- compiler " << __VERSION__ << "\n";
  return text.str();
}
