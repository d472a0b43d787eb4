#ifndef VELMAR_TESTS_DECODING_H
#define VELMAR_TESTS_DECODING_H

#include <string>

#include "velmar_video/VelmarVideoFile.h"

/// Decodes frame 0, which is `jpeg`, at every scale, format and cut, and compares with TurboJPEG's
/// own output.
void expectExactPixels(VelmarVideoFileReader& reader, const std::string& jpeg, int width,
                       int height);

#endif
