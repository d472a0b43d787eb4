#ifndef VELMAR_TOOL_STOP_SIGNAL_H
#define VELMAR_TOOL_STOP_SIGNAL_H

#include <csignal>

/// Turns SIGINT and SIGTERM into a question that the program asks when it suits, from construction
/// on. Construct it before starting threads; one thread at a time may ask. A signal that the
/// program was started to ignore stays ignored.
class StopSignal {
 public:
  StopSignal();
  StopSignal(const StopSignal&) = delete;
  StopSignal& operator=(const StopSignal&) = delete;
  ~StopSignal();

  bool requested();
  /// Waits until `fd` can be read (or is at its end); false if a signal comes first.
  bool waitReadable(int fd);

 private:
  bool pollSignal(int timeout, int fd);

  sigset_t previousMask_;
  int signalFd_;
  bool requested_ = false;
};

#endif
