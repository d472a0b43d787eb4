/// Writes down what a program does to the files of a folder, and makes of it what a disk could hold
/// after a power cut.
///
/// The functions of the system that write are defined in the test program itself, where the shared
/// libraries that it loads find them first as well.
#ifndef VELMAR_TESTS_DISK_LOG_H
#define VELMAR_TESTS_DISK_LOG_H

#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <vector>

struct DiskEvent {
  enum class Kind { Create, Write, Resize, Rename, Unlink, SyncFile, SyncFolder, Promise };
  Kind kind;
  int file = -1;                       ///< a number that no other file gets
  std::string name = {}, target = {};  ///< without the folder
  std::uint64_t offset = 0;            ///< Resize: the new size
  std::string bytes = {};
  std::size_t promised = 0;
};

using Files = std::map<std::string, std::string>;  ///< contents by their names

/// What reaches the disk of what was not synchronised.
enum class DiskModel {
  Ordered,  ///< of each file the first of its changes; of the names as well
  Weak,     ///< any pages of any changes, any names
};

class DiskLog {
 public:
  /// Writes down from here on what happens in the folder, whose files are on the disk.
  explicit DiskLog(const std::string& folder);
  ~DiskLog();
  DiskLog(const DiskLog&) = delete;
  DiskLog& operator=(const DiskLog&) = delete;

  /// The program has said that so much is on the disk.
  void promise(std::size_t what);
  void stop();

  const std::vector<DiskEvent>& events() const { return events_; }
  /// A state of the disk if the power fails before the event with that number.
  Files cut(std::size_t before, DiskModel model, std::mt19937& random) const;
  /// The last promise before that event; 0 without one.
  std::size_t promisedBefore(std::size_t event) const;

 private:
  std::vector<DiskEvent> events_;
  std::map<std::string, int> names_;  ///< on the disk at the start
  std::vector<std::string> contents_;
};

#endif
