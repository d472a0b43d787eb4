/// Opening recordings of small frames, beside the bare mechanics.
#ifndef VELMAR_BENCH_OPEN_ROWS_H
#define VELMAR_BENCH_OPEN_ROWS_H

#include <optional>

#include "Bench.h"
#include "Files.h"

Row openImgRow(unsigned int count, std::optional<double> reach);
Row openRtvRow(Container container, unsigned int count, std::optional<double> reach);

#endif
