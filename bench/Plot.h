/// The measured ratios as a picture.
#ifndef VELMAR_BENCH_PLOT_H
#define VELMAR_BENCH_PLOT_H

#include <string>
#include <vector>

#include "Bench.h"

/// SVG text: for every row with a ratio a bar to it on a logarithmic scale, a mark where it aims
/// at, and a dot for each peer.
std::string plot(const std::vector<Result>& results);

#endif
