/// \file
/// Where libvelmar_video's log lines go. Only the stand-in for the device's logging library has
/// this; a library built with the device's own follows the device's settings.
#ifndef VELMAR_LOGGER_CONTROL_H
#define VELMAR_LOGGER_CONTROL_H

#include <functional>

namespace velmar_logger {

/// Levels: 0 debug, 1 information, 2 warning, 3 error. The default sink is standard error; it
/// shows lines of `level` and up, 2 at first; 4 shows none. Thread-safe.
__attribute__((visibility("default"))) void setLevel(int level);

/// Takes a log line: its level, the tag of the place that logs it, and its text.
using Sink = std::function<void(int level, const char* tag, const char* message)>;

/// Sends every line, whatever its level, to `sink` instead of the default sink; an empty function
/// restores that. The texts are only valid during the call. Calls come from the threads that log,
/// several at once if several do, and `sink` must not throw. Any thread may replace the sink; one
/// that is being called lives until that call returns.
__attribute__((visibility("default"))) void setSink(Sink sink);

}  // namespace velmar_logger

#endif
