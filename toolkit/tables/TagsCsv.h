#ifndef VELMAR_TOOLKIT_TAGS_CSV_H
#define VELMAR_TOOLKIT_TAGS_CSV_H

#include <functional>
#include <string>
#include <vector>

#include "toolkit/recording/FrameTag.h"
#include "toolkit/text/CsvTable.h"
#include "toolkit/text/Unit.h"
#include "velmar_video/VelmarVideoCommDef.h"

namespace velmar::toolkit {

/// A value of a tag by the name of its column.
struct TagColumn {
  std::string name;
  /// Takes a number as text, in the unit of the file; false if it does not fit.
  std::function<bool(FrameTag& tag, const std::string& text)> set;
  /// Makes it 0, a signal absent.
  std::function<void(FrameTag& tag)> clear;
  /// Of numbers with a unit. What the format has no unit for, signals, is stored in m/s, degrees
  /// and metres if a table names one.
  Dimension dimension = Dimension::None;
  double perUnit = 1;   ///< how many there are to a m/s, degree or metre
  bool rounds = false;  ///< a number with a unit, to an integer

  /// Takes a number in m/s, degrees, metres, or as it stands; false if it does not fit.
  bool setValue(FrameTag& tag, double value) const;
};

/// The columns of the values that a tag has: x, y, z, relative_distance, speed and direction, and
/// the CAN signals by their names. What a version holds is limited by its fields; z and the CAN
/// signals, which not all of them have, are taken for any.
std::vector<TagColumn> tagColumns(version_e version);

/// The tags of the files, in their order, from a table whose rows name their frame (see
/// rowsOfFrames()) and have any of the tagColumns(). Values are stored integers (floats for signals
/// that are), unless the column names a unit (speed_kmh); an empty cell is 0 or an absent signal.
/// Throws Failure, for values that the version's fields do not hold as well.
std::vector<FrameTag> readTags(const CsvTable& table, const std::vector<std::string>& files,
                               version_e version);

/// Sets in the tags of a recording's frames what the table has: rows in any order, which name their
/// frame in the column "index", from 0, and any of the tagColumns(). Cells are those of readTags().
/// Frames without a row and values without a column stay as they are. Throws Failure.
void changeTags(const CsvTable& table, version_e version, std::vector<FrameTag>& tags);

/// What is in tags that not all versions have fields for.
struct TagContents {
  void add(const FrameTag& tag);
  /// What the version loses of it, in words; empty if nothing.
  std::string lostBy(version_e version) const;

  bool hasHeights = false;
  bool hasCan = false;
};

}  // namespace velmar::toolkit

#endif
