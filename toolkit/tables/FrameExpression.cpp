#include "toolkit/tables/FrameExpression.h"

#include <muParser.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <deque>
#include <functional>
#include <optional>
#include <vector>

#include "toolkit/base/Failure.h"
#include "toolkit/tables/FrameColumns.h"
#include "toolkit/tables/FrameFacts.h"
#include "toolkit/text/Joined.h"

namespace velmar::toolkit {

namespace {

// True or false, or absent.
double truth(bool isKnown, bool value) { return isKnown ? double(value) : kAbsent; }
bool isFalse(double value) { return value == 0; }
bool isTrue(double value) { return value != 0 && !std::isnan(value); }

template <typename Compare>
double compared(double one, double other, Compare compare) {
  return truth(!std::isnan(one) && !std::isnan(other), compare(one, other));
}

double both(double one, double other) {
  const bool isOneFalse = isFalse(one) || isFalse(other);
  return truth(isOneFalse || (isTrue(one) && isTrue(other)), !isOneFalse);
}

double either(double one, double other) {
  const bool isOneTrue = isTrue(one) || isTrue(other);
  return truth(isOneTrue || (isFalse(one) && isFalse(other)), isOneTrue);
}

struct Operator {
  const char* name;
  mu::fun_type2 work;
  unsigned int precedence;
  mu::EOprtAssociativity associativity = mu::oaLEFT;
};

// In the place of the parser's own, which take what is absent for true or for different.
const Operator kOperators[] = {
    {"&&", both, mu::prLAND},
    {"||", either, mu::prLOR},
    {"<=", [](double a, double b) { return compared(a, b, std::less_equal()); }, mu::prCMP},
    {">=", [](double a, double b) { return compared(a, b, std::greater_equal()); }, mu::prCMP},
    {"==", [](double a, double b) { return compared(a, b, std::equal_to()); }, mu::prCMP},
    {"!=", [](double a, double b) { return compared(a, b, std::not_equal_to()); }, mu::prCMP},
    {"<", [](double a, double b) { return compared(a, b, std::less()); }, mu::prCMP},
    {">", [](double a, double b) { return compared(a, b, std::greater()); }, mu::prCMP},
    {"+", [](double a, double b) { return a + b; }, mu::prADD_SUB},
    {"-", [](double a, double b) { return a - b; }, mu::prADD_SUB},
    {"*", [](double a, double b) { return a * b; }, mu::prMUL_DIV},
    {"/", [](double a, double b) { return a / b; }, mu::prMUL_DIV},
    {"^", [](double a, double b) { return std::pow(a, b); }, mu::prPOW, mu::oaRIGHT},
};

bool isNameCharacter(char character) {
  return std::isalnum(static_cast<unsigned char>(character)) != 0 || character == '_';
}

// Where the name first stands by itself.
std::size_t placeOf(const std::string& name, const std::string& text) {
  std::size_t at = text.find(name);
  while (at != text.npos) {
    const std::size_t end = at + name.size();
    if ((at == 0 || !isNameCharacter(text[at - 1])) &&
        (end == text.size() || !isNameCharacter(text[end]))) {
      break;
    }
    at = text.find(name, at + 1);
  }
  return at;
}

UsageError errorAt(std::size_t place, const std::string& words) {
  return UsageError("--where: character " + std::to_string(place + 1) + ": " + words);
}

std::string wordsOf(const mu::ParserError& error) {
  // It may go to the end of the text.
  constexpr std::size_t kMost = 20;
  std::string token = error.GetToken().substr(0, kMost);
  token.resize(token.find_last_not_of(' ') + 1);
  switch (error.GetCode()) {
    case mu::ecEMPTY_EXPRESSION:
    case mu::ecUNEXPECTED_EOF:
      return "the expression ends too early";
    case mu::ecEXPRESSION_TOO_LONG:
      return "the expression is too long";
    case mu::ecMISSING_PARENS:
      return "a closing parenthesis is missing";
    case mu::ecTOO_FEW_PARAMS:
      return token + "() needs more arguments";
    case mu::ecTOO_MANY_PARAMS:
      return token + "() has too many arguments";
    default:
      if (token.empty()) return error.GetMsg();
      return token +
             (token.starts_with('=') ? " cannot be there; == compares" : " cannot be there");
  }
}

class FrameExpression final : public FrameCondition {
 public:
  explicit FrameExpression(const std::string& text) : text_(text) {
    parser_.EnableBuiltInOprt(false);
    for (const Operator& one : kOperators) {
      parser_.DefineOprt(one.name, one.work, one.precedence, one.associativity);
    }
    parser_.DefineInfixOprt("!", negated);
    parser_.DefineFun("absent", isAbsent);
    // Not to be computed beforehand, although all their arguments may be constants.
    parser_.DefineFunUserData("near", isNear, this, false);
    parser_.DefineFunUserData("within", isWithin, this, false);
    parser_.SetVarFactory(bindVariable, this);
    evaluated([&] {
      parser_.SetExpr(text);
      return parser_.Eval();
    });
    if (parser_.GetNumResults() != 1) {
      throw UsageError("--where is one condition, not several with commas");
    }
  }

