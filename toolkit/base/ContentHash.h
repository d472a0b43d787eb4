#ifndef VELMAR_TOOLKIT_CONTENT_HASH_H
#define VELMAR_TOOLKIT_CONTENT_HASH_H

#include <memory>
#include <string>
#include <string_view>

struct XXH3_state_s;

namespace velmar::toolkit {

enum class HashKind {
  Xxh3,    ///< XXH3 of 128 bits: quick, for copies and differences
  Sha256,  ///< nobody can make other bytes with the same hash
};

/// As small hexadecimal digits, the first byte first.
std::string contentHash(HashKind kind, std::string_view bytes);

/// XXH3 of bytes that come in pieces.
class Xxh3Stream {
 public:
  Xxh3Stream();
  void add(std::string_view bytes);
  std::string hash() const;

 private:
  struct Delete {
    void operator()(XXH3_state_s* state) const;
  };
  std::unique_ptr<XXH3_state_s, Delete> state_;
};

}  // namespace velmar::toolkit

#endif
