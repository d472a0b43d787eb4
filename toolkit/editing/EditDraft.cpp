#include "toolkit/editing/EditDraft.h"

#include <utility>

#include "container/img/FrameIndex.h"
#include "toolkit/base/Failure.h"

namespace velmar::toolkit {

void EditDraft::add(std::string what, std::string before, std::string after, Write write) {
  changes.push_back({std::move(what), std::move(before), std::move(after), std::move(write)});
}

void EditDraft::addWords(const std::string& what, const std::string& before,
                         const std::string& after) {
  add(what, before, after, [](auto& /*modifier*/) { return VELMAR_ERROR_CODE_SUCCESS_E; });
}

void EditDraft::refuse(const std::string& option, const std::string& words) const {
  throw Failure(recording.path(), option + ": " + words, VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
}

std::uint64_t recordAt(unsigned int index) {
  return detail::kFrameIndexStart + sizeof(FrameIndex) * std::uint64_t{index};
}

}  // namespace velmar::toolkit
