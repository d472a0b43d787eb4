#include "toolkit/rescue/FindingsJson.h"

#include "toolkit/text/JsonText.h"

namespace velmar::toolkit {

const char* nameOf(Finding::Severity severity) {
  return severity == Finding::Severity::Error ? "error" : "warning";
}

void FindingsJson::add(const Finding& finding) {
  (finding.severity == Finding::Severity::Error ? errors_ : warnings_) += finding.count();
  std::string text = std::string("{\"severity\":\"") + nameOf(finding.severity) + "\"";
  if (finding.frame) text += ",\"frame\":" + std::to_string(*finding.frame);
  if (finding.lastFrame) text += ",\"last_frame\":" + std::to_string(*finding.lastFrame);
  if (finding.offset) text += ",\"offset\":" + std::to_string(*finding.offset);
  text += ",\"text\":" + toJsonText(finding.text) + "}";
  findings_ += (findings_.empty() ? "" : ",") + text;
}

std::string FindingsJson::text(const std::string& file, unsigned int frames) const {
  return "{\"file\":" + toJsonText(file) + ",\"frames\":" + std::to_string(frames) +
         ",\"errors\":" + std::to_string(errors_) + ",\"warnings\":" + std::to_string(warnings_) +
         ",\"findings\":[" + findings_ + "]}";
}

}  // namespace velmar::toolkit
