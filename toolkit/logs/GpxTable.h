#ifndef VELMAR_TOOLKIT_GPX_TABLE_H
#define VELMAR_TOOLKIT_GPX_TABLE_H

#include <string>

#include "toolkit/text/CsvTable.h"

namespace velmar::toolkit {

/// Whether the text is XML and no table.
bool isXml(const std::string& text);

/// The points of all tracks of a GPX document as a table with the columns time, lat, lon and, of
/// points that have them, ele, speed_m_s and course.
/// \param name  of the document, for messages
/// Throws Failure that names the line.
CsvTable readGpx(const std::string& name, const std::string& text);

}  // namespace velmar::toolkit

#endif
