/// \file
/// The whole interface of libvelmar_video in one header.
///
/// Where to start:
/// - VelmarVideoFile.h records, reads and edits recordings of both containers. Most programs need
///   nothing else; its first page says where img and rtv differ.
/// - TaggedVideoParser and RecordFileCreater read and write what only an rtv has: positions,
///   speeds, headings and CAN signals. RecordFileToolkit converts positions to degrees.
/// - VelmarVideoErrMsg.h lists the error codes, VelmarVideoCommDef.h the other enumerations, and
///   TypeConversion.h translates between those of the facade and those of the RTV classes.
#ifndef VELMAR_VIDEO_H
#define VELMAR_VIDEO_H

#include "velmar_video/TypeConversion.h"
#include "velmar_video/VelmarVideoCommDef.h"
#include "velmar_video/VelmarVideoErrMsg.h"
#include "velmar_video/VelmarVideoFile.h"
#include "velmar_video/rtv/CanData.h"
#include "velmar_video/rtv/RecordFileCreater.h"
#include "velmar_video/rtv/RecordFileToolkit.h"
#include "velmar_video/rtv/RtvContainerModifier.h"
#include "velmar_video/rtv/TaggedVideoParser.h"

#endif
