/// What readers and modifiers of both containers are put through.
#ifndef VELMAR_FUZZ_RECORDINGS_H
#define VELMAR_FUZZ_RECORDINGS_H

#include <cstddef>
#include <cstdint>
#include <functional>

#include "velmar_video/VelmarVideoFile.h"

/// Opens and closes the recording and asks for everything in between, whether it opens or not:
/// every getter, every frame as stored and decoded.
void readAll(VelmarVideoFileReader& reader);

/// Opens a recording, makes edits that follow from `data`, any bytes, and closes it. What close()
/// answers.
VELMAR_ERROR_CODE_E editAll(VelmarVideoFileModifier& modifier, const std::uint8_t* data,
                            std::size_t size);

/// Calls `use` for frames of a recording that says it has `count`: the first, and those around the
/// end.
void forSomeFrames(unsigned int count, const std::function<void(unsigned int)>& use);

/// The first rtv file decides the byte order for the whole process: makes it this host's, so that
/// an input does the same in every run.
bool latchHostByteOrder();

#endif
