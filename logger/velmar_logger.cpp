#include "velmar_logger/velmar_logger.h"

#include <spdlog/sinks/stdout_color_sinks.h>
#include <spdlog/spdlog.h>

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <utility>

#include "velmar_logger/control.h"

namespace velmar_logger {
namespace {

constexpr int kDebug = 0;
constexpr int kInformation = 1;
constexpr int kWarning = 2;
constexpr int kError = 3;

struct State {
  std::atomic<int> level = kWarning;
  std::shared_mutex mutex;  // of the sink, not held while it is called
  std::shared_ptr<const Sink> sink;
};

// Never destroyed: objects that are torn down after this library may still log.
State& state() {
  static auto* const instance = new State;
  return *instance;
}

std::shared_ptr<const Sink> currentSink() {
  const std::shared_lock lock(state().mutex);
  return state().sink;
}

spdlog::logger& standardError() {
  static auto* const logger = [] {
    auto* made =
        new spdlog::logger("velmar", std::make_shared<spdlog::sinks::stderr_color_sink_mt>());
    made->set_level(spdlog::level::trace);
    made->set_pattern("%Y-%m-%d %H:%M:%S.%f %^%l%$ %v %@");
    return made;
  }();
  return *logger;
}

spdlog::level::level_enum spdlogLevel(int level) {
  switch (level) {
    case kDebug:
      return spdlog::level::debug;
    case kInformation:
      return spdlog::level::info;
    case kWarning:
      return spdlog::level::warn;
    default:
      return spdlog::level::err;
  }
}

__attribute__((format(printf, 1, 0))) std::string formatted(const char* format,
                                                            std::va_list arguments) {
  std::va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, again);
  va_end(again);
  if (length < 0) return format;
  std::string text(static_cast<std::size_t>(length), '\0');
  (void)std::vsnprintf(text.data(), text.size() + 1, format, arguments);
  return text;
}

__attribute__((format(printf, 4, 0))) void log(int level, spdlog::source_loc place, const char* tag,
                                               const char* format, std::va_list arguments) {
  try {
    const auto sink = currentSink();
    if (!sink && level < state().level) return;
    std::string text = formatted(format, arguments);
    if (sink) {
      (*sink)(level, tag, text.c_str());
      return;
    }
    while (!text.empty() && text.back() == '\n') text.pop_back();
    standardError().log(place, spdlogLevel(level), "{}: {}", tag, text);
  } catch (...) {
    // A line that cannot be logged (no memory) must not end the recording.
  }
}

}  // namespace

void d(const char* tag, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  log(kDebug, {}, tag, format, arguments);
  va_end(arguments);
}

void i(const char* tag, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  log(kInformation, {}, tag, format, arguments);
  va_end(arguments);
}

void w(const char* tag, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  log(kWarning, {}, tag, format, arguments);
  va_end(arguments);
}

void e(const char* tag, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  log(kError, {}, tag, format, arguments);
  va_end(arguments);
}

void doLogv2(const char* file, int line, const char* tag, int level, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  log(level, {file, line, ""}, tag, format, arguments);
  va_end(arguments);
}

void setLevel(int level) { state().level = level; }

void setSink(Sink sink) {
  auto replaced = sink ? std::make_shared<const Sink>(std::move(sink)) : nullptr;
  // Behind `replaced`, so that the old sink is destroyed without the lock.
  const std::unique_lock lock(state().mutex);
  state().sink.swap(replaced);
}

}  // namespace velmar_logger
