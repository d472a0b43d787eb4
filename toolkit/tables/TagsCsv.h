#ifndef VELMAR_TOOLKIT_TAGS_CSV_H
#define VELMAR_TOOLKIT_TAGS_CSV_H

#include <string>
#include <vector>

#include "toolkit/recording/FrameTag.h"
#include "toolkit/text/CsvTable.h"
#include "velmar_video/VelmarVideoCommDef.h"

namespace velmar::toolkit {

/// The tags of the files, in their order, from a table whose rows name their frame (see
/// rowsOfFrames()) and have any of the columns x, y, z, relative_distance, speed and direction
/// and of the CAN signals' names. Values are stored integers (floats for signals that are); an
/// empty cell is 0 or an absent signal. Throws Failure, for values that the version's fields do not
/// hold as well.
std::vector<FrameTag> readTags(const CsvTable& table, const std::vector<std::string>& files,
                               version_e version);

/// What is in the tags that the version has no field for, in words; empty if there is nothing.
std::string lostFromTags(const std::vector<FrameTag>& tags, version_e version);

}  // namespace velmar::toolkit

#endif
