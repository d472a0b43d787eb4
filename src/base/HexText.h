/// Identifiers as hexadecimal text.
#ifndef VELMAR_BASE_HEX_TEXT_H
#define VELMAR_BASE_HEX_TEXT_H

#include <string>

/// Two lower-case digits a byte, in order, no separator.
std::string bytesToHex(const unsigned char* bytes, unsigned int length);

/// Fills `length` bytes at `bytes`: each from the next two characters as strtol() reads them in
/// base 16 (what is no number gives 0), zero behind the end of the text.
void hexToBytes(const std::string& text, unsigned char* bytes, unsigned int length);

#endif
