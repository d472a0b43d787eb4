#include "toolkit/video/VideoSource.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cmath>
#include <string_view>
#include <utility>

#include "base/FileDescriptor.h"
#include "toolkit/base/Failure.h"
#include "toolkit/files/FileKind.h"
#include "toolkit/jpeg/JpegInspector.h"
#include "toolkit/text/TimeText.h"
#include "toolkit/video/Libav.h"
#include "toolkit/video/PictureEncoder.h"

extern "C" {
#include <libavutil/display.h>
}

namespace velmar::toolkit {

namespace {

constexpr int kDecodingThreads = 2;
constexpr std::int64_t kPixelsMax = std::int64_t{1} << 26;

// The bytes of a file or of standard input for libavformat, which opens nothing itself.
class ByteSource {
 public:
  explicit ByteSource(const VideoOpening& opening)
      : file_(opening.path == "-" ? detail::FileDescriptor()
                                  : detail::FileDescriptor(opening.path, O_RDONLY)),
        fd_(opening.path == "-" ? STDIN_FILENO : file_.get()) {
    struct stat status {};
    if (fd_ < 0 || fstat(fd_, &status) != 0) {
      throw Failure::ofSystem(opening.name(), "cannot open it", errno);
    }
    if (S_ISDIR(status.st_mode)) {
      throw Failure(opening.name(), "it is " + kindOf(status.st_mode) + ", not a file",
                    VELMAR_ERROR_CODE_NOT_VELMAR_VIDEO_FORMAT_E);
    }
    constexpr int kBufferSize = 1 << 16;
    auto* const buffer = static_cast<unsigned char*>(av_malloc(kBufferSize));
    const bool canSeek = S_ISREG(status.st_mode);
    if (canSeek) {
      size_ = status.st_size;
    } else {
      waitReadable_ = opening.waitReadable;
    }
    io_.reset(avio_alloc_context(buffer, kBufferSize, 0, this, &read, nullptr,
                                 canSeek ? &seek : nullptr));
  }
  ByteSource(const ByteSource&) = delete;
  ByteSource& operator=(const ByteSource&) = delete;

  AVIOContext* io() { return io_.get(); }
  // The errno of a failed read, which libavformat may take for the end.
  int cause() const { return cause_; }
  bool canSeek() const { return io_->seek != nullptr; }
  // 0 if nobody knows.
  std::int64_t size() const { return size_; }
  // What a file begins with.
  std::string head() const {
    std::string bytes(std::min<std::int64_t>(size_, 256), '\0');
    const ssize_t count = size_ > 0 ? ::pread(fd_, bytes.data(), bytes.size(), 0) : 0;
    bytes.resize(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    return bytes;
  }

 private:
  static int read(void* opaque, std::uint8_t* buffer, int size) {
    auto& source = *static_cast<ByteSource*>(opaque);
    while (true) {
      if (source.waitReadable_ && !source.waitReadable_(source.fd_)) return AVERROR_EXIT;
      const ssize_t count = ::read(source.fd_, buffer, static_cast<std::size_t>(size));
      if (count > 0) return static_cast<int>(count);
      if (count == 0) return AVERROR_EOF;
      if (errno == EINTR || errno == EAGAIN) continue;
      source.cause_ = errno;
      return AVERROR(source.cause_);
    }
  }

  static std::int64_t seek(void* opaque, std::int64_t offset, int whence) {
    const int fd = static_cast<ByteSource*>(opaque)->fd_;
    if (whence == AVSEEK_SIZE) return static_cast<ByteSource*>(opaque)->size_;
    const off_t place = ::lseek(fd, offset, whence & ~AVSEEK_FORCE);
    return place < 0 ? AVERROR(errno) : place;
  }

  std::function<bool(int)> waitReadable_;
  detail::FileDescriptor file_;
  int fd_;
  std::int64_t size_ = 0;
  int cause_ = 0;
  LibavOwner<AVIOContext> io_;
};

// A size as EBML has it, which moves `at` behind it; nothing if it is unknown.
std::optional<std::int64_t> ebmlSize(std::string_view bytes, std::size_t& at) {
  if (at >= bytes.size()) return std::nullopt;
  const auto first = static_cast<unsigned char>(bytes[at]);
  const int length = std::countl_zero(first) + 1;
  if (length > 8 || bytes.size() - at < static_cast<std::size_t>(length)) return std::nullopt;
  std::int64_t value = first & (0xFF >> length);
  for (int i = 1; i < length; ++i) {
    value = value << 8 | static_cast<unsigned char>(bytes[at + static_cast<std::size_t>(i)]);
  }
  at += static_cast<std::size_t>(length);
  if (value == (std::int64_t{1} << (7 * length)) - 1) return std::nullopt;
  return value;
}

// Where a Matroska file ends by its own account; 0 if it does not say. (libavformat takes one that
// is cut short for a shorter one.)
std::int64_t matroskaEnd(std::string_view head) {
  constexpr std::string_view kHeader = "\x1A\x45\xDF\xA3";
  constexpr std::string_view kSegment = "\x18\x53\x80\x67";
  if (!head.starts_with(kHeader)) return 0;
  std::size_t at = kHeader.size();
  const auto header = ebmlSize(head, at);
  if (!header || *header < 0 || static_cast<std::size_t>(*header) > head.size() - at) return 0;
  at += static_cast<std::size_t>(*header);
  if (!head.substr(at).starts_with(kSegment)) return 0;
  at += kSegment.size();
  const auto segment = ebmlSize(head, at);
  return segment ? static_cast<std::int64_t>(at) + *segment : 0;
}

class LibavSource final : public VideoSource {
 public:
  LibavSource(const VideoOpening& opening, Job& job)
      : name_(opening.name()),
        job_(job),
        bytes_(opening),
        encoder_(name_, opening.quality),
        packet_(av_packet_alloc()),
        frame_(av_frame_alloc()) {
    av_log_set_level(AV_LOG_QUIET);
    openFormat(opening.path);
    chooseStream();
    readFacts();
  }
  LibavSource(const LibavSource&) = delete;
  LibavSource& operator=(const LibavSource&) = delete;

