#include "toolkit/video/VideoWriter.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string_view>

#include "base/FileDescriptor.h"
#include "toolkit/base/Failure.h"
#include "toolkit/text/TimeText.h"
#include "toolkit/video/Libav.h"

namespace velmar::toolkit {

namespace {

// A file under a temporary name that libavformat writes; it goes unless it is published.
class ByteTarget {
 public:
  explicit ByteTarget(const std::string& path)
      : path_(path),
        temporary_(path + "." + std::to_string(::getpid()) + ".tmp"),
        file_(temporary_, O_RDWR | O_CREAT | O_EXCL, 0666) {
    if (!file_.isOpen()) throw Failure::ofCreation(path, errno);
    constexpr int kBufferSize = 1 << 18;
    auto* const buffer = static_cast<unsigned char*>(av_malloc(kBufferSize));
    io_.reset(avio_alloc_context(buffer, kBufferSize, 1, this, nullptr, &write, &seek));
  }
  ByteTarget(const ByteTarget&) = delete;
  ByteTarget& operator=(const ByteTarget&) = delete;
  ~ByteTarget() {
    if (file_.isOpen()) ::unlink(temporary_.c_str());
  }

  AVIOContext* io() { return io_.get(); }
  const detail::FileDescriptor& file() const { return file_; }

  Failure failure(const std::string& words = "cannot write it") const {
    return Failure::ofSystem(path_, words, cause_ != 0 ? cause_ : EIO);
  }
  bool hasFailed() const { return cause_ != 0; }

  void publish() {
    if (std::rename(temporary_.c_str(), path_.c_str()) != 0) {
      throw Failure::ofSystem(path_, "cannot write it", errno);
    }
    file_.close();
  }

 private:
  static int write(void* opaque, std::uint8_t* bytes, int size) {
    auto& target = *static_cast<ByteTarget*>(opaque);
    if (target.file_.write(bytes, static_cast<std::size_t>(size))) return size;
    target.cause_ = errno;
    return AVERROR(target.cause_);
  }

  static std::int64_t seek(void* opaque, std::int64_t offset, int whence) {
    if (whence == AVSEEK_SIZE) return AVERROR(ENOSYS);
    const int fd = static_cast<ByteTarget*>(opaque)->file_.get();
    const off_t place = ::lseek(fd, offset, whence & ~AVSEEK_FORCE);
    return place < 0 ? AVERROR(errno) : place;
  }

  std::string path_;
  std::string temporary_;
  detail::FileDescriptor file_;
  int cause_ = 0;
  LibavOwner<AVIOContext> io_;
};

const char* muxerOf(VideoContainer container) {
  switch (container) {
    case VideoContainer::Mkv:
      return "matroska";
    case VideoContainer::Mp4:
      return "mp4";
    case VideoContainer::Mov:
      return "mov";
    default:
      return "avi";
  }
}

class LibavWriter final : public VideoWriter {
 public:
  explicit LibavWriter(const VideoDescription& description)
      : container_(description.container),
        target_(description.path),
        path_(description.path),
        packet_(av_packet_alloc()) {
    av_log_set_level(AV_LOG_QUIET);
    const char* const muxer = muxerOf(container_);
    AVFormatContext* format = nullptr;
    if (!packet_ || avformat_alloc_output_context2(&format, nullptr, muxer, nullptr) < 0) {
      throw failure("libavformat cannot write videos of that kind");
    }
    format_.reset(format);
    format_->pb = target_.io();
    addStream(description);
    addTags(description);
    writeHeader();
  }
  LibavWriter(const LibavWriter&) = delete;
  LibavWriter& operator=(const LibavWriter&) = delete;

  void add(const std::string& jpeg, std::uint64_t number, std::uint64_t time) override {
    packet_->data = reinterpret_cast<std::uint8_t*>(const_cast<char*>(jpeg.data()));
    packet_->size = static_cast<int>(jpeg.size());
    packet_->flags = AV_PKT_FLAG_KEY;
    packet_->pts = static_cast<std::int64_t>(container_ == VideoContainer::Avi ? number : time);
    packet_->dts = packet_->pts;
    packet_->duration = durationOf(time);
    const int result = av_write_frame(format_.get(), packet_.get());
    if (target_.hasFailed()) throw target_.failure();
    if (result < 0) throw failure("a frame cannot be written: " + libavWords(result));
    last_ = time;
  }

