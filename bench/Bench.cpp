#include "Bench.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace {

bool isQuick = false;

std::vector<Result>& mutableResults() {
  static std::vector<Result> all;
  return all;
}

double quantile(const std::vector<double>& sorted, double part) {
  const double at = part * static_cast<double>(sorted.size() - 1);
  const auto below = static_cast<std::size_t>(at);
  const std::size_t above = std::min(below + 1, sorted.size() - 1);
  return sorted[below] + (at - static_cast<double>(below)) * (sorted[above] - sorted[below]);
}

Quartiles quartiles(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return {quantile(values, 0.25), quantile(values, 0.5), quantile(values, 0.75)};
}

// One side's measurements, in the order of the repetitions.
struct Track {
  const Side* side;
  std::vector<double> values;
};

Measured summary(const std::string& name, const Track& track, const Track* limit) {
  Measured measured{name, quartiles(track.values), std::nullopt};
  if (limit == nullptr) return measured;
  std::vector<double> ratios;
  for (std::size_t i = 0; i < track.values.size(); ++i) {
    ratios.push_back(track.values[i] / limit->values[i]);
  }
  measured.ratio = quartiles(ratios);
  return measured;
}

std::vector<Track> tracksOf(const Row& row) {
  std::vector<Track> tracks = {{&row.ours, {}}};
  if (row.limit) tracks.insert(tracks.begin(), {&row.limit, {}});
  for (const Contender& peer : row.peers) tracks.push_back({&peer.side, {}});
  return tracks;
}

Result resultOf(const std::string& name, const Row& row, const std::vector<Track>& tracks) {
  Result result{name, row.limitName, row.reach, row.reachExtra, row.unit, {}, {}, {}};
  const Track* next = tracks.data();
  const Track* limit = row.limit ? next++ : nullptr;
  if (limit != nullptr) result.limit = quartiles(limit->values);
  result.ours = summary("ours", *next++, limit);
  for (const Contender& peer : row.peers) {
    result.peers.push_back(summary(peer.name, *next++, limit));
  }
  return result;
}

void runRow(benchmark::State& state, const std::string& name, const Row& row) {
  std::vector<Track> tracks = tracksOf(row);
  for (const Track& track : tracks) (*track.side)();  // warms up
  std::size_t first = 0;
  for (auto repetition : state) {
    (void)repetition;
    // Every repetition begins with another side, so that none always follows the same one.
    for (std::size_t i = 0; i < tracks.size(); ++i) {
      Track& track = tracks[(first + i) % tracks.size()];
      track.values.push_back((*track.side)() / row.operations);
    }
    ++first;
    state.SetIterationTime(tracks[row.limit ? 1 : 0].values.back());
  }

  const Result result = resultOf(name, row, tracks);
  if (result.ours.ratio) state.counters["ratio"] = result.ours.ratio->median;
  for (const Measured& peer : result.peers) {
    if (peer.ratio) state.counters[peer.name] = peer.ratio->median;
  }
  mutableResults().push_back(result);
}

}  // namespace

void runQuickly() { isQuick = true; }

unsigned int frameCount(unsigned int full) {
  constexpr unsigned int kShare = 20;
  return isQuick ? full / kShare : full;
}

void addRow(const std::string& name, const std::function<Row()>& make, int repetitions) {
  benchmark::RegisterBenchmark(name.c_str(),
                               [name, make](benchmark::State& state) {
                                 const Row row = make();
                                 runRow(state, name, row);
                               })
      ->UseManualTime()
      ->Iterations(isQuick ? 1 : repetitions)
      ->Unit(benchmark::kMicrosecond);
}

std::optional<bool> Result::isReached() const {
  if (isQuick) return std::nullopt;
  if (reach && ours.ratio) return ours.ratio->median <= *reach;
  if (reachExtra && limit) return ours.value.median - limit->median <= *reachExtra;
  return std::nullopt;
}

const std::vector<Result>& results() { return mutableResults(); }

void require(bool holds, const std::string& message) {
  if (holds) return;
  std::fprintf(stderr, "velmar-bench: %s\n", message.c_str());
  std::exit(EXIT_FAILURE);
}
