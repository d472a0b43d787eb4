/// \file
/// The vehicle bus (CAN) signals of a frame, in RTV version 04.
///
/// A block has two forms. The packed one is that of the file. The aligned one has a slot of its own
/// for every signal, and a pointer to the slot that is null if the signal is absent. New programs
/// need only the packed form: TaggedVideoParser::getCANRecord() and RecordFileCreater::addFrame().
/// A block is used by one thread at a time.
#ifndef VELMAR_VIDEO_RTV_CAN_DATA_H
#define VELMAR_VIDEO_RTV_CAN_DATA_H

#include <array>
#include <string>

#include "velmar_video/export.h"

/// The packed block: 109 bytes without padding. A signal is absent if all its bits are set (NaN for
/// a float); can_data_length is never absent. The spelling of the names is part of the format.
struct __attribute__((packed)) can_data_io {
  ///@{
  /// As in the file.
  unsigned short can_data_length;
  float acceleraion_x;
  float acceleraion_y;
  float acceleraion_z;
  float pitch_rate;
  float roll_rate;
  float yaw_rate;
  float longitudinal_gradient_roadway;
  float traverse_gradient_roadway;
  unsigned short travelled_distance;
  unsigned char is_reverse_gear;
  float slip_angle;
  float front_wheel_steering_angle;
  float rear_wheel_steering_angle;
  float steering_wheel_steering_angle;
  float vehicle_speed;
  unsigned int wheel_tick_left_front;
  unsigned int wheel_tick_right_front;
  unsigned int wheel_tick_left_rear;
  unsigned int wheel_tick_right_rear;
  float wheel_speed_left_front;
  float wheel_speed_right_front;
  float wheel_speed_left_rear;
  float wheel_speed_right_rear;
  float wheel_rotation_left_front;
  float wheel_rotation_right_front;
  float wheel_rotation_left_rear;
  float wheel_rotation_right_rear;
  unsigned char abs_active;
  unsigned char brake_active;
  unsigned char esp_active;
  unsigned char traction_control_active;
  ///@}
};
static_assert(sizeof(can_data_io) == 109);

/// The aligned block: 32 slots of 4 bytes, then 32 pointers to them, in the packed one's order.
struct can_data {
  ///@{
  /// The value of the packed block.
  alignas(4) unsigned short can_data_length;
  alignas(4) float acceleraion_x;
  alignas(4) float acceleraion_y;
  alignas(4) float acceleraion_z;
  alignas(4) float pitch_rate;
  alignas(4) float roll_rate;
  alignas(4) float yaw_rate;
  alignas(4) float longitudinal_gradient_roadway;
  alignas(4) float traverse_gradient_roadway;
  alignas(4) unsigned short travelled_distance;
  alignas(4) unsigned char is_reverse_gear;
  alignas(4) float slip_angle;
  alignas(4) float front_wheel_steering_angle;
  alignas(4) float rear_wheel_steering_angle;
  alignas(4) float steering_wheel_steering_angle;
  alignas(4) float vehicle_speed;
  alignas(4) unsigned int wheel_tick_left_front;
  alignas(4) unsigned int wheel_tick_right_front;
  alignas(4) unsigned int wheel_tick_left_rear;
  alignas(4) unsigned int wheel_tick_right_rear;
  alignas(4) float wheel_speed_left_front;
  alignas(4) float wheel_speed_right_front;
  alignas(4) float wheel_speed_left_rear;
  alignas(4) float wheel_speed_right_rear;
  alignas(4) float wheel_rotation_left_front;
  alignas(4) float wheel_rotation_right_front;
  alignas(4) float wheel_rotation_left_rear;
  alignas(4) float wheel_rotation_right_rear;
  alignas(4) unsigned char abs_active;
  alignas(4) unsigned char brake_active;
  alignas(4) unsigned char esp_active;
  alignas(4) unsigned char traction_control_active;
  ///@}

