#include "toolkit/base/ContentHash.h"

#include <gcrypt.h>
#include <xxhash.h>

#include <array>

#include "base/HexText.h"

namespace velmar::toolkit {

namespace {

std::string sha256(std::string_view bytes) {
  // It wants to be asked for its version before anything else.
  static const bool isReady = gcry_check_version(nullptr) != nullptr &&
                              gcry_control(GCRYCTL_INITIALIZATION_FINISHED, 0) == 0;
  static_cast<void>(isReady);
  std::array<unsigned char, 32> digest{};
  gcry_md_hash_buffer(GCRY_MD_SHA256, digest.data(), bytes.data(), bytes.size());
  return detail::bytesToHex(digest.data(), digest.size());
}

std::string xxh3(std::string_view bytes) {
  XXH128_canonical_t canonical;
  XXH128_canonicalFromHash(&canonical, XXH3_128bits(bytes.data(), bytes.size()));
  return detail::bytesToHex(canonical.digest, sizeof canonical.digest);
}

}  // namespace

std::string contentHash(HashKind kind, std::string_view bytes) {
  return kind == HashKind::Sha256 ? sha256(bytes) : xxh3(bytes);
}

}  // namespace velmar::toolkit
