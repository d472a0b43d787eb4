#ifndef VELMAR_TOOLKIT_FRAME_EXPRESSION_H
#define VELMAR_TOOLKIT_FRAME_EXPRESSION_H

#include <memory>
#include <string>

#include "toolkit/frames/FrameCondition.h"

namespace velmar::toolkit {

/// A condition over the facts of a frame (FrameFacts.h), such as
/// "speed_m_s > 20 && near(48.137, 11.575, 200)". Operators are those of C: ! * / + - < <= > >= ==
/// != && || ?: and ^ for powers. near(lat, lng, metres) and within(lng1, lat1, lng2, lat2) ask for
/// the place, file("*night*") for the path or
/// the name, with the wildcards of a shell, device("0aff") for the camera's identifier, with
/// wildcards as well. What is computed from an absent value is absent, too, unless the other side
/// of && or
/// || decides, and does not hold; absent(name) asks for it.
/// Throws UsageError, which names the place in the text.
std::unique_ptr<FrameCondition> parseFrameExpression(const std::string& text);

/// As file() sees it.
std::string absolutePath(const std::string& path);
bool fileMatches(const char* pattern, const std::string& path);
/// The same of device().
bool deviceMatches(const char* pattern, const std::string& id);

}  // namespace velmar::toolkit

#endif
