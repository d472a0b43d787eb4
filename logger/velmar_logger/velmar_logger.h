/// The interface of the device's logging library, as far as libvelmar_video uses it. This is a
/// stand-in for builds away from the device; a build can use the device's library instead.
#ifndef VELMAR_LOGGER_H
#define VELMAR_LOGGER_H

/// Formats are printf's. Thread-safe.
namespace velmar_logger {

/// Level 0.
void d(const char* tag, const char* format, ...) __attribute__((format(printf, 2, 3)));
/// Level 1.
void i(const char* tag, const char* format, ...) __attribute__((format(printf, 2, 3)));
/// Level 2.
void w(const char* tag, const char* format, ...) __attribute__((format(printf, 2, 3)));
/// Level 3.
void e(const char* tag, const char* format, ...) __attribute__((format(printf, 2, 3)));
/// Any level, with the place in the source.
void doLogv2(const char* file, int line, const char* tag, int level, const char* format, ...)
    __attribute__((format(printf, 5, 6)));

}  // namespace velmar_logger

#endif
