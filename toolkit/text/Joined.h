#ifndef VELMAR_TOOLKIT_JOINED_H
#define VELMAR_TOOLKIT_JOINED_H

#include <string>
#include <vector>

namespace velmar::toolkit {

/// The texts with the separator between them.
inline std::string joined(const std::vector<std::string>& texts,
                          const std::string& separator = ", ") {
  std::string all;
  for (const std::string& text : texts) all.append(all.empty() ? "" : separator).append(text);
  return all;
}

}  // namespace velmar::toolkit

#endif
