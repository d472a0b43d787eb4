#include "container/rtv/CanByteOrder.h"

#include <algorithm>

namespace velmar::detail {

void reverseCanFields(can_data_io& block, bool unsigned16, bool unsigned32, bool floats) {
  auto* bytes = reinterpret_cast<unsigned char*>(&block);
  for (const CanField& field : canFields()) {
    const bool reverse = (field.type == CanFieldType::Unsigned16 && unsigned16) ||
                         (field.type == CanFieldType::Unsigned32 && unsigned32) ||
                         (field.type == CanFieldType::Float && floats);
    if (reverse) std::reverse(bytes + field.offset, bytes + field.offset + field.size());
  }
}

}  // namespace velmar::detail
