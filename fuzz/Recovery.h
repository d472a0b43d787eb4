/// The command recover, run on what a recorder might have left.
#ifndef VELMAR_FUZZ_RECOVERY_H
#define VELMAR_FUZZ_RECOVERY_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// Recovers `leftover` into a recording with that extension and deletes it again. What comes of it
/// has to be a recording without errors.
void recover(const std::string& leftover, const std::string& extension,
             const std::vector<std::string>& options);

/// Checks `bytes` as a recording with that extension, decoding and all.
void verifyBytes(const std::string& extension, const std::uint8_t* bytes, std::size_t size);

#endif
