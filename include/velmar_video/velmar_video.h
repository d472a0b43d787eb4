/// \file
/// Everything a caller of libvelmar_video needs.
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
