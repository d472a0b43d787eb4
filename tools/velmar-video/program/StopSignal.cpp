#include "program/StopSignal.h"

#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>

#include "toolkit/base/Failure.h"

StopSignal::StopSignal() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int number : {SIGINT, SIGTERM}) {
    struct sigaction action {};
    sigaction(number, nullptr, &action);
    if (action.sa_handler != SIG_IGN) sigaddset(&signals, number);
  }
  // Blocked signals wait in the descriptor, so none can slip in between a look and a read.
  signalFd_ = signalfd(-1, &signals, SFD_CLOEXEC);
  if (signalFd_ < 0) throw Failure::ofSystem("signals", "cannot wait for them", errno);
  pthread_sigmask(SIG_BLOCK, &signals, &previousMask_);
}

StopSignal::~StopSignal() {
  // What has come is answered; left pending it would kill the program now.
  if (requested()) {
    signalfd_siginfo received;
    while (pollSignal(0, -1) && read(signalFd_, &received, sizeof received) > 0) continue;
  }
  ::close(signalFd_);
  pthread_sigmask(SIG_SETMASK, &previousMask_, nullptr);
}

bool StopSignal::requested() {
  if (!requested_) requested_ = pollSignal(0, -1);
  return requested_;
}

bool StopSignal::waitReadable(int fd) {
  if (!requested_) requested_ = pollSignal(-1, fd);
  return !requested_;
}

/// Whether a signal is there, after waiting for one or for `fd` (none if negative).
bool StopSignal::pollSignal(int timeout, int fd) {
  pollfd waits[] = {{signalFd_, POLLIN, 0}, {fd, POLLIN, 0}};
  while (poll(waits, 2, timeout) < 0) {
    if (errno != EINTR && errno != EAGAIN) return true;
  }
  return waits[0].revents != 0;
}
