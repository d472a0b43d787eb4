#ifndef VELMAR_RTV_TAGGED_VIDEO_PARSER_STATE_H
#define VELMAR_RTV_TAGGED_VIDEO_PARSER_STATE_H

#include <mutex>

#include "base/FileDescriptor.h"
#include "base/MemoryMap.h"
#include "jpeg/JpegDecoder.h"
#include "velmar_video/rtv/TaggedVideoParser.h"

constexpr char kTaggedVideoParserTag[] = "TaggedVideoParser";  ///< of the log

/// The private state of the public class, kept out of the public header.
struct TaggedVideoParser::State {
  velmar::detail::FileDescriptor mFileFd;
  velmar::detail::MemoryMap mMapAddr;  ///< mapped while, and only while, the parser is initialised
  unsigned long mFileSize = 0;
  velmar::detail::JpegDecoder decoder;
  std::mutex mMutex;  ///< held by init() and clear()
};

#endif
