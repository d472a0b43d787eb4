#include "toolkit/video/PictureEncoder.h"

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

#include <algorithm>

#include "toolkit/base/Failure.h"

namespace velmar::toolkit {

namespace {

// A pixel format whose planes TurboJPEG takes, and that with the name of full range.
struct PlaneFormat {
  int sampling;
  AVPixelFormat format;
  AVPixelFormat fullRange;
};
constexpr PlaneFormat kFormats[] = {{TJSAMP_444, AV_PIX_FMT_YUV444P, AV_PIX_FMT_YUVJ444P},
                                    {TJSAMP_422, AV_PIX_FMT_YUV422P, AV_PIX_FMT_YUVJ422P},
                                    {TJSAMP_420, AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUVJ420P},
                                    {TJSAMP_440, AV_PIX_FMT_YUV440P, AV_PIX_FMT_YUVJ440P},
                                    {TJSAMP_411, AV_PIX_FMT_YUV411P, AV_PIX_FMT_YUVJ411P},
                                    {TJSAMP_GRAY, AV_PIX_FMT_GRAY8, AV_PIX_FMT_GRAY8}};

AVPixelFormat formatOf(const AVFrame& picture) {
  return static_cast<AVPixelFormat>(picture.format);
}

const PlaneFormat* planeFormat(AVPixelFormat format) {
  const auto* const found =
      std::find_if(std::begin(kFormats), std::end(kFormats), [format](const PlaneFormat& each) {
        return each.format == format || each.fullRange == format;
      });
  return found == std::end(kFormats) ? nullptr : found;
}

bool isRgb(AVPixelFormat format) {
  const AVPixFmtDescriptor* const facts = av_pix_fmt_desc_get(format);
  return facts != nullptr && (facts->flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL)) != 0;
}

// The planes that keep all of another format but the bits beyond the eighth.
AVPixelFormat nearestFormat(AVPixelFormat format) {
  const AVPixFmtDescriptor* const facts = av_pix_fmt_desc_get(format);
  if (facts == nullptr || isRgb(format)) return AV_PIX_FMT_YUV444P;
  if (facts->nb_components < 3) return AV_PIX_FMT_GRAY8;
  for (const PlaneFormat& each : kFormats) {
    const AVPixFmtDescriptor* const other = av_pix_fmt_desc_get(each.format);
    if (other->nb_components == 3 && other->log2_chroma_w == facts->log2_chroma_w &&
        other->log2_chroma_h == facts->log2_chroma_h) {
      return each.format;
    }
  }
  return AV_PIX_FMT_YUV444P;
}

bool isGrey(const AVFrame& picture) { return nearestFormat(formatOf(picture)) == AV_PIX_FMT_GRAY8; }

bool isFullRange(const AVFrame& picture) {
  if (isGrey(picture)) return picture.color_range != AVCOL_RANGE_MPEG;
  const PlaneFormat* const planes = planeFormat(formatOf(picture));
  const bool isNamed = planes != nullptr && planes->format != planes->fullRange &&
                       planes->fullRange == formatOf(picture);
  return isNamed || isRgb(formatOf(picture)) || picture.color_range == AVCOL_RANGE_JPEG;
}

bool saysMatrix(const AVFrame& picture) {
  return picture.colorspace != AVCOL_SPC_UNSPECIFIED && picture.colorspace != AVCOL_SPC_RESERVED;
}

constexpr int kFirstHighDefinitionHeight = 720;

AVColorSpace matrixOf(const AVFrame& picture) {
  if (isRgb(formatOf(picture))) return AVCOL_SPC_SMPTE170M;  // what the scaler makes of it
  if (saysMatrix(picture)) return picture.colorspace;
  return picture.height < kFirstHighDefinitionHeight ? AVCOL_SPC_SMPTE170M : AVCOL_SPC_BT709;
}

std::optional<YccMeaning> meaningOf(AVColorSpace matrix, bool fullRange) {
  switch (matrix) {
    case AVCOL_SPC_BT709:
      return YccMeaning{0.2126, 0.0722, fullRange};
    case AVCOL_SPC_FCC:
      return YccMeaning{0.30, 0.11, fullRange};
    case AVCOL_SPC_BT470BG:
    case AVCOL_SPC_SMPTE170M:
      return YccMeaning{0.299, 0.114, fullRange};
    case AVCOL_SPC_SMPTE240M:
      return YccMeaning{0.212, 0.087, fullRange};
    case AVCOL_SPC_BT2020_NCL:
      return YccMeaning{0.2627, 0.0593, fullRange};
    default:
      return std::nullopt;
  }
}

// Repeats the last sample of a row up to its end.
void pad(unsigned char* row, int filled, int width) {
  std::fill(row + filled, row + width, row[filled - 1]);
}

}  // namespace

void PictureEncoder::SwsDelete::operator()(SwsContext* context) const { sws_freeContext(context); }
void PictureEncoder::FrameDelete::operator()(AVFrame* frame) const { av_frame_free(&frame); }

PictureEncoder::PictureEncoder(std::string file, int quality)
    : file_(std::move(file)),
      quality_(quality),
      compressor_(tjInitCompress()),
      converted_(av_frame_alloc()) {}

PictureEncoder::~PictureEncoder() = default;

std::string PictureEncoder::assumption(const AVFrame& picture) {
  if (isRgb(formatOf(picture))) return "";
  const bool saysRange = isFullRange(picture) || picture.color_range == AVCOL_RANGE_MPEG;
  std::string assumed;
  if (!saysMatrix(picture) && !isGrey(picture)) {
    assumed = matrixOf(picture) == AVCOL_SPC_BT709 ? "BT.709" : "BT.601";
  }
  if (!saysRange) assumed += assumed.empty() ? "limited range" : ", limited range";
  return assumed;
}

