#include "toolkit/recording/FollowRecording.h"

#include <sys/epoll.h>
#include <sys/inotify.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "base/FileDescriptor.h"
#include "toolkit/base/Failure.h"
#include "toolkit/base/LockHolder.h"

namespace velmar::toolkit {

namespace {

// Can be read when something happens to a recorder's files, and once a second: not every file
// system tells, and a recorder that is killed holds its lock for a moment longer than its files.
class RecorderWatch {
 public:
  explicit RecorderWatch(const std::string& temporary)
      : events_(inotify_init1(IN_CLOEXEC | IN_NONBLOCK)),
        timer_(timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK)),
        all_(epoll_create1(EPOLL_CLOEXEC)) {
    constexpr itimerspec kSecond{{1, 0}, {1, 0}};
    const bool isSet = events_.isOpen() && timer_.isOpen() && all_.isOpen() &&
                       timerfd_settime(timer_.get(), 0, &kSecond, nullptr) == 0 && add(events_) &&
                       add(timer_);
    if (!isSet) throw Failure::ofSystem(temporary, "cannot watch it", errno);
    for (const std::string& file : {temporary, temporary + ".index"}) {
      inotify_add_watch(events_.get(), file.c_str(), IN_MODIFY | IN_CLOSE_WRITE | IN_MOVE_SELF);
    }
  }

  int descriptor() const { return all_.get(); }
  // What has happened is known.
  void clear() const {
    std::array<char, 4096> bytes;
    while (::read(events_.get(), bytes.data(), bytes.size()) > 0) continue;
    while (::read(timer_.get(), bytes.data(), bytes.size()) > 0) continue;
  }

 private:
  bool add(const detail::FileDescriptor& file) const {
    epoll_event event{};
    event.events = EPOLLIN;
    return epoll_ctl(all_.get(), EPOLL_CTL_ADD, file.get(), &event) == 0;
  }

  detail::FileDescriptor events_;
  detail::FileDescriptor timer_;
  detail::FileDescriptor all_;
};

class Following {
 public:
  Following(const Follower& follower, Job::Stage& stage) : follower_(follower), stage_(stage) {}

  // Takes the frames that are new, until it is to stop.
  void take(const Recording& recording) {
    constexpr unsigned int kAtOnce = 64;
    const unsigned int count = recording.framesCount();
    while (done_ < count) {
      const unsigned int end = done_ + std::min(count - done_, kAtOnce);
      follower_(recording, done_, end);
      stage_.advance(done_ = end);
      if (stage_.stopRequested()) return;
    }
  }

  // The same of what the recorder has finished.
  void takeRest(const std::string& path, const Recording& running) {
    const Recording finished(path);
    if (running.file().isAt(path)) take(finished);
  }

 private:
  const Follower& follower_;
  Job::Stage& stage_;
  unsigned int done_ = 0;  // frames
};

}  // namespace

void followRecording(const std::string& path, const Follower& follower, Job& job) {
  const Recording recording(path, Accept::Running);
  const auto stage = job.begin(path, 0);
  Following following(follower, *stage);
  if (recording.finished() != nullptr) return following.take(recording);
  RunningTables& tables = *recording.running();
  const std::string temporary = recording.file().path();
  const RecorderWatch watch(temporary);
  while (true) {
    watch.clear();
    // Asked in this order: a recorder gives up its lock when the file has its final name.
    const bool isRecorded = lockHolder(temporary).has_value();
    const bool isFinished = !recording.file().isAt(temporary);
    tables.update();
    following.take(recording);
    if (stage->stopRequested()) return;
    if (isFinished) break;
    if (!isRecorded) return job.lose(path, runningWords(recording));
    if (!stage->waitReadable(watch.descriptor())) return;
  }
  // Those of an img whose journal was given up are known now.
  if (!recording.isRtv()) following.takeRest(finalPath(path), recording);
}

}  // namespace velmar::toolkit
