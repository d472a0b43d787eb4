/// The columns of a table of frames: what `frames --csv` writes and what --times and --tags read.
#ifndef VELMAR_TOOLKIT_FRAME_COLUMNS_H
#define VELMAR_TOOLKIT_FRAME_COLUMNS_H

#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/base/Job.h"
#include "toolkit/text/CsvTable.h"
#include "toolkit/text/Unit.h"
#include "velmar_video/rtv/CanData.h"

namespace velmar::toolkit {

/// The names in their order, with commas.
/// \param ofRtv   with time flag, position, distance, speed and direction
/// \param hasCan  and with the CAN signals
std::string frameColumns(bool ofRtv, bool hasCan);

/// The fields of a CAN record but its length.
const std::vector<CanField>& canSignals();

/// The value of what a frame does not have: not a number.
constexpr double kAbsent = std::numeric_limits<double>::quiet_NaN();

/// kAbsent if the signal is absent.
double signalValue(const can_data_io& can, const CanField& signal);

void makeAbsent(can_data_io& can, const CanField& signal);

/// Whether the plain name is one that frameColumns() has.
bool isFrameColumn(const std::string& plainName);

/// Of a column by its name without a unit: of the times and of the values of a tag. The format
/// defines no units of CAN signals, but a table may name one.
Dimension dimensionOf(std::string_view name);

/// A table from a file. The job is told which columns it has beside those of frameColumns(), in any
/// unit, and of `others`; nobody reads them. Throws Failure.
CsvTable readFrameTable(const std::string& path, Job& job,
                        const std::vector<std::string>& others = {});

}  // namespace velmar::toolkit

#endif
