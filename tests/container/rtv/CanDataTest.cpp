#include "velmar_video/rtv/CanData.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

namespace {

// A block as in a file, from its bytes.
can_data_io packed(const std::string& bytes) {
  can_data_io block;
  std::memcpy(&block, bytes.data(), sizeof block);
  return block;
}

// 107, then byte i holds i: every field differs and none is absent.
std::string counting() {
  std::string bytes(109, '\0');
  for (int i = 0; i < 109; ++i) bytes[i] = static_cast<char>(i);
  bytes[0] = 107;
  bytes[1] = 0;
  return bytes;
}

can_data aligned(const std::string& bytes, bool check) {
  can_data block;
  std::memset(&block, 0xEE, sizeof block);
  std::memcpy(&block, bytes.data(), bytes.size());
  can_data_init_ptr(&block, check);
  return block;
}

TEST(CanData, FieldsLieWhereTheFormatHasThem) {
  const can_data_io block = packed(counting());
  EXPECT_EQ(block.can_data_length, 107);
  EXPECT_EQ(block.travelled_distance, 0x2322);
  EXPECT_EQ(block.is_reverse_gear, 36);
  EXPECT_EQ(block.wheel_tick_right_rear, 0x48474645U);
  EXPECT_EQ(block.traction_control_active, 108);
  float slip = 0;
  std::memcpy(&slip, counting().data() + 37, 4);
  EXPECT_EQ(block.slip_angle, slip);
  unsigned next = 0;
  for (const CanField& field : canFields()) {
    EXPECT_EQ(field.offset, next) << field.name;
    next += field.size();
  }
  EXPECT_EQ(next, 109U);
}

TEST(CanData, AlignsEveryFieldIntoItsSlot) {
  const std::string bytes = counting();
  const can_data block = aligned(bytes, true);
  const auto* slot = reinterpret_cast<const char*>(&block);
  for (const CanField& field : canFields()) {
    EXPECT_EQ(std::string(slot, field.size()), bytes.substr(field.offset, field.size()));
    slot += 4;
  }
  EXPECT_EQ(block.esp_active, 107);
  EXPECT_EQ(*block.pAbs_active, 105);
  EXPECT_EQ(block.pCan_data_length, &block.can_data_length);
  EXPECT_EQ(block.pTraction_control_active, &block.traction_control_active);
  can_data source;
  std::memcpy(&source, bytes.data(), bytes.size());
  can_data copy;
  can_data_assign(copy, source);
  EXPECT_EQ(copy.is_reverse_gear, 36);
  EXPECT_EQ(copy.pIs_reverse_gear, &copy.is_reverse_gear);
}

TEST(CanData, NullsPointersOfAbsentSignalsOnlyWhenAsked) {
  can_data_io purged;
  can_data_io_purge(&purged);
  EXPECT_EQ(purged.can_data_length, 107);
  EXPECT_TRUE(std::isnan(purged.vehicle_speed));
  const std::string bytes(reinterpret_cast<const char*>(&purged), sizeof purged);
  for (const bool check : {true, false}) {
    const can_data block = aligned(bytes, check);
    EXPECT_NE(block.pCan_data_length, nullptr);
    EXPECT_EQ(block.pSlip_angle == nullptr, check);
    EXPECT_EQ(block.pTravelled_distance == nullptr, check);
    EXPECT_EQ(block.pWheel_tick_left_front == nullptr, check);
    EXPECT_EQ(block.pEsp_active == nullptr, check);
  }
  for (const CanField& field : canFields()) {
    EXPECT_EQ(canFieldIsAbsent(purged, field), field.offset > 0) << field.name;
    EXPECT_FALSE(canFieldIsAbsent(packed(counting()), field)) << field.name;
  }
}

TEST(CanData, TextNamesEveryFieldAndThePointersOfAnAlignedBlock) {
  can_data_io block;
  can_data_io_purge(&block);
  block.vehicle_speed = 13.25F;
  block.wheel_tick_left_rear = 0xABC;
  block.traction_control_active = 'T';
  std::string text = can_data_toString(&block, CAN_SIZE_IO);
  EXPECT_EQ(text.substr(0, 42), "can_data_length: 6b, acceleraion_x: -nan, ");
  EXPECT_EQ(text.substr(text.size() - 29), "traction_control_active: 54, ");
  for (const char* part : {"travelled_distance: ffff, is_reverse_gear: ff, slip_angle: -nan, ",
                           "vehicle_speed: 13.25, ", "wheel_tick_left_rear: abc, "}) {
    EXPECT_NE(text.find(part), std::string::npos) << part;
  }
  can_data alignedBlock = aligned(std::string(reinterpret_cast<char*>(&block), 109), true);
  text = can_data_toString(reinterpret_cast<can_data_io*>(&alignedBlock), CAN_SIZE_ALIGNED);
  EXPECT_NE(text.find(", pAcceleraion_x: 0, "), std::string::npos);
  EXPECT_NE(text.find(", pAbs_active: , pBrake_active: , "), std::string::npos);
  // The slot's other bytes are zero.
  EXPECT_EQ(text.substr(text.size() - 29), "pTraction_control_active: T, ");
}

}  // namespace
