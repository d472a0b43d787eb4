#include "velmar_video/rtv/CanData.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <locale>
#include <sstream>
#include <utility>

#include "base/Bytes.h"
#include "base/Guarded.h"
#include "container/rtv/RtvLayout.h"

using namespace velmar::detail;

namespace {

constexpr std::size_t kSlotSize = 4;
constexpr std::size_t kSlotsSize = 32 * kSlotSize;

constexpr std::array<CanField, 32> kFields = {{
    {"can_data_length", "pCan_data_length", CanFieldType::Unsigned16,
     offsetof(can_data_io, can_data_length)},
    {"acceleraion_x", "pAcceleraion_x", CanFieldType::Float, offsetof(can_data_io, acceleraion_x)},
    {"acceleraion_y", "pAcceleraion_y", CanFieldType::Float, offsetof(can_data_io, acceleraion_y)},
    {"acceleraion_z", "pAcceleraion_z", CanFieldType::Float, offsetof(can_data_io, acceleraion_z)},
    {"pitch_rate", "pPitch_rate", CanFieldType::Float, offsetof(can_data_io, pitch_rate)},
    {"roll_rate", "pRoll_rate", CanFieldType::Float, offsetof(can_data_io, roll_rate)},
    {"yaw_rate", "pYaw_rate", CanFieldType::Float, offsetof(can_data_io, yaw_rate)},
    {"longitudinal_gradient_roadway", "pLongitudinal_gradient_roadway", CanFieldType::Float,
     offsetof(can_data_io, longitudinal_gradient_roadway)},
    {"traverse_gradient_roadway", "pTraverse_gradient_roadway", CanFieldType::Float,
     offsetof(can_data_io, traverse_gradient_roadway)},
    {"travelled_distance", "pTravelled_distance", CanFieldType::Unsigned16,
     offsetof(can_data_io, travelled_distance)},
    {"is_reverse_gear", "pIs_reverse_gear", CanFieldType::Unsigned8,
     offsetof(can_data_io, is_reverse_gear)},
    {"slip_angle", "pSlip_angle", CanFieldType::Float, offsetof(can_data_io, slip_angle)},
    {"front_wheel_steering_angle", "pFront_wheel_steering_angle", CanFieldType::Float,
     offsetof(can_data_io, front_wheel_steering_angle)},
    {"rear_wheel_steering_angle", "pRear_wheel_steering_angle", CanFieldType::Float,
     offsetof(can_data_io, rear_wheel_steering_angle)},
    {"steering_wheel_steering_angle", "pSteering_wheel_steering_angle", CanFieldType::Float,
     offsetof(can_data_io, steering_wheel_steering_angle)},
    {"vehicle_speed", "pVehicle_speed", CanFieldType::Float, offsetof(can_data_io, vehicle_speed)},
    {"wheel_tick_left_front", "pWheel_tick_left_front", CanFieldType::Unsigned32,
     offsetof(can_data_io, wheel_tick_left_front)},
    {"wheel_tick_right_front", "pWheel_tick_right_front", CanFieldType::Unsigned32,
     offsetof(can_data_io, wheel_tick_right_front)},
    {"wheel_tick_left_rear", "pWheel_tick_left_rear", CanFieldType::Unsigned32,
     offsetof(can_data_io, wheel_tick_left_rear)},
    {"wheel_tick_right_rear", "pWheel_tick_right_rear", CanFieldType::Unsigned32,
     offsetof(can_data_io, wheel_tick_right_rear)},
    {"wheel_speed_left_front", "pWheel_speed_left_front", CanFieldType::Float,
     offsetof(can_data_io, wheel_speed_left_front)},
    {"wheel_speed_right_front", "pWheel_speed_right_front", CanFieldType::Float,
     offsetof(can_data_io, wheel_speed_right_front)},
    {"wheel_speed_left_rear", "pWheel_speed_left_rear", CanFieldType::Float,
     offsetof(can_data_io, wheel_speed_left_rear)},
    {"wheel_speed_right_rear", "pWheel_speed_right_rear", CanFieldType::Float,
     offsetof(can_data_io, wheel_speed_right_rear)},
    {"wheel_rotation_left_front", "pWheel_rotation_left_front", CanFieldType::Float,
     offsetof(can_data_io, wheel_rotation_left_front)},
    {"wheel_rotation_right_front", "pWheel_rotation_right_front", CanFieldType::Float,
     offsetof(can_data_io, wheel_rotation_right_front)},
    {"wheel_rotation_left_rear", "pWheel_rotation_left_rear", CanFieldType::Float,
     offsetof(can_data_io, wheel_rotation_left_rear)},
    {"wheel_rotation_right_rear", "pWheel_rotation_right_rear", CanFieldType::Float,
     offsetof(can_data_io, wheel_rotation_right_rear)},
    {"abs_active", "pAbs_active", CanFieldType::Unsigned8, offsetof(can_data_io, abs_active)},
    {"brake_active", "pBrake_active", CanFieldType::Unsigned8, offsetof(can_data_io, brake_active)},
    {"esp_active", "pEsp_active", CanFieldType::Unsigned8, offsetof(can_data_io, esp_active)},
    {"traction_control_active", "pTraction_control_active", CanFieldType::Unsigned8,
     offsetof(can_data_io, traction_control_active)},
}};
static_assert(offsetof(can_data, pCan_data_length) == kSlotsSize);

constexpr auto kEveryField = std::make_index_sequence<kFields.size()>();

void* pointerOf(const can_data_io* alignedBlock, std::size_t field) {
  void* value = nullptr;
  std::memcpy(
      &value,
      reinterpret_cast<const unsigned char*>(alignedBlock) + kSlotsSize + sizeof value * field,
      sizeof value);
  return value;
}

bool isAbsent(const CanField& field, const unsigned char* value) {
  if (field.offset == 0) return false;  // the length is no signal
  switch (field.type) {
    case CanFieldType::Float:
      return std::isnan(get<float>(value));
    case CanFieldType::Unsigned8:
      return *value == UINT8_MAX;
    case CanFieldType::Unsigned16:
      return get<std::uint16_t>(value) == UINT16_MAX;
    default:
      return get<std::uint32_t>(value) == UINT32_MAX;
  }
}

// A full tag table aligns its blocks 131,070 times. With the fields as compile-time constants, the
// two functions have no loop and no switch left.
template <std::size_t... kField>
void placeInSlots(const can_data_io& packed, unsigned char* slots,
                  std::index_sequence<kField...> /*fields*/) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(&packed);
  (std::memcpy(slots + kSlotSize * kField, bytes + kFields[kField].offset, kFields[kField].size()),
   ...);
}

