#include "toolkit/text/PrintableText.h"

#include <cstddef>

namespace velmar::toolkit {

namespace {

bool isContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

// How many bytes the UTF-8 character at the front has by its first byte; 0 if none begins so.
std::size_t lengthByFirst(unsigned char first) {
  if (first < 0x80) return 1;
  if (first < 0xC2 || first > 0xF4) return 0;
  return first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
}

bool isShown(char32_t character) {
  const auto isIn = [character](char32_t first, char32_t last) {
    return character >= first && character <= last;
  };
  return character >= ' ' && !isIn(0x7F, 0x9F) && !isIn(0x2028, 0x202E) && !isIn(0x2066, 0x2069);
}

struct Character {
  std::size_t length = 1;       // bytes
  char32_t character = 0xFFFD;  // what stands for a byte that is no UTF-8
  bool isShown = false;
};

// At the front; a byte that is no UTF-8 is one that is not shown.
Character firstOf(std::string_view text) {
  constexpr unsigned char kFirstBits[] = {0, 0x7F, 0x1F, 0x0F, 0x07};
  constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
  const auto first = static_cast<unsigned char>(text.front());
  const std::size_t length = lengthByFirst(first);
  if (length == 0 || length > text.size()) return {};
  char32_t character = first & kFirstBits[length];
  for (const char byte : text.substr(1, length - 1)) {
    if (!isContinuation(byte)) return {};
    character = character << 6 | (static_cast<unsigned char>(byte) & 0x3F);
  }
  const bool isSurrogate = character >= 0xD800 && character <= 0xDFFF;
  if (character < kLeast[length] || character > 0x10FFFF || isSurrogate) return {};
  return {length, character, isShown(character)};
}

std::string hexDigits(unsigned int value, std::size_t digits) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (; digits > 0; --digits) text += kDigits[value >> 4 * (digits - 1) & 0xF];
  return text;
}

std::string escaped(std::string_view bytes) {
  std::string text;
  for (const char byte : bytes) text += "\\x" + hexDigits(static_cast<unsigned char>(byte), 2);
  return text;
}

// With what `escape` makes of each character that is not shown.
template <typename Escape>
std::string shown(std::string_view text, Escape escape) {
  std::string all;
  all.reserve(text.size());
  while (!text.empty()) {
    const Character first = firstOf(text);
    const std::string_view bytes = text.substr(0, first.length);
    all += first.isShown ? std::string(bytes) : escape(bytes, first.character);
    text.remove_prefix(first.length);
  }
  return all;
}

}  // namespace

std::string printable(std::string_view text) {
  return shown(text, [](std::string_view bytes, char32_t) { return escaped(bytes); });
}

std::string printableJson(std::string_view text) {
  // All characters that are not shown have four digits.
  return shown(
      text, [](std::string_view, char32_t character) { return "\\u" + hexDigits(character, 4); });
}

}  // namespace velmar::toolkit
