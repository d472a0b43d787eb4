#include "velmar_video/rtv/RecordFile.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

#include "base/Guarded.h"
#include "container/rtv/CanByteOrder.h"
#include "velmar_logger/velmar_logger.h"

using namespace velmar::detail;

namespace {

constexpr char kTag[] = "RecordFile";

// Numbers in the log lines of the two places where memory may run out; kept for existing programs.
constexpr int kAssignPlace = 135;
constexpr int kFillPlace = 246;

template <typename T>
T reversed(T value) {
  unsigned char bytes[sizeof value];
  std::memcpy(bytes, &value, sizeof value);
  std::reverse(bytes, bytes + sizeof value);
  std::memcpy(&value, bytes, sizeof value);
  return value;
}

}  // namespace

bool isCPUBigEndian() { return __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__; }

const char RecordFile::MAGIC_CODE_V02[12] = "velmar.rtv";
const unsigned char RecordFile::VERSION_V02[2] = {0, 2};
const char RecordFile::MAGIC_CODE_V03[11] = "velmar.rtv";
const unsigned char RecordFile::VERSION_V03[2] = {0, 3};
const char RecordFile::MAGIC_CODE[11] = "velmar.rtv";
const unsigned char RecordFile::VERSION[2] = {0, 4};

RecordFile::RecordFile() = default;
RecordFile::RecordFile(const std::string& fileName)
    : fileName_(guardedCopy(kTag, "fileName", fileName)) {}
RecordFile::~RecordFile() = default;

std::string RecordFile::getFileName() const { return guardedCopy(kTag, "getFileName", fileName_); }

void RecordFile::clear() {
  const int altitude = header_.alt;
  header_ = header_t();
  header_.alt = altitude;
  version_ = RTV_VER_MAX;
}

const RecordFile::header_t& RecordFile::headerOf(version_e version) const {
  switch (version) {
    case RTV_VER_02:
      return headerVer02_;
    case RTV_VER_03:
      return headerVer03_;
    default:
      return header_;
  }
}

RecordFile::header_t& RecordFile::headerOf(version_e version) {
  return const_cast<header_t&>(std::as_const(*this).headerOf(version));
}

template <typename T>
bool RecordFile::mustSwap() const {
  static const bool cpuIsBigEndian = isCPUBigEndian();
  static const bool fileIsBigEndian = (header_.flags & 1) != 0;
  return cpuIsBigEndian != fileIsBigEndian;
}

template <typename T>
T RecordFile::swauto(T value) const {
  return mustSwap<T>() ? reversed(value) : value;
}

template std::uint64_t RecordFile::swauto(std::uint64_t) const;
template std::int32_t RecordFile::swauto(std::int32_t) const;
template std::uint32_t RecordFile::swauto(std::uint32_t) const;
template std::uint16_t RecordFile::swauto(std::uint16_t) const;

bool RecordFile::mustSwapTag() const {
  // Called for every type, since the first call decides for each type.
  const bool swap64 = mustSwap<std::uint64_t>();
  const bool swapSigned32 = mustSwap<std::int32_t>();
  const bool swap32 = mustSwap<std::uint32_t>();
  const bool swap16 = mustSwap<std::uint16_t>();
  return swap64 || swapSigned32 || swap32 || swap16;
}

void RecordFile::swauto(frametag03Ver_t& tag) const {
  tag.time_flag = swauto<std::int32_t>(tag.time_flag);
  tag.data_offset = swauto<std::uint64_t>(tag.data_offset);
  tag.data_length = swauto<std::uint32_t>(tag.data_length);
  tag.x = swauto<std::int32_t>(tag.x);
  tag.y = swauto<std::int32_t>(tag.y);
  tag.z = swauto<std::int32_t>(tag.z);
  tag.relative_distance = swauto<std::uint32_t>(tag.relative_distance);
  tag.speed = swauto<std::uint16_t>(tag.speed);
  tag.direction = swauto<std::uint16_t>(tag.direction);
}

RecordFile::frametag_t::frametag_t(RecordFile* owner) : owner_(owner) {}

RecordFile::frametag_t::frametag_t(const frametag_t& other) : owner_(nullptr) { *this = other; }

RecordFile::frametag_t::frametag_t(frametag_t&& other) noexcept : owner_(nullptr) {
  *this = std::move(other);
}

RecordFile::frametag_t::~frametag_t() = default;

RecordFile::frametag_t& RecordFile::frametag_t::operator=(const frametag_t& other) {
  if (this == &other) return *this;
  fields_ = other.fields_;
  if (allocate(other.can_size_, "operator=", kAssignPlace)) {
    std::memcpy(pCan_.get(), other.pCan_.get(), sizeof(can_data_io));
    if (can_size_ == CAN_SIZE_ALIGNED) can_data_init_ptr(pCan_.get(), true);
  }
  owner_ = other.owner_;
  return *this;
}

RecordFile::frametag_t& RecordFile::frametag_t::operator=(frametag_t&& other) noexcept {
  if (this == &other) return *this;
  fields_ = other.fields_;
  can_size_ = other.can_size_;
  pCan_ = std::move(other.pCan_);
  owner_ = other.owner_;
  other.purge();
  return *this;
}

bool RecordFile::frametag_t::fill(const void* raw, CAN_SIZE size) {
  purge();
  if (owner_ == nullptr || (size != CAN_SIZE_IO && size != CAN_SIZE_ALIGNED)) return false;
  if (!allocate(size, "fill", kFillPlace)) return false;

  std::memcpy(&fields_, raw, sizeof fields_);
  if (owner_->mustSwapTag()) owner_->swauto(fields_);
  auto* packed = reinterpret_cast<can_data_io*>(pCan_.get());
  std::memcpy(packed, static_cast<const unsigned char*>(raw) + sizeof fields_, sizeof *packed);
  can_data_io_swauto(*packed);
  if (size == CAN_SIZE_ALIGNED) can_data_init_ptr(pCan_.get(), true);
  return true;
}

void RecordFile::frametag_t::purge() {
  fields_ = {};
  can_size_ = CAN_SIZE_NONE;
  pCan_.reset();
}

bool RecordFile::frametag_t::allocate(CAN_SIZE size, const char* place, int number) {
  pCan_.reset(size == CAN_SIZE_NONE ? nullptr : static_cast<can_data*>(std::malloc(size)));
  can_size_ = pCan_ ? size : CAN_SIZE_NONE;
  if (can_size_ != size) velmar_logger::e(kTag, "malloc fail, %s, %d", place, number);
  return pCan_ != nullptr;
}

void RecordFile::frametag_t::can_data_io_swauto(can_data_io& block) const {
  if (owner_ == nullptr) return;
  // Called for every type, since the first call decides for each type.
  const bool swap16 = owner_->mustSwap<std::uint16_t>();
  const bool swap32 = owner_->mustSwap<std::uint32_t>();
  const bool swapFloat = owner_->mustSwap<float>();
  if (swap16 || swap32 || swapFloat) reverseCanFields(block, swap16, swap32, swapFloat);
}
