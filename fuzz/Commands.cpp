#include "Commands.h"

#include <sanitizer/allocator_interface.h>

#include <atomic>
#include <ctime>
#include <filesystem>
#include <vector>

namespace {

// The tool itself is 10 MB of the 300 that it may take for a file below 1 MB.
constexpr std::int64_t kMostBytes = 290'000'000;
// Inputs are at most 8 KB, and 2 seconds are for 1 MB: this leaves the sanitizers 32 times as long.
// The decoder and the compression are the system's and not instrumented.
constexpr double kMostSeconds = 0.5;

std::atomic<std::int64_t> used = 0;

void noteAllocation(const volatile void* /*place*/, std::size_t size) {
  require((used += static_cast<std::int64_t>(size)) <= kMostBytes);
}

void noteRelease(const volatile void* place) {
  if (place == nullptr) return;
  used -= static_cast<std::int64_t>(__sanitizer_get_allocated_size(const_cast<const void*>(place)));
}

double secondsOfProcessor() {
  timespec now{};
  ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

void runWithin(const ToolCommand& command) {
  used = 0;
  const double begin = secondsOfProcessor();
  command.run();
  require(secondsOfProcessor() - begin < kMostSeconds);
}

}  // namespace

Commands::Commands(const std::string& extension, const std::string& other)
    : file_(extension), output_(file_.path() + ".out") {
  __sanitizer_install_malloc_and_free_hooks(noteAllocation, noteRelease);
  const std::string& input = file_.path();
  const std::vector<std::string> commandLines[] = {
      {"verify", input, "--decode"},
      {"frames", input, "--csv"},
      {"diff", input, input, "--json"},
      {"extract", input, "--output", output_, "--force"},
      {"extract", input, "--output", output_, "--force", "--as", "png"},
      {"extract", input, "--output", output_, "--force", "--as", "ppm", "--crop-top", "3"},
      {"convert", input, output_ + "/copy." + other, "--force"},
  };
  for (std::vector<std::string> commandLine : commandLines) {
    commandLine.emplace_back("--quiet");
    commands_.emplace_back(commandLine);
  }
}

void Commands::run(const std::uint8_t* data, std::size_t size) const {
  file_.write(data, size);
  std::filesystem::create_directory(output_);
  for (const ToolCommand& command : commands_) runWithin(command);
  std::filesystem::remove_all(output_);
}
