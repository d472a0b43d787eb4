#ifndef VELMAR_TOOLKIT_SUGGESTION_H
#define VELMAR_TOOLKIT_SUGGESTION_H

#include <string>
#include <vector>

namespace velmar::toolkit {

/// "; did you mean info?" for the candidate that differs from the word in few letters; empty if
/// there is none.
std::string suggestion(const std::string& word, const std::vector<std::string>& candidates);

}  // namespace velmar::toolkit

#endif
