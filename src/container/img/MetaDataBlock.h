#ifndef VELMAR_IMG_META_DATA_BLOCK_H
#define VELMAR_IMG_META_DATA_BLOCK_H

#include <string>

#include "base/FileDescriptor.h"

/// Replaces the text that stands from `offset` to the end of an open file, by one write: a longer
/// old text is covered with blanks, which JSON does not mind, and is for the caller to cut off.
/// Room for a longer new text is reserved first, and what is written in part is put back. \return
/// 0, or the errno of the step that failed; the file then holds the old text
int replaceMetaDataBlock(const FileDescriptor& file, unsigned long offset,
                         const std::string& oldText, const std::string& newText);

#endif