void PictureEncoder::encode(const AVFrame& picture, std::string& jpeg) {
  const AVFrame& planes = inPlanes(picture);
  setMeaning(picture);
  const int sampling = planeFormat(formatOf(planes))->sampling;
  convertPlanes(planes, sampling);
  compress(picture.width, picture.height, sampling, jpeg);
}

// Another layout or depth becomes planes of 8 bits; the meaning of the numbers stays.
const AVFrame& PictureEncoder::inPlanes(const AVFrame& picture) {
  if (planeFormat(formatOf(picture)) != nullptr) return picture;
  const AVPixelFormat format = nearestFormat(formatOf(picture));
  scaler_.reset(sws_getCachedContext(scaler_.release(), picture.width, picture.height,
                                     formatOf(picture), picture.width, picture.height, format,
                                     SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INP, nullptr,
                                     nullptr, nullptr));
  av_frame_unref(converted_.get());
  converted_->format = format;
  converted_->width = picture.width;
  converted_->height = picture.height;
  const int* const matrix = sws_getCoefficients(SWS_CS_ITU601);
  const int full = isFullRange(picture) ? 1 : 0;
  constexpr int kUnchanged = 1 << 16;
  if (!scaler_ || av_frame_get_buffer(converted_.get(), 0) < 0 ||
      sws_setColorspaceDetails(scaler_.get(), matrix, full, matrix, full, 0, kUnchanged,
                               kUnchanged) < 0 ||
      sws_scale(scaler_.get(), picture.data, picture.linesize, 0, picture.height, converted_->data,
                converted_->linesize) != picture.height) {
    const char* const name = av_get_pix_fmt_name(formatOf(picture));
    throw Failure(file_,
                  std::string("its pixels cannot be converted: ") +
                      (name != nullptr ? name : "an unknown format"),
                  VELMAR_ERROR_CODE_COLOR_FORMAT_NOT_SUPPROT_E);
  }
  return *converted_;
}

void PictureEncoder::setMeaning(const AVFrame& picture) {
  const std::pair<int, bool> colours(matrixOf(picture), isFullRange(picture));
  if (conversion_ && colours == colours_) return;
  const auto meaning = meaningOf(matrixOf(picture), isFullRange(picture));
  if (!meaning) {
    const char* const name = av_color_space_name(picture.colorspace);
    throw Failure(file_,
                  std::string("its colours cannot be converted: ") +
                      (name != nullptr ? name : "an unknown matrix"),
                  VELMAR_ERROR_CODE_COLOR_FORMAT_NOT_SUPPROT_E);
  }
  conversion_.emplace(*meaning);
  colours_ = colours;
}

void PictureEncoder::convertPlanes(const AVFrame& picture, int sampling) {
  const bool hasChroma = sampling != TJSAMP_GRAY;
  const AVPixFmtDescriptor* const facts = av_pix_fmt_desc_get(formatOf(picture));
  const int across = facts->log2_chroma_w;
  const int down = facts->log2_chroma_h;
  const int chromaWidth = AV_CEIL_RSHIFT(picture.width, across);
  std::array<int, 3> strides{};
  for (int i = 0; i < (hasChroma ? 3 : 1); ++i) {
    strides[i] = tjPlaneWidth(i, picture.width, sampling);
    planes_[i].resize(static_cast<std::size_t>(strides[i]) *
                      tjPlaneHeight(i, picture.height, sampling));
  }
  const auto source = [&](int plane, int row) {
    return picture.data[plane] + std::ptrdiff_t{row} * picture.linesize[plane];
  };
  const auto target = [&](int plane, int row) {
    return planes_[plane].data() + std::ptrdiff_t{row} * strides[plane];
  };
  for (int y = 0; y < picture.height; ++y) {
    const int row = y >> down;
    if (y == row << down) {
      conversion_->setChroma(hasChroma ? source(1, row) : nullptr,
                             hasChroma ? source(2, row) : nullptr, across, picture.width);
      if (hasChroma) {
        conversion_->chroma(source(1, row), source(2, row), chromaWidth, target(1, row),
                            target(2, row));
        pad(target(1, row), chromaWidth, strides[1]);
        pad(target(2, row), chromaWidth, strides[2]);
      }
    }
    conversion_->luma(source(0, y), picture.width, target(0, y));
    pad(target(0, y), picture.width, strides[0]);
  }
  // A last row of blocks may be one of luma short.
  for (int y = picture.height; y < tjPlaneHeight(0, picture.height, sampling); ++y) {
    std::copy_n(target(0, y - 1), strides[0], target(0, y));
  }
}

void PictureEncoder::compress(int width, int height, int sampling, std::string& jpeg) {
  bytes_.resize(tjBufSize(width, height, sampling));
  const unsigned char* const planes[] = {planes_[0].data(), planes_[1].data(), planes_[2].data()};
  unsigned char* out = bytes_.data();
  unsigned long size = bytes_.size();
  if (tjCompressFromYUVPlanes(compressor_.get(), const_cast<const unsigned char**>(planes), width,
                              nullptr, height, sampling, &out, &size, quality_,
                              TJFLAG_NOREALLOC | TJFLAG_ACCURATEDCT) != 0) {
    throw Failure(file_,
                  std::string("a picture cannot be encoded: ") + tjGetErrorStr2(compressor_.get()),
                  VELMAR_ERROR_CODE_DECOMPRESS_ERROR_E);
  }
  jpeg.assign(reinterpret_cast<const char*>(out), size);
}

}  // namespace velmar::toolkit
