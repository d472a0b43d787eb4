#include "LibavFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>

#include "Bench.h"
#include "Files.h"

extern "C" {
#include <libavformat/avformat.h>
}

namespace {

constexpr AVRational kFrameTime = {1, 30};  // seconds

void addStream(AVFormatContext* context) {
  AVStream* stream = avformat_new_stream(context, nullptr);
  require(stream != nullptr, "no stream");
  stream->time_base = kFrameTime;
  stream->avg_frame_rate = av_inv_q(kFrameTime);
  stream->codecpar->codec_type = AVMEDIA_TYPE_VIDEO;
  stream->codecpar->codec_id = AV_CODEC_ID_MJPEG;
  stream->codecpar->format = AV_PIX_FMT_YUVJ420P;
  stream->codecpar->width = kWidth;
  stream->codecpar->height = kHeight;
}

void writeFrame(AVFormatContext* context, AVPacket* packet, const std::string& jpeg,
                unsigned int frame) {
  // The interface wants a writable pointer and never writes through it.
  packet->data = reinterpret_cast<std::uint8_t*>(const_cast<char*>(jpeg.data()));
  packet->size = static_cast<int>(jpeg.size());
  packet->pts = packet->dts = av_rescale_q(frame, kFrameTime, context->streams[0]->time_base);
  packet->duration = av_rescale_q(1, kFrameTime, context->streams[0]->time_base);
  packet->flags = AV_PKT_FLAG_KEY;
  require(av_write_frame(context, packet) >= 0, "frame not muxed");
}

}  // namespace

void writeLibavFile(const std::string& path, const Frames& frames, unsigned int count) {
  const std::string temporary = path + ".tmp";
  AVFormatContext* context = nullptr;
  require(avformat_alloc_output_context2(&context, nullptr, nullptr, path.c_str()) >= 0,
          path + ": no muxer");
  addStream(context);
  require(avio_open(&context->pb, temporary.c_str(), AVIO_FLAG_WRITE) >= 0 &&
              avformat_write_header(context, nullptr) >= 0,
          path + ": not created");
  AVPacket* packet = av_packet_alloc();
  for (unsigned int i = 0; i < count; ++i) writeFrame(context, packet, frames[i], i);
  require(av_write_trailer(context) >= 0 && avio_closep(&context->pb) >= 0, path + ": not closed");
  av_packet_free(&packet);
  avformat_free_context(context);
  const OpenFile file(temporary, O_RDONLY);
  require(::fdatasync(file.get()) == 0 && std::rename(temporary.c_str(), path.c_str()) == 0,
          path + ": not in place");
}

std::string libavFile(const LibavContainer& container, const Frames& frames,
                      const std::string& framesName, unsigned int count) {
  const std::string path =
      Workspace::path(framesName + "-" + std::to_string(count) + container.extension);
  if (!std::filesystem::exists(path)) writeLibavFile(path, frames, count);
  return path;
}

std::string cameraFile(const LibavContainer& container) {
  return libavFile(container, Frames::camera(), "camera", cameraFrames());
}

LibavReader::LibavReader(const std::string& path) : packet_(av_packet_alloc()) {
  require(avformat_open_input(&context_, path.c_str(), nullptr, nullptr) >= 0 &&
              avformat_find_stream_info(context_, nullptr) >= 0,
          path + ": not demuxed");
}

LibavReader::~LibavReader() {
  av_packet_free(&packet_);
  avformat_close_input(&context_);
}

void LibavReader::readNext() {
  av_packet_unref(packet_);
  require(av_read_frame(context_, packet_) >= 0, "frame not demuxed");
}

void LibavReader::readFrame(unsigned int frame) {
  const std::int64_t time = av_rescale_q(frame, kFrameTime, context_->streams[0]->time_base);
  require(av_seek_frame(context_, 0, time, AVSEEK_FLAG_BACKWARD) >= 0, "no seek");
  do {
    readNext();
  } while ((packet_->pts == AV_NOPTS_VALUE ? packet_->dts : packet_->pts) < time);
}
