/// The machinery of the benchmarks: rows of a report, each a piece of work with its limit beside
/// it, and how they are run.
#ifndef VELMAR_BENCH_BENCH_H
#define VELMAR_BENCH_BENCH_H

#include <ctime>
#include <functional>
#include <optional>
#include <string>
#include <vector>

/// Turns this into a quick run: every row once, on short recordings. It shows that all of them
/// work, and its figures mean nothing.
void runQuickly();
/// How many frames to take where a full run takes `full` of them.
unsigned int frameCount(unsigned int full);

/// Runs a piece of work once and answers what it took: seconds, or bytes where the row says so.
/// What is only preparation is for the side to leave out.
using Side = std::function<double()>;

/// Seconds since it was made, by the clock of `kClock`.
template <clockid_t kClock>
class TimerOf {
 public:
  double seconds() const {
    const timespec end = now();
    return static_cast<double>(end.tv_sec - start_.tv_sec) +
           static_cast<double>(end.tv_nsec - start_.tv_nsec) / 1e9;
  }

 private:
  static timespec now() {
    timespec time{};
    ::clock_gettime(kClock, &time);
    return time;
  }

  timespec start_ = now();
};

/// For all that only computes: what else runs on the machine does not count.
using CpuTimer = TimerOf<CLOCK_PROCESS_CPUTIME_ID>;
/// For what waits for the disk, and for other processes.
using WallTimer = TimerOf<CLOCK_MONOTONIC>;

struct Contender {
  std::string name;
  Side side;
};

enum class Unit { Seconds, Bytes };

/// What a row measures. It owns its fixtures by what its sides capture.
struct Row {
  std::string limitName;
  Side limit;  ///< empty: nothing to compare with
  Side ours;
  std::optional<double> reach;       ///< the ratio of ours to the limit that is aimed at
  std::optional<double> reachExtra;  ///< the same as a difference, seconds
  std::vector<Contender> peers = {};
  unsigned int operations = 1;  ///< of one run; the report shows one
  Unit unit = Unit::Seconds;
};

/// Registers a row; it is made when its turn comes and destroyed before the next is made.
void addRow(const std::string& name, const std::function<Row()>& make, int repetitions = 15);

/// Middle half of what was measured, per operation.
struct Quartiles {
  double low = 0;
  double median = 0;
  double high = 0;
};

struct Measured {
  std::string name;
  Quartiles value;
  std::optional<Quartiles> ratio;  ///< to the limit of the same repetition
};

struct Result {
  std::string name;
  std::string limitName;
  std::optional<double> reach;
  std::optional<double> reachExtra;
  Unit unit = Unit::Seconds;
  std::optional<Quartiles> limit;
  Measured ours;
  std::vector<Measured> peers;

  /// Nothing if the row has no figure to reach, or the run was a quick one.
  std::optional<bool> isReached() const;
};

/// Of the rows that have run.
const std::vector<Result>& results();

/// Ends the program with the message unless `holds`: a benchmark of something that fails is none.
void require(bool holds, const std::string& message);

// The groups, a file each.
void addWriteRows();
void addOpenRows();
void addFramesRows();
void addDecodeRows();
void addEditRows();
void addMemoryRows();
void addToolRows();
void addViewerRows();
void addCatalogRows();
void addPythonRows();
void addGrowthRows();

#endif
