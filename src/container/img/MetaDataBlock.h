#ifndef VELMAR_IMG_META_DATA_BLOCK_H
#define VELMAR_IMG_META_DATA_BLOCK_H

#include <string>

#include "common/FileDescriptor.h"

/// Replaces the text that stands from `offset` to the end of an open file, so that whoever reads
/// the file finds the old text or the new, whenever this process ends.
/// \return 0, or the errno of the step that failed; the file then holds the old text. Only a
///         failed cut of the file's end leaves the new one, followed by blanks.
int replaceMetaDataBlock(const FileDescriptor& file, unsigned long offset,
                         const std::string& oldText, const std::string& newText);

#endif