  ///@{
  /// Points to the slot of that name; null if the signal is absent.
  unsigned short* pCan_data_length;
  float* pAcceleraion_x;
  float* pAcceleraion_y;
  float* pAcceleraion_z;
  float* pPitch_rate;
  float* pRoll_rate;
  float* pYaw_rate;
  float* pLongitudinal_gradient_roadway;
  float* pTraverse_gradient_roadway;
  unsigned short* pTravelled_distance;
  unsigned char* pIs_reverse_gear;
  float* pSlip_angle;
  float* pFront_wheel_steering_angle;
  float* pRear_wheel_steering_angle;
  float* pSteering_wheel_steering_angle;
  float* pVehicle_speed;
  unsigned int* pWheel_tick_left_front;
  unsigned int* pWheel_tick_right_front;
  unsigned int* pWheel_tick_left_rear;
  unsigned int* pWheel_tick_right_rear;
  float* pWheel_speed_left_front;
  float* pWheel_speed_right_front;
  float* pWheel_speed_left_rear;
  float* pWheel_speed_right_rear;
  float* pWheel_rotation_left_front;
  float* pWheel_rotation_right_front;
  float* pWheel_rotation_left_rear;
  float* pWheel_rotation_right_rear;
  unsigned char* pAbs_active;
  unsigned char* pBrake_active;
  unsigned char* pEsp_active;
  unsigned char* pTraction_control_active;
  ///@}
};
static_assert(sizeof(can_data) == 384);

/// Bytes of a block in either form.
enum CAN_SIZE : unsigned int {
  CAN_SIZE_NONE = 0,  ///< no block
  CAN_SIZE_IO = sizeof(can_data_io),
  CAN_SIZE_ALIGNED = sizeof(can_data),
};

/// Makes every signal absent and sets can_data_length to 107.
VELMAR_VIDEO_API void can_data_io_purge(can_data_io* block);

/// Reads the first 109 bytes of the buffer as a packed block and writes its values to the 32 slots,
/// in place. A block that is aligned already is read as packed, too, and gives other values.
VELMAR_VIDEO_API void can_data_buf_align(can_data* block);

/// Calls can_data_buf_align() and points every pointer at its slot. With `check`, pointers of
/// absent signals become null.
VELMAR_VIDEO_API void can_data_init_ptr(can_data* block, bool check);

/// Copies the first 109 bytes of `src` to `dst` and calls can_data_init_ptr(&dst, true). `src` has
/// to hold a packed block; an aligned one gives other values, which is kept for existing programs.
VELMAR_VIDEO_API void can_data_assign(can_data& dst, can_data& src);

/// "name: value, " for each of the 32 fields, integers in hexadecimal. The fields are read at their
/// packed offsets whatever the form. CAN_SIZE_ALIGNED adds the 32 pointers: those of one-byte
/// signals as the characters from their slot up to a zero byte, the others as addresses. When
/// memory runs out, the text is empty, and the log has an error line.
/// \param block  `size` bytes
VELMAR_VIDEO_API std::string can_data_toString(can_data_io* block, CAN_SIZE size);

/// Type of a field of the packed block.
enum class CanFieldType { Unsigned8, Unsigned16, Unsigned32, Float };

/// A field of the packed block, for programs that look the signals up by name.
struct CanField {
  const char* name;         ///< the member of can_data_io
  const char* pointerName;  ///< its pointer in the aligned block
  CanFieldType type;        ///< the value's type
  unsigned int offset;      ///< in can_data_io, bytes

  /// The value's size in bytes.
  unsigned int size() const {
    switch (type) {
      case CanFieldType::Unsigned8:
        return 1;
      case CanFieldType::Unsigned16:
        return 2;
      default:
        return 4;
    }
  }
};

/// Whether the signal is absent from the packed block; false for can_data_length.
VELMAR_VIDEO_API bool canFieldIsAbsent(const can_data_io& block, const CanField& field);

/// The 32 fields in order; can_data_length is the first.
VELMAR_VIDEO_API const std::array<CanField, 32>& canFields();

#endif
