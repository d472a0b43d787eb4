/// Owners of what libavformat and libavcodec allocate. Only for sources that use these.
#ifndef VELMAR_TOOLKIT_LIBAV_H
#define VELMAR_TOOLKIT_LIBAV_H

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <memory>
#include <string>

namespace velmar::toolkit {

struct LibavDelete {
  void operator()(AVPacket* packet) const { av_packet_free(&packet); }
  void operator()(AVFrame* frame) const { av_frame_free(&frame); }
  void operator()(AVCodecContext* codec) const { avcodec_free_context(&codec); }
  void operator()(AVFormatContext* format) const {
    if (format->oformat != nullptr) {
      avformat_free_context(format);
    } else {
      avformat_close_input(&format);
    }
  }
  void operator()(AVIOContext* io) const {
    av_freep(&io->buffer);
    avio_context_free(&io);
  }
};
template <typename Type>
using LibavOwner = std::unique_ptr<Type, LibavDelete>;

constexpr AVRational kMicroseconds{1, 1'000'000};

inline std::string libavWords(int error) {
  char words[AV_ERROR_MAX_STRING_SIZE] = {};
  av_strerror(error, words, sizeof words);
  return words;
}

}  // namespace velmar::toolkit

#endif
