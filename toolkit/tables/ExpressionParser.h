#ifndef VELMAR_TOOLKIT_EXPRESSION_PARSER_H
#define VELMAR_TOOLKIT_EXPRESSION_PARSER_H

#include <muParser.h>

#include <algorithm>
#include <deque>
#include <string>

#include "toolkit/tables/FrameFacts.h"
#include "toolkit/tables/ValueRange.h"

namespace velmar::toolkit {

/// A condition over the facts of frames, parsed; the functions are its user's. It computes with
/// numbers, of which kAbsent is one, or with ranges. The parser knows doubles only, so a range
/// travels through it as a handle; see handleOf().
class ExpressionParser {
 public:
  enum class Values { Exact, Ranges };
  struct Variable {
    FrameFact fact;
    double value;
  };

  ExpressionParser(const std::string& text, Values values);
  ExpressionParser(const ExpressionParser&) = delete;
  ExpressionParser& operator=(const ExpressionParser&) = delete;

  /// A function that gets `user` and its arguments: numbers, or a text. It is asked each time, also
  /// if its arguments are constants.
  template <typename Function>
  void define(const std::string& name, Function function, void* user) {
    parser_.DefineFunUserData(name, function, user, false);
  }
  /// Once all functions are there. Throws UsageError, which names the place in the text.
  void parse();
  /// Throws UsageError.
  double value() const;

  /// The facts that it asks for, with the values that they have.
  std::deque<Variable>& variables() { return variables_; }
  const std::deque<Variable>& variables() const { return variables_; }
  /// Whether it has ?:, of which the parser takes one side only.
  bool hasChoice() const;

 private:
  template <typename Work>
  double evaluated(Work work) const;
  void useRanges();
  static double* bindVariable(const char* name, void* parser);

  std::string text_;
  mu::Parser parser_;
  std::deque<Variable> variables_;  // the parser knows their addresses
};

/// What stands for the range in the computation of this thread: itself if it is a number, else one
/// of those that are not. It is good until forgetRanges().
double handleOf(const ValueRange& range);
/// The range of a handle, or that of a number.
ValueRange rangeOf(double value);
void forgetRanges();

/// Whether corners, which may be any two that are opposite, are those of a box across the meridian
/// of 180 degrees: the short way round.
inline bool isAcrossMeridian(double lng1, double lng2) {
  return std::max(lng1, lng2) - std::min(lng1, lng2) > 180;
}

}  // namespace velmar::toolkit

#endif
