/// Work on many things at a time, with the results in order.
#ifndef VELMAR_TOOLKIT_IN_ORDER_H
#define VELMAR_TOOLKIT_IN_ORDER_H

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace velmar::toolkit {

/// Calls work(i) for each i below `count` from so many threads of its own, and take(i, result) from
/// the calling thread, one i after the other, while `meanwhile` is called several times a second.
/// Either returns false to end it. What work() and take() throw ends it and is thrown again. The
/// threads run ahead of take() by a few results only.
template <typename Result>
void inOrder(std::size_t count, unsigned int threads,
             const std::function<Result(std::size_t)>& work,
             const std::function<bool(std::size_t, Result&)>& take,
             const std::function<bool()>& meanwhile) {
  struct Slot {
    std::optional<Result> result;
    std::exception_ptr failure;
    bool isDone() const { return result || failure; }
  };
  std::mutex mutex;
  std::condition_variable changed;
  std::size_t next = 0;
  std::size_t taken = 0;
  bool isOver = false;
  const std::size_t ahead = 4 * std::size_t{std::max(threads, 1U)};
  std::vector<Slot> slots(ahead);

  const auto run = [&] {
    std::unique_lock lock(mutex);
    while (true) {
      changed.wait(lock, [&] { return isOver || next == count || next < taken + ahead; });
      if (isOver || next == count) return;
      const std::size_t at = next++;
      lock.unlock();
      Slot done;
      try {
        done.result.emplace(work(at));
      } catch (...) {
        done.failure = std::current_exception();
      }
      lock.lock();
      slots[at % ahead] = std::move(done);
      changed.notify_all();
    }
  };
  // Not done if it is to end.
  const auto waitFor = [&](std::size_t at) {
    constexpr std::chrono::milliseconds kInterval(100);
    Slot done;
    std::unique_lock lock(mutex);
    while (!changed.wait_for(lock, kInterval, [&] { return slots[at % ahead].isDone(); })) {
      lock.unlock();
      if (!meanwhile()) return done;
      lock.lock();
    }
    std::swap(done, slots[at % ahead]);
    taken = at + 1;
    changed.notify_all();
    return done;
  };
  const auto end = [&] {
    const std::lock_guard lock(mutex);
    isOver = true;
    changed.notify_all();
  };

  std::vector<std::jthread> running;
  for (unsigned int i = 0; i < std::max(threads, 1U); ++i) running.emplace_back(run);
  try {
    for (std::size_t at = 0; at < count; ++at) {
      Slot done = waitFor(at);
      if (done.failure) std::rethrow_exception(done.failure);
      if (!done.result || !meanwhile() || !take(at, *done.result)) break;
    }
  } catch (...) {
    end();
    throw;
  }
  end();
}

}  // namespace velmar::toolkit

#endif
