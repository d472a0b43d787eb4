/// Tables of frames by columns, as pages of a viewer want them.
#ifndef VELMAR_TOOLKIT_COLUMNAR_JSON_H
#define VELMAR_TOOLKIT_COLUMNAR_JSON_H

#include <string>
#include <vector>

#include "toolkit/recording/Recording.h"
#include "toolkit/tables/FrameTable.h"

namespace velmar::toolkit {

/// One JSON object with an array of numbers for each column, in which null stands for what is
/// absent. Throws Failure, also for a column that has no numbers.
std::string columnarJson(const Recording& recording, const FrameTable& table);

/// The columns that can be drawn over the time and have a value in any frame: motion, place and
/// CAN signals.
std::vector<std::string> columnsWithValues(const Recording& recording);

}  // namespace velmar::toolkit

#endif
