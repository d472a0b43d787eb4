#ifndef VELMAR_TOOLKIT_CONTENT_HASH_H
#define VELMAR_TOOLKIT_CONTENT_HASH_H

#include <string>
#include <string_view>

namespace velmar::toolkit {

enum class HashKind {
  Xxh3,    ///< XXH3 of 128 bits: quick, for copies and differences
  Sha256,  ///< nobody can make other bytes with the same hash
};

/// As small hexadecimal digits, the first byte first.
std::string contentHash(HashKind kind, std::string_view bytes);

}  // namespace velmar::toolkit

#endif