  void begin(const Recording& recording) override {
    facts_.emplace(recording);
    hasFacts_ = false;
  }

  bool holds(unsigned int frame) override {
    facts_->enter(frame);
    for (Variable& variable : variables_) {
      const double value = facts_->value(variable.fact);
      variable.value = std::isfinite(value) ? value : kAbsent;
      hasFacts_ = hasFacts_ || (variable.fact.isOfTag() && std::isfinite(value));
    }
    return isTrue(evaluated([this] { return parser_.Eval(); }));
  }

  bool needsNeighbours() const override {
    return std::any_of(variables_.begin(), variables_.end(),
                       [](const Variable& variable) { return variable.fact.needsNeighbours(); });
  }

  std::string lack() const override {
    std::vector<std::string> asked;
    for (const Variable& variable : variables_) {
      if (variable.fact.isOfTag()) asked.push_back(variable.fact.name);
    }
    if (asksPlace_) asked.emplace_back("a position");
    return hasFacts_ || asked.empty() ? "" : "none of the frames has " + joined(asked, " or ");
  }

 private:
  struct Variable {
    FrameFact fact;
    double value = kAbsent;
  };

  // The result, or the parser's error in words.
  template <typename Work>
  double evaluated(Work work) const {
    try {
      return work();
    } catch (const mu::ParserError& error) {
      const auto place = static_cast<std::size_t>(std::max(error.GetPos(), 0));
      throw errorAt(std::min(place, text_.size()), wordsOf(error));
    }
  }

  std::optional<Place> place() {
    asksPlace_ = true;
    const auto place = facts_ ? facts_->place() : std::nullopt;
    hasFacts_ = hasFacts_ || place;
    return place;
  }

  // What the parser calls.

  static double* bindVariable(const char* name, void* expression) {
    auto& self = *static_cast<FrameExpression*>(expression);
    const auto fact = factNamed(name);
    if (!fact) {
      std::vector<std::string> functions;
      for (const auto& function : self.parser_.GetFunDef()) functions.push_back(function.first);
      throw errorAt(placeOf(name, self.text_), unknownFactWords(name, functions));
    }
    return &self.variables_.emplace_back(Variable{*fact}).value;
  }

  static double negated(double value) { return truth(!std::isnan(value), isFalse(value)); }
  static double isAbsent(double value) { return std::isnan(value) ? 1 : 0; }

  static double isNear(void* expression, double lat, double lng, double metres) {
    auto& self = *static_cast<FrameExpression*>(expression);
    const auto place = self.place();
    if (!place) return kAbsent;
    // As a rule it is the same latitude for all frames.
    if (self.ground_.lat() != lat) self.ground_ = GroundScale(lat);
    return compared(self.ground_.distance(*place, {lng, lat, 0}), metres, std::less_equal());
  }

  // The corners may be any two that are opposite, the short way round.
  static double isWithin(void* expression, double lng1, double lat1, double lng2, double lat2) {
    const auto place = static_cast<FrameExpression*>(expression)->place();
    if (!place) return kAbsent;
    const auto [west, east] = std::minmax(lng1, lng2);
    const auto [south, north] = std::minmax(lat1, lat2);
    const bool isAcross = east - west > 180;
    const bool isBetween = place->lng >= west && place->lng <= east;
    const bool isBeyond = place->lng <= west || place->lng >= east;
    return (isAcross ? isBeyond : isBetween) && place->lat >= south && place->lat <= north ? 1 : 0;
  }

  std::string text_;
  mu::Parser parser_;
  std::deque<Variable> variables_;  // the parser knows their addresses
  std::optional<FrameFacts> facts_;
  GroundScale ground_{0};
  bool asksPlace_ = false;
  bool hasFacts_ = false;  // of those that it asks for, beside what every recording has
};

}  // namespace

std::unique_ptr<FrameCondition> parseFrameExpression(const std::string& text) {
  return std::make_unique<FrameExpression>(text);
}

}  // namespace velmar::toolkit
