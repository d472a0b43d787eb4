#ifndef VELMAR_IMG_META_DATA_BLOCK_H
#define VELMAR_IMG_META_DATA_BLOCK_H

#include <string>

#include "base/FileDescriptor.h"

namespace velmar::detail {

/// Replaces the text from `offset` to the end of an open file, by one write. If the old text is
/// longer, blanks cover the rest of it, which JSON ignores, and the caller shortens the file. Room
/// for a longer new text is reserved first. If the write fails halfway, the old text is put back.
/// \return 0, or the errno of the step that failed; the file then holds the old text
int replaceMetaDataBlock(const FileDescriptor& file, unsigned long offset,
                         const std::string& oldText, const std::string& newText);

}  // namespace velmar::detail

#endif
