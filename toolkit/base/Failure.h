/// The exceptions of the toolkit.
#ifndef VELMAR_TOOLKIT_FAILURE_H
#define VELMAR_TOOLKIT_FAILURE_H

#include <cstddef>
#include <stdexcept>
#include <string>

#include "velmar_video/VelmarVideoErrMsg.h"

namespace velmar::toolkit {

/// Work could not be done. what() is the line to show: the file, plain words and the code's name.
class Failure : public std::runtime_error {
 public:
  Failure(const std::string& file, const std::string& words, VELMAR_ERROR_CODE_E code);
  /// With the code's own words.
  Failure(const std::string& file, VELMAR_ERROR_CODE_E code);
  /// For a system call that failed with `cause`, a value of errno. `words` says what could not be
  /// done.
  static Failure ofSystem(const std::string& file, const std::string& words, int cause);
  /// The same for a file that could not be created.
  static Failure ofCreation(const std::string& file, int cause);

  /// The file, as what() has it.
  std::string file() const { return {what(), wordsAt_ - kSeparator}; }
  /// what() without the file.
  std::string words() const { return what() + wordsAt_; }
  /// The same where `file` is named already: what() if the failure is about another file.
  std::string wordsFor(const std::string& file) const;
  VELMAR_ERROR_CODE_E code() const { return code_; }

 private:
  static constexpr std::size_t kSeparator = 2;  // ": "
  std::size_t wordsAt_;
  VELMAR_ERROR_CODE_E code_;
};

/// The request is wrong in itself, whatever the files hold.
class UsageError : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// What the library's code means to somebody who does not know the library.
std::string plainWords(VELMAR_ERROR_CODE_E code);

}  // namespace velmar::toolkit

#endif
