/// Identifiers as hexadecimal text.
#ifndef VELMAR_BASE_HEX_TEXT_H
#define VELMAR_BASE_HEX_TEXT_H

#include <string>

namespace velmar::detail {

/// Two lower-case digits per byte, in order, without a separator.
std::string bytesToHex(const unsigned char* bytes, unsigned int length);

/// Fills `length` bytes at `bytes`. Each comes from the next two characters as strtol() reads them
/// in base 16, so text that is no number gives 0. Bytes behind the end of the text are 0.
void hexToBytes(const std::string& text, unsigned char* bytes, unsigned int length);

}  // namespace velmar::detail

#endif