  const VideoFacts& facts() const override { return facts_; }

  bool next() override {
    const bool found = isMjpeg() ? nextPacket() : nextPicture();
    if (found) readTime();
    if (!found && undecoded_ > 0) {
      job_.lose(name_, std::to_string(std::exchange(undecoded_, 0)) +
                           " frames or parts of frames do not decode and are left out");
    }
    return found;
  }

  std::optional<std::int64_t> time() const override {
    if (!time_) return std::nullopt;
    return av_rescale_q(*time_, stream_->time_base, kMicroseconds);
  }

  std::string flaw() const override {
    if (isEstimated_) return "its time is estimated";
    if (!isMjpeg()) {
      const bool isDamaged =
          frame_->decode_error_flags != 0 || (frame_->flags & AV_FRAME_FLAG_CORRUPT) != 0;
      return isDamaged ? "it is damaged in the video" : "";
    }
    const std::string_view jpeg(reinterpret_cast<const char*>(packet_->data),
                                static_cast<std::size_t>(packet_->size));
    return endsAsJpeg(jpeg) ? "" : "it has no end marker";
  }

  void readJpeg(std::string& bytes) override {
    if (isMjpeg()) {
      bytes.assign(reinterpret_cast<const char*>(packet_->data),
                   static_cast<std::size_t>(packet_->size));
    } else {
      if (std::exchange(isFirst_, false)) notePicture();
      encoder_.encode(*frame_, bytes);
    }
  }

 private:
  bool isMov() const { return std::string_view(format_->iformat->name).starts_with("mov,"); }
  bool isMjpeg() const { return stream_->codecpar->codec_id == AV_CODEC_ID_MJPEG; }

  Failure refusal(const std::string& words) const {
    return {name_, words, VELMAR_ERROR_CODE_NOT_VELMAR_VIDEO_FORMAT_E};
  }

  void openFormat(const std::string& path) {
    const AVInputFormat* demuxer = nullptr;
    int result = av_probe_input_buffer2(bytes_.io(), &demuxer, path.c_str(), nullptr, 0, 0);
    if (bytes_.cause() != 0) throw Failure::ofSystem(name_, "cannot read it", bytes_.cause());
    if (result < 0) throw refusal("it is neither a JPEG picture nor a video");
    AVFormatContext* format = avformat_alloc_context();
    if (format == nullptr) throw std::bad_alloc();
    format->pb = bytes_.io();
    // A playlist must not lead to other files or to the network.
    AVDictionary* options = nullptr;
    av_dict_set(&options, "protocol_whitelist", "none", 0);
    result = avformat_open_input(&format, path.c_str(), demuxer, &options);
    format_.reset(format);  // none after a failure
    av_dict_free(&options);
    if (bytes_.cause() != 0) throw Failure::ofSystem(name_, "cannot read it", bytes_.cause());
    if (result >= 0) return;
    const std::string kind = std::string("it cannot be read as a video (") + demuxer->name + "): ";
    throw refusal(
        kind + (result == AVERROR_INVALIDDATA ? "it is cut short or damaged" : libavWords(result)));
  }

