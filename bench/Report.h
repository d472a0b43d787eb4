/// The measured rows as text.
#ifndef VELMAR_BENCH_REPORT_H
#define VELMAR_BENCH_REPORT_H

#include <string>
#include <vector>

#include "Bench.h"

/// The rows that have a figure to reach, as a Markdown table.
std::string figuresTable(const std::vector<Result>& results);
/// The others.
std::string growthTable(const std::vector<Result>& results);
/// What kind of machine this is, as a Markdown list. Says nothing that names it.
std::string machineList(const std::string& folder);

/// The ratio of ours to the limit that a row aims at; nothing for a row without one.
std::optional<double> reachRatio(const Result& result);

#endif
