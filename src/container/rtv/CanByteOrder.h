#ifndef VELMAR_RTV_CAN_BYTE_ORDER_H
#define VELMAR_RTV_CAN_BYTE_ORDER_H

#include "velmar_video/rtv/CanData.h"

namespace velmar::detail {

/// Reverses the bytes of the fields of the given types, each field by itself.
void reverseCanFields(can_data_io& block, bool unsigned16, bool unsigned32, bool floats);

}  // namespace velmar::detail

#endif