  void chooseStream() {
    const int found = avformat_find_stream_info(format_.get(), nullptr);
    const int best = av_find_best_stream(format_.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (found < 0 || best < 0) throw refusal("it has no pictures");
    for (unsigned int i = 0; i < format_->nb_streams; ++i) {
      if (static_cast<int>(i) != best) format_->streams[i]->discard = AVDISCARD_ALL;
    }
    stream_ = format_->streams[best];
  }

  void readFacts() {
    const std::string demuxer = format_->iformat->name;
    // Bare streams of codecs, for which libavformat would count up at a rate of its own.
    const auto bare = {"h264", "hevc", "m4v", "mpegvideo", "obu"};
    facts_.hasTimes = (format_->iformat->flags & AVFMT_NOTIMESTAMPS) == 0 &&
                      !demuxer.ends_with("_pipe") && !demuxer.starts_with("image2") &&
                      std::find(bare.begin(), bare.end(), demuxer) == bare.end();
    facts_.size = {stream_->codecpar->width, stream_->codecpar->height};
    facts_.framesCount =
        stream_->nb_frames > 0 ? static_cast<std::uint64_t>(stream_->nb_frames) : 0;
    // AVI has only a date.
    for (const char* key : {"creation_time", "date"}) {
      const AVDictionaryEntry* const entry = av_dict_get(format_->metadata, key, nullptr, 0);
      // A bare number is a year or a day.
      const bool isTime = entry != nullptr && !parseNumber(entry->value);
      const auto time = isTime ? parseTime(entry->value) : std::nullopt;
      if (time && !facts_.creationTime) facts_.creationTime = time;
    }
    if (const auto* matrix = av_stream_get_side_data(stream_, AV_PKT_DATA_DISPLAYMATRIX, nullptr)) {
      const double left = av_display_rotation_get(reinterpret_cast<const std::int32_t*>(matrix));
      const long right = (std::lround(-left) % 360 + 360) % 360;
      if (right != 0) {
        job_.note(name_, "it is to be shown turned to the right by " + std::to_string(right) +
                             " degrees; the frames are recorded as they are stored");
      }
    }
    facts_.isCountExact = isMov();
    if (!isMjpeg()) return;
    if (stream_->codecpar->field_order > AV_FIELD_PROGRESSIVE) noteFields();
    if (stream_->codecpar->color_range == AVCOL_RANGE_MPEG) {
      job_.note(
          name_,
          "its JPEGs have limited range, which readers of JPEGs take for full range; they are "
          "recorded as they are and will look pale");
    }
  }

  void noteFields() {
    job_.note(name_, "it is interlaced; the frames are recorded with both of their fields");
  }

  void notePicture() {
    if (frame_->interlaced_frame != 0) noteFields();
    const std::string assumed = PictureEncoder::assumption(*frame_);
    if (!assumed.empty()) job_.note(name_, "it does not name its colours; assumed: " + assumed);
  }

  // In units of the stream.
  void readTime() {
    const bool isPacket = isMjpeg();
    std::int64_t time = isPacket ? packet_->pts : frame_->pts;
    // Containers without times of presentation have times of decoding, which lead to them.
    if (time == AV_NOPTS_VALUE) time = isPacket ? packet_->dts : frame_->best_effort_timestamp;
    isEstimated_ = time == AV_NOPTS_VALUE && time_ && interval() > 0;
    if (isEstimated_) {
      time_ = *time_ + interval();
    } else {
      time_ = time == AV_NOPTS_VALUE ? std::nullopt : std::optional(time);
    }
  }

  std::int64_t interval() const {
    const AVRational rate = stream_->avg_frame_rate;
    return rate.num > 0 ? av_rescale_q(1, av_inv_q(rate), stream_->time_base) : 0;
  }

  // Of the stream.
  bool readPacket() {
    while (!ended_) {
      av_packet_unref(packet_.get());
      const int result = av_read_frame(format_.get(), packet_.get());
      if (result == AVERROR(EAGAIN)) continue;
      if (result >= 0 && packet_->stream_index != stream_->index) continue;
      if (result >= 0) return true;
      const int cause = bytes_.cause() != 0 ? AVERROR(bytes_.cause()) : result;
      if (isMov() && !bytes_.canSeek() && cause != AVERROR_EOF && cause != AVERROR_EXIT) {
        throw refusal(
            "from a pipe an MP4 or MOV has to have its index in front (ffmpeg: -movflags "
            "faststart); as a file it need not");
      }
      if (isCutShort()) {
        job_.lose(name_, "it is cut short; its other frames are missing");
      } else if (cause != AVERROR_EOF && cause != AVERROR_EXIT) {
        job_.lose(name_, "cannot read on: " + libavWords(cause));
      }
      ended_ = true;
    }
    return false;
  }

  // Whether the video is longer than the file.
  bool isCutShort() const {
    if (bytes_.size() > 0 && matroskaEnd(bytes_.head()) > bytes_.size()) return true;
    for (int i = avformat_index_get_entries_count(stream_) - 1; i >= 0 && bytes_.size() > 0; --i) {
      const AVIndexEntry* const entry = avformat_index_get_entry(stream_, i);
      if (entry->pos + entry->size > bytes_.size()) return true;
    }
    return false;
  }

  bool nextPacket() {
    while (readPacket()) {
      // What an edit list leaves out is not shown; an AVI has empty packets where nothing is new.
      if ((packet_->flags & AV_PKT_FLAG_DISCARD) == 0 && packet_->size > 0) return true;
    }
    return false;
  }

  bool nextPicture() {
    if (!decoder_) openDecoder();
    while (true) {
      const int result = avcodec_receive_frame(decoder_.get(), frame_.get());
      if (result >= 0) return true;
      if (result == AVERROR_EOF) return false;
      if (result != AVERROR(EAGAIN)) {
        ++undecoded_;
        continue;
      }
      const bool hasMore = readPacket();
      if (avcodec_send_packet(decoder_.get(), hasMore ? packet_.get() : nullptr) < 0 && hasMore) {
        ++undecoded_;
      }
    }
  }

  void openDecoder() {
    const AVCodecParameters& parameters = *stream_->codecpar;
    const AVCodec* const codec = avcodec_find_decoder(parameters.codec_id);
    if (codec == nullptr) {
      throw refusal(std::string("its codec cannot be decoded: ") +
                    avcodec_get_name(parameters.codec_id));
    }
    decoder_.reset(avcodec_alloc_context3(codec));
    if (!decoder_ || avcodec_parameters_to_context(decoder_.get(), &parameters) < 0) {
      throw std::bad_alloc();
    }
    decoder_->pkt_timebase = stream_->time_base;
    if (std::int64_t{parameters.width} * parameters.height > kPixelsMax) {
      throw refusal("its pictures of " + std::to_string(parameters.width) + "x" +
                    std::to_string(parameters.height) + " pixels are too large to decode");
    }
    decoder_->thread_count = kDecodingThreads;
    decoder_->max_pixels = kPixelsMax;
    const int result = avcodec_open2(decoder_.get(), codec, nullptr);
    if (result < 0) throw refusal("it cannot be decoded: " + libavWords(result));
  }

  const std::string name_;
  Job& job_;
  ByteSource bytes_;
  PictureEncoder encoder_;
  LibavOwner<AVPacket> packet_;
  LibavOwner<AVFrame> frame_;
  LibavOwner<AVCodecContext> decoder_;
  LibavOwner<AVFormatContext> format_;
  AVStream* stream_ = nullptr;
  VideoFacts facts_;
  std::optional<std::int64_t> time_;  // of the frame, in units of the stream
  bool isEstimated_ = false;
  bool isFirst_ = true;  // no picture has been decoded
  bool ended_ = false;
  std::uint64_t undecoded_ = 0;
};

}  // namespace

std::unique_ptr<VideoSource> openVideo(const VideoOpening& opening, Job& job) {
  return std::make_unique<LibavSource>(opening, job);
}

}  // namespace velmar::toolkit
