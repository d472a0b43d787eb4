#ifndef VELMAR_BASE_LEAVE_UNINITIALIZED_H
#define VELMAR_BASE_LEAVE_UNINITIALIZED_H

#include <memory>
#include <utility>

namespace velmar::detail {

/// An allocator for vectors of plain data that are resized and then filled: resize() does not write
/// zeros first, which costs as much as filling a large array.
template <typename T>
struct LeaveUninitialized : std::allocator<T> {
  template <typename Other>
  struct rebind {
    using other = LeaveUninitialized<Other>;
  };

  template <typename U>
  void construct(U* place) noexcept {
    ::new (static_cast<void*>(place)) U;
  }
  template <typename U, typename... Arguments>
  void construct(U* place, Arguments&&... arguments) {
    std::construct_at(place, std::forward<Arguments>(arguments)...);
  }
};

}  // namespace velmar::detail

#endif