template <std::size_t... kField>
void setPointers(unsigned char* slots, bool check, std::index_sequence<kField...> /*fields*/) {
  const auto pointerTo = [check](const CanField& field, unsigned char* slot) {
    return check && isAbsent(field, slot) ? nullptr : slot;
  };
  const std::array<unsigned char*, sizeof...(kField)> pointers = {
      pointerTo(kFields[kField], slots + kSlotSize * kField)...};
  std::memcpy(slots + kSlotsSize, pointers.data(), sizeof pointers);
}

void print(std::ostream& text, const CanField& field, const unsigned char* value) {
  switch (field.type) {
    case CanFieldType::Float:
      text << get<float>(value);
      break;
    case CanFieldType::Unsigned8:
      text << static_cast<unsigned int>(*value);
      break;
    case CanFieldType::Unsigned16:
      text << get<std::uint16_t>(value);
      break;
    default:
      text << get<std::uint32_t>(value);
  }
}

void printPointer(std::ostream& text, const can_data_io* block, std::size_t field) {
  const void* pointer = pointerOf(block, field);
  if (kFields[field].type != CanFieldType::Unsigned8) {
    text << pointer;
  } else if (pointer != nullptr) {
    const auto* slot = reinterpret_cast<const char*>(block) + kSlotSize * field;
    text << std::string(slot, ::strnlen(slot, sizeof(can_data) - kSlotSize * field));
  }
}

std::string textOf(const can_data_io* block, CAN_SIZE size) {
  std::ostringstream text;
  text.exceptions(std::ios::badbit);  // otherwise lack of memory would only cut the text short
  text.imbue(std::locale::classic());
  text << std::hex;
  for (const CanField& field : kFields) {
    text << field.name << ": ";
    print(text, field, reinterpret_cast<const unsigned char*>(block) + field.offset);
    text << ", ";
  }
  if (size != CAN_SIZE_ALIGNED) return text.str();
  for (std::size_t i = 0; i < kFields.size(); ++i) {
    text << kFields[i].pointerName << ": ";
    printPointer(text, block, i);
    text << ", ";
  }
  return text.str();
}

}  // namespace

void can_data_io_purge(can_data_io* block) {
  std::memset(block, 0xFF, sizeof *block);
  block->can_data_length = kCanLength;
}

void can_data_buf_align(can_data* block) {
  can_data_io packed;
  std::memcpy(&packed, block, sizeof packed);
  auto* slots = reinterpret_cast<unsigned char*>(block);
  // Zeroes the slots behind the packed block. In the slots inside it, bytes that a field does not
  // fill stay as they were.
  std::memset(slots + sizeof packed, 0, kSlotsSize - sizeof packed);
  placeInSlots(packed, slots, kEveryField);
}

void can_data_init_ptr(can_data* block, bool check) {
  can_data_buf_align(block);
  setPointers(reinterpret_cast<unsigned char*>(block), check, kEveryField);
}

void can_data_assign(can_data& dst, can_data& src) {
  std::memmove(&dst, &src, sizeof(can_data_io));
  can_data_init_ptr(&dst, true);
}

std::string can_data_toString(can_data_io* block, CAN_SIZE size) {
  return guarded("RecordFile", "can_data_toString", std::string(),
                 [&] { return textOf(block, size); });
}

bool canFieldIsAbsent(const can_data_io& block, const CanField& field) {
  return isAbsent(field, reinterpret_cast<const unsigned char*>(&block) + field.offset);
}

const std::array<CanField, 32>& canFields() { return kFields; }