  void finish() override {
    const int result = av_write_trailer(format_.get());
    avio_flush(target_.io());
    if (target_.hasFailed()) throw target_.failure();
    if (result < 0) throw failure("it cannot be finished: " + libavWords(result));
    if (container_ == VideoContainer::Mkv) setMkvUnit();
    target_.publish();
  }

 private:
  static constexpr AVRational kMkvUnit{1, 1000};  // libavformat knows no other

  Failure failure(const std::string& words) const {
    return {path_, words, VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E};
  }

  void addStream(const VideoDescription& description) {
    stream_ = avformat_new_stream(format_.get(), nullptr);
    if (stream_ == nullptr) throw std::bad_alloc();
    stream_->codecpar->codec_type = AVMEDIA_TYPE_VIDEO;
    stream_->codecpar->codec_id = AV_CODEC_ID_MJPEG;
    stream_->codecpar->width = description.size.width;
    stream_->codecpar->height = description.size.height;
    stream_->time_base = kMicroseconds;
    if (!description.rate) return;
    stream_->avg_frame_rate = {description.rate->frames, description.rate->seconds};
    if (container_ == VideoContainer::Avi) stream_->time_base = av_inv_q(stream_->avg_frame_rate);
  }

  void addTags(const VideoDescription& description) {
    const auto set = [this](const char* key, const std::string& value) {
      if (!value.empty()) av_dict_set(&format_->metadata, key, value.c_str(), 0);
    };
    const std::string start = formatTime(description.startTime);
    if (container_ != VideoContainer::Avi) {
      set("creation_time", start);
      set("device_id", description.deviceId);
      set("location", description.position);
      return;
    }
    // It has a few tags only.
    set("date", start);
    std::string comment;
    if (!description.deviceId.empty()) comment = "device_id=" + description.deviceId;
    if (!description.position.empty()) {
      comment += (comment.empty() ? "location=" : " location=") + description.position;
    }
    set("comment", comment);
  }

  void writeHeader() {
    AVDictionary* options = nullptr;
    // Any tag, and the creation time to the microsecond.
    if (container_ == VideoContainer::Mp4 || container_ == VideoContainer::Mov) {
      av_dict_set(&options, "movflags", "use_metadata_tags", 0);
    }
    const int result = avformat_write_header(format_.get(), &options);
    av_dict_free(&options);
    if (target_.hasFailed()) throw target_.failure();
    if (result < 0) throw failure("it cannot be begun: " + libavWords(result));
    const AVRational unit = container_ == VideoContainer::Mkv   ? kMkvUnit
                            : container_ == VideoContainer::Avi ? av_inv_q(stream_->avg_frame_rate)
                                                                : kMicroseconds;
    if (av_cmp_q(stream_->time_base, unit) != 0) {
      throw failure("this version of libavformat does not write it with exact times");
    }
    // Its times are given in microseconds all the same; setMkvUnit() says so in the file.
    if (container_ == VideoContainer::Mkv) stream_->time_base = kMicroseconds;
  }

  // Counts only for the last frame: as long as that before it.
  std::int64_t durationOf(std::uint64_t time) const {
    constexpr std::int64_t kOfSingleFrame = 40'000;
    if (container_ == VideoContainer::Avi) return 1;
    return time > last_ ? static_cast<std::int64_t>(time - last_) : kOfSingleFrame;
  }

  // The muxer writes milliseconds as the unit of all times, which the format leaves open.
  void setMkvUnit() {
    using namespace std::string_view_literals;
    constexpr auto kMilliseconds = "\x2A\xD7\xB1\x83\x0F\x42\x40"sv;  // 1,000,000 ns
    constexpr auto kWanted = "\x2A\xD7\xB1\x83\x00\x03\xE8"sv;
    std::string head(512, '\0');
    const auto found = target_.file().readAt(head.data(), head.size(), 0) ? head.find(kMilliseconds)
                                                                          : std::string::npos;
    if (found == head.npos) {
      throw failure("this version of libavformat does not write it with exact times");
    }
    if (!target_.file().writeAt(kWanted.data(), kWanted.size(), found)) {
      throw Failure::ofSystem(path_, "cannot write it", errno);
    }
  }

  const VideoContainer container_;
  ByteTarget target_;
  const std::string path_;
  LibavOwner<AVPacket> packet_;
  LibavOwner<AVFormatContext> format_;
  AVStream* stream_ = nullptr;
  std::uint64_t last_ = 0;
};

}  // namespace

std::unique_ptr<VideoWriter> createVideo(const VideoDescription& description) {
  return std::make_unique<LibavWriter>(description);
}

}  // namespace velmar::toolkit
