#include "toolkit/recording/RecorderWatch.h"

#include <sys/epoll.h>
#include <sys/inotify.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "toolkit/base/Failure.h"
#include "toolkit/files/RecorderFiles.h"

namespace velmar::toolkit {

RecorderWatch::RecorderWatch(const std::string& temporary)
    : events_(inotify_init1(IN_CLOEXEC | IN_NONBLOCK)),
      timer_(timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK)),
      all_(epoll_create1(EPOLL_CLOEXEC)) {
  constexpr itimerspec kSecond{{1, 0}, {1, 0}};
  const bool isSet = events_.isOpen() && timer_.isOpen() && all_.isOpen() &&
                     timerfd_settime(timer_.get(), 0, &kSecond, nullptr) == 0 && add(events_) &&
                     add(timer_);
  if (!isSet) throw Failure::ofSystem(temporary, "cannot watch it", errno);
  for (const std::string& file : {temporary, journalPath(temporary)}) {
    inotify_add_watch(events_.get(), file.c_str(), IN_MODIFY | IN_CLOSE_WRITE | IN_MOVE_SELF);
  }
}

void RecorderWatch::clear() const {
  std::array<char, 4096> bytes;
  while (::read(events_.get(), bytes.data(), bytes.size()) > 0) continue;
  while (::read(timer_.get(), bytes.data(), bytes.size()) > 0) continue;
}

bool RecorderWatch::add(const detail::FileDescriptor& file) const {
  epoll_event event{};
  event.events = EPOLLIN;
  return epoll_ctl(all_.get(), EPOLL_CTL_ADD, file.get(), &event) == 0;
}

}  // namespace velmar::toolkit
