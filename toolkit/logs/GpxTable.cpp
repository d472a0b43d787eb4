#include "toolkit/logs/GpxTable.h"

#include <algorithm>
#include <cstddef>
#include <pugixml.hpp>
#include <string_view>

#include "toolkit/base/Failure.h"

namespace velmar::toolkit {

namespace {

// Counts lines, going forward.
class LineFinder {
 public:
  explicit LineFinder(const std::string& text) : text_(text) {}

  std::size_t lineAt(std::ptrdiff_t offset) {
    const auto end =
        std::min(static_cast<std::size_t>(std::max<std::ptrdiff_t>(offset, 0)), text_.size());
    for (; at_ < end; ++at_) line_ += text_[at_] == '\n' ? 1 : 0;
    return line_;
  }

 private:
  const std::string& text_;
  std::size_t at_ = 0;
  std::size_t line_ = 1;
};

// Of an element, whatever its namespace is called.
std::string_view localName(const pugi::xml_node& node) {
  const std::string_view name = node.name();
  return name.substr(name.find(':') + 1);
}

std::vector<pugi::xml_node> childrenOf(const pugi::xml_node& node, std::string_view name) {
  std::vector<pugi::xml_node> found;
  for (const pugi::xml_node& child : node.children()) {
    if (localName(child) == name) found.push_back(child);
  }
  return found;
}

// The text of the point's element, or of the extension of that name.
std::string valueOf(const pugi::xml_node& point, std::string_view name) {
  const auto found =
      point.find_node([name](const pugi::xml_node& node) { return localName(node) == name; });
  return found.text().get();
}

}  // namespace

bool isXml(const std::string& text) {
  const std::size_t begin = text.find_first_not_of("\xEF\xBB\xBF \t\r\n");
  return begin != text.npos && text[begin] == '<';
}

CsvTable readGpx(const std::string& name, const std::string& text) {
  pugi::xml_document document;
  const auto result = document.load_buffer(text.data(), text.size());
  LineFinder lines(text);
  const auto fail = [&](std::ptrdiff_t offset, const std::string& words) {
    throw Failure(name, "line " + std::to_string(lines.lineAt(offset)) + ": " + words,
                  VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
  };
  if (!result) fail(result.offset, std::string("it is no XML: ") + result.description());
  const pugi::xml_node root = document.document_element();
  if (localName(root) != "gpx") fail(root.offset_debug(), "it is XML, but no GPX");
  std::vector<CsvTable::Row> rows;
  for (const pugi::xml_node& track : childrenOf(root, "trk")) {
    for (const pugi::xml_node& segment : childrenOf(track, "trkseg")) {
      for (const pugi::xml_node& point : childrenOf(segment, "trkpt")) {
        rows.push_back({lines.lineAt(point.offset_debug()),
                        {valueOf(point, "time"), point.attribute("lat").value(),
                         point.attribute("lon").value(), valueOf(point, "ele"),
                         valueOf(point, "speed"), valueOf(point, "course")}});
      }
    }
  }
  if (rows.empty()) fail(root.offset_debug(), "it has no track points");
  return {name, {"time", "lat", "lon", "ele", "speed_m_s", "course"}, std::move(rows)};
}

}  // namespace velmar::toolkit
