#ifndef VELMAR_TOOLKIT_FRAME_EXPRESSION_H
#define VELMAR_TOOLKIT_FRAME_EXPRESSION_H

#include <memory>
#include <string>

#include "toolkit/frames/FrameCondition.h"

namespace velmar::toolkit {

/// A condition over the facts of a frame (FrameFacts.h), such as
/// "speed_m_s > 20 && near(48.137, 11.575, 200)". Operators are those of C: ! * / + - < <= > >= ==
/// != && || ?: and ^ for powers. near(lat, lng, metres) and within(lng1, lat1, lng2, lat2) ask for
/// the place. What is computed from an absent value is absent, too, unless the other side of && or
/// || decides, and does not hold; absent(name) asks for it.
/// Throws UsageError, which names the place in the text.
std::unique_ptr<FrameCondition> parseFrameExpression(const std::string& text);

}  // namespace velmar::toolkit

#endif
