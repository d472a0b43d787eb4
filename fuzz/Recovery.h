/// The command recover, run on what a recorder might have left.
#ifndef VELMAR_FUZZ_RECOVERY_H
#define VELMAR_FUZZ_RECOVERY_H

#include <string>
#include <vector>

/// Recovers `leftover` into a recording with that extension and deletes it again. What comes of it
/// has to be a recording without errors.
void recover(const std::string& leftover, const std::string& extension,
             const std::vector<std::string>& options);

#endif
