/// What all harnesses share. The library's log is off in them.
#ifndef VELMAR_FUZZ_SUPPORT_H
#define VELMAR_FUZZ_SUPPORT_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// What libFuzzer calls.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" int LLVMFuzzerInitialize(int* argumentCount, char*** arguments);
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t maxSize, unsigned int seed);

/// Ends the run with a finding.
void require(bool holds);

/// Reads every byte, so that a sanitizer sees memory that is not there. What the bytes are is no
/// coverage.
void consume(const void* bytes, std::size_t size);
inline void consume(std::string_view text) { consume(text.data(), text.size()); }

/// A file in memory, for one process.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& extension);
  ~TemporaryFile();
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  const std::string& path() const { return path_; }
  /// Replaces what is in it.
  void write(const std::uint8_t* data, std::size_t size) const;

 private:
  std::string path_;
};

#endif
