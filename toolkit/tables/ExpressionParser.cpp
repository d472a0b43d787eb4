#include "toolkit/tables/ExpressionParser.h"

#include <bit>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <functional>
#include <vector>

#include "toolkit/base/Failure.h"
#include "toolkit/tables/FrameColumns.h"

namespace velmar::toolkit {

namespace {

// True or false, or absent.
double truth(bool isKnown, bool value) { return isKnown ? double(value) : kAbsent; }
bool isFalse(double value) { return value == 0; }
bool isTrue(double value) { return value != 0 && !std::isnan(value); }

template <typename Compare>
double compared(double one, double other) {
  return truth(!std::isnan(one) && !std::isnan(other), Compare()(one, other));
}

double bothOf(double one, double other) {
  const bool isOneFalse = isFalse(one) || isFalse(other);
  return truth(isOneFalse || (isTrue(one) && isTrue(other)), !isOneFalse);
}

double eitherOf(double one, double other) {
  const bool isOneTrue = isTrue(one) || isTrue(other);
  return truth(isOneTrue || (isFalse(one) && isFalse(other)), isOneTrue);
}

double powerOf(double base, double exponent) { return std::pow(base, exponent); }

template <typename Work>
double computed(double one, double other) {
  return Work()(one, other);
}

double notOf(double value) { return truth(!std::isnan(value), isFalse(value)); }
double oppositeOf(double value) { return -value; }
double sameAs(double value) { return value; }
double absenceOf(double value) { return std::isnan(value) ? 1 : 0; }

ValueRange greater(const ValueRange& one, const ValueRange& other) { return less(other, one); }
ValueRange greaterOrEqual(const ValueRange& one, const ValueRange& other) {
  return lessOrEqual(other, one);
}
ValueRange unequal(const ValueRange& one, const ValueRange& other) {
  return negated(equal(one, other));
}

using OfTwo = double (*)(double, double);
using OfOne = double (*)(double);
using RangeOfTwo = ValueRange (*)(const ValueRange&, const ValueRange&);
using RangeOfOne = ValueRange (*)(const ValueRange&);

// Two numbers give what they always give.
template <OfTwo work, RangeOfTwo onRanges>
double ofRanges(double one, double other) {
  const ValueRange a = rangeOf(one);
  const ValueRange b = rangeOf(other);
  if (a.isExact() && b.isExact()) return work(one, other);
  return handleOf(onRanges(a, b));
}

template <RangeOfOne onRanges>
double ofRange(double value) {
  return handleOf(onRanges(rangeOf(value)));
}

struct Operator {
  const char* name;
  OfTwo exact;
  OfTwo onRanges;
  unsigned int precedence;
  mu::EOprtAssociativity associativity = mu::oaLEFT;
};

template <OfTwo exact, RangeOfTwo onRanges>
constexpr Operator binary(const char* name, unsigned int precedence,
                          mu::EOprtAssociativity associativity = mu::oaLEFT) {
  return {name, exact, ofRanges<exact, onRanges>, precedence, associativity};
}

// In the place of the parser's own, which take what is absent for true or for different.
constexpr Operator kOperators[] = {
    binary<bothOf, both>("&&", mu::prLAND),
    binary<eitherOf, either>("||", mu::prLOR),
    binary<compared<std::less_equal<>>, lessOrEqual>("<=", mu::prCMP),
    binary<compared<std::greater_equal<>>, greaterOrEqual>(">=", mu::prCMP),
    binary<compared<std::equal_to<>>, equal>("==", mu::prCMP),
    binary<compared<std::not_equal_to<>>, unequal>("!=", mu::prCMP),
    binary<compared<std::less<>>, less>("<", mu::prCMP),
    binary<compared<std::greater<>>, greater>(">", mu::prCMP),
    binary<computed<std::plus<>>, sum>("+", mu::prADD_SUB),
    binary<computed<std::minus<>>, difference>("-", mu::prADD_SUB),
    binary<computed<std::multiplies<>>, product>("*", mu::prMUL_DIV),
    binary<computed<std::divides<>>, quotient>("/", mu::prMUL_DIV),
    binary<powerOf, power>("^", mu::prPOW, mu::oaRIGHT),
};

struct Prefix {
  const char* name;
  OfOne exact;
  OfOne onRanges;
};
constexpr Prefix kPrefixes[] = {
    {"!", notOf, ofRange<negated>},
    {"-", oppositeOf, ofRange<opposite>},
    {"+", sameAs, sameAs},
};

double anything(const double* /*arguments*/, int /*count*/) {
  return handleOf(ValueRange::anything());
}

// A handle is not a number, and told from others by a bit that computations do not set.
constexpr std::uint64_t kHandle = 0x7FFC000000000000;
constexpr std::uint64_t kHandleMask = 0xFFFF000000000000;
thread_local std::vector<ValueRange> ranges;

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

}  // namespace

double handleOf(const ValueRange& range) {
  if (range.isExact()) return range.least;
  if (!range.mayBeThere) return kAbsent;
  ranges.push_back(range);
  return std::bit_cast<double>(kHandle | (ranges.size() - 1));
}

ValueRange rangeOf(double value) {
  const auto bits = std::bit_cast<std::uint64_t>(value);
  if ((bits & kHandleMask) == kHandle) return ranges.at(bits & ~kHandleMask);
  return ValueRange::exactly(value);
}

void forgetRanges() { ranges.clear(); }

ExpressionParser::ExpressionParser(const std::string& text, Values values) : text_(text) {
  const bool isExact = values == Values::Exact;
  parser_.EnableBuiltInOprt(false);
  for (const Operator& one : kOperators) {
    parser_.DefineOprt(one.name, isExact ? one.exact : one.onRanges, one.precedence,
                       one.associativity);
  }
  parser_.ClearInfixOprt();
  for (const Prefix& one : kPrefixes) {
    parser_.DefineInfixOprt(one.name, isExact ? one.exact : one.onRanges);
  }
  if (!isExact) useRanges();
  parser_.DefineFun("absent", isExact ? absenceOf : ofRange<absence>);
  parser_.SetVarFactory(bindVariable, this);
}

// Of the parser's own functions only one is worth it.
void ExpressionParser::useRanges() {
  const auto functions = parser_.GetFunDef();
  for (const auto& function : functions) parser_.DefineFun(function.first, anything, false);
  parser_.DefineFun("abs", ofRange<magnitude>);
}

void ExpressionParser::parse() {
  evaluated([this] {
    parser_.SetExpr(text_);
    return parser_.Eval();
  });
  if (parser_.GetNumResults() != 1) {
    throw UsageError("--where is one condition, not several with commas");
  }
}

double ExpressionParser::value() const {
  return evaluated([this] { return parser_.Eval(); });
}

bool ExpressionParser::hasChoice() const {
  bool isQuoted = false;
  for (std::size_t at = 0; at < text_.size(); ++at) {
    if (text_[at] == '?' && !isQuoted) return true;
    if (text_[at] == '"' && (at == 0 || text_[at - 1] != '\\')) isQuoted = !isQuoted;
  }
  return false;
}

// The result, or the parser's error in words.
template <typename Work>
double ExpressionParser::evaluated(Work work) const {
  try {
    return work();
  } catch (const mu::ParserError& error) {
    const auto place = static_cast<std::size_t>(std::max(error.GetPos(), 0));
    throw errorAt(std::min(place, text_.size()), wordsOf(error));
  }
}

double* ExpressionParser::bindVariable(const char* name, void* parser) {
  auto& self = *static_cast<ExpressionParser*>(parser);
  const auto fact = factNamed(name);
  if (!fact) {
    std::vector<std::string> functions;
    for (const auto& function : self.parser_.GetFunDef()) functions.push_back(function.first);
    throw errorAt(placeOf(name, self.text_), unknownFactWords(name, functions));
  }
  return &self.variables_.emplace_back(Variable{*fact, kAbsent}).value;
}

}  // namespace velmar::toolkit
