#include "toolkit/base/ContentHash.h"

#include <gcrypt.h>
#include <xxhash.h>

#include <array>
#include <new>

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

std::string hexText(XXH128_hash_t hash) {
  XXH128_canonical_t canonical;
  XXH128_canonicalFromHash(&canonical, hash);
  return detail::bytesToHex(canonical.digest, sizeof canonical.digest);
}

}  // namespace

std::string contentHash(HashKind kind, std::string_view bytes) {
  return kind == HashKind::Sha256 ? sha256(bytes)
                                  : hexText(XXH3_128bits(bytes.data(), bytes.size()));
}

void Xxh3Stream::Delete::operator()(XXH3_state_s* state) const { XXH3_freeState(state); }

Xxh3Stream::Xxh3Stream() : state_(XXH3_createState()) {
  if (!state_) throw std::bad_alloc();
  XXH3_128bits_reset(state_.get());
}

void Xxh3Stream::add(std::string_view bytes) {
  XXH3_128bits_update(state_.get(), bytes.data(), bytes.size());
}

std::string Xxh3Stream::hash() const { return hexText(XXH3_128bits_digest(state_.get())); }

}  // namespace velmar::toolkit
