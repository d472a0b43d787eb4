#include "program/CommandJob.h"

#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cmath>
#include <csignal>
#include <iostream>

#include "program/Diagnostics.h"
#include "toolkit/text/NumberText.h"
#include "toolkit/text/PrintableText.h"

namespace velmar::tool {

namespace {

// Turns signals into a question.
class StopSignal {
 public:
  StopSignal() {
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
  StopSignal(const StopSignal&) = delete;
  StopSignal& operator=(const StopSignal&) = delete;
  ~StopSignal() {
    // What has come is answered; left pending it would kill the program now.
    signalfd_siginfo received;
    while (isPending(0, -1) && read(signalFd_, &received, sizeof received) > 0) continue;
    ::close(signalFd_);
    pthread_sigmask(SIG_SETMASK, &previousMask_, nullptr);
  }

  bool requested() {
    if (!requested_) requested_ = isPending(0, -1);
    return requested_;
  }
  // Waits for a signal, or until `fd` can be read.
  bool comesBefore(int fd) {
    if (!requested_) requested_ = isPending(-1, fd);
    return requested_;
  }

 private:
  bool isPending(int timeout, int fd) const {
    pollfd waits[] = {{signalFd_, POLLIN, 0}, {fd, POLLIN, 0}};
    while (poll(waits, 2, timeout) < 0) {
      if (errno != EINTR && errno != EAGAIN) return true;
    }
    return waits[0].revents != 0;
  }

  sigset_t previousMask_;
  int signalFd_ = -1;
  bool requested_ = false;
};

using Clock = std::chrono::steady_clock;

enum class Unit { Frames, Bytes, Files };

// "90 s", "12 min", "3 h"
std::string roughly(double seconds) {
  constexpr double kMinute = 60;
  constexpr double kHour = 3600;
  const auto rounded = [](double number) { return std::to_string(std::llround(number)); };
  if (seconds < 2 * kMinute) return rounded(seconds) + " s";
  return seconds < 2 * kHour ? rounded(seconds / kMinute) + " min"
                             : rounded(seconds / kHour) + " h";
}

// Shows what is done a few times a second, and leaves the last line there.
class CommandStage final : public Job::Stage {
 public:
  CommandStage(const std::string& name, std::uint64_t total, Unit unit, bool isShown)
      : name_(printable(name)), total_(total), unit_(unit), isShown_(isShown) {}
  CommandStage(const CommandStage&) = delete;
  CommandStage& operator=(const CommandStage&) = delete;
  ~CommandStage() override {
    if (!wasShown_) return;
    show("");
    std::cerr << '\n';
  }

  void advance(std::size_t done) override {
    done_ = done;
    if (!isShown_) return;
    const auto now = Clock::now();
    if (now < next_) return;
    next_ = now + std::chrono::milliseconds(200);
    show(timeLeft(now));
  }
  bool stopRequested() override { return stop_.requested(); }
  bool waitReadable(int fd) override { return !stop_.comesBefore(fd); }

 private:
  std::string timeLeft(Clock::time_point now) const {
    if (total_ == 0 || done_ == 0 || done_ > total_) return "";
    const double seconds = std::chrono::duration<double>(now - start_).count();
    const double share = static_cast<double>(done_) / static_cast<double>(total_);
    return ", " + roughly(seconds / share - seconds) + " left";
  }

  std::string amount(std::uint64_t count) const {
    return unit_ == Unit::Bytes ? sizeText(count) : std::to_string(count);
  }

  void show(const std::string& more) {
    std::string text = "\r\033[K" + name_ + ": " + amount(done_);
    if (unit_ == Unit::Files) text += " done";
    if (unit_ != Unit::Files && total_ != 0) text += " of " + amount(total_);
    if (unit_ == Unit::Frames) text += " frames";
    std::cerr << text + more << std::flush;
    wasShown_ = true;
  }

  StopSignal stop_;
  const std::string name_;
  const std::uint64_t total_;
  const Unit unit_;
  const bool isShown_;
  const Clock::time_point start_ = Clock::now();
  Clock::time_point next_ = start_ + std::chrono::seconds(1);
  std::uint64_t done_ = 0;
  bool wasShown_ = false;
};

}  // namespace

std::unique_ptr<Job::Stage> CommandJob::begin(const std::string& name, std::size_t total) {
  return std::make_unique<CommandStage>(name, total, Unit::Frames, isShown());
}

std::unique_ptr<Job::Stage> CommandJob::beginBytes(const std::string& name, std::uint64_t total) {
  return std::make_unique<CommandStage>(name, total, Unit::Bytes, isShown());
}

std::unique_ptr<Job::Stage> CommandJob::beginFiles(const std::string& name, std::size_t total) {
  return std::make_unique<CommandStage>(name, total, Unit::Files, isShown());
}

bool CommandJob::isShown() const { return !quiet_ && isatty(STDERR_FILENO) != 0; }

void CommandJob::lose(const std::string& what, const std::string& words) {
  if (status_ == ExitStatus::Done) status_ = ExitStatus::Loss;
  note(what, words);
}

void CommandJob::loseRest(const std::string& what, std::size_t done, std::size_t wanted) {
  lose(what, "stopped by a signal after " + std::to_string(done) + " of " + std::to_string(wanted) +
                 " frames");
}

void CommandJob::note(const std::string& what, const std::string& words) {
  say(what + ": " + words);
}

void CommandJob::fail(const Failure& failure) {
  status_ = ExitStatus::Failed;
  say(failure.what());
}

}  // namespace velmar::tool
