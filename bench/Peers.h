/// What users would pick instead. Built without peers, every list is empty.
#ifndef VELMAR_BENCH_PEERS_H
#define VELMAR_BENCH_PEERS_H

#include <string>
#include <vector>

#include "Bench.h"
#include "Frames.h"

/// Writing `count` frames to a file.
std::vector<Contender> writingPeers(const Frames& frames, unsigned int count);
/// Opening a file of `count` frames and copying the first.
std::vector<Contender> openingPeers(const Frames& frames, const std::string& framesName,
                                    unsigned int count);
/// Copying the camera recording's frames, one after the other from the first on.
std::vector<Contender> readingPeers(unsigned int count);
/// Copying the camera recording's frames in the given order.
std::vector<Contender> seekingPeers(const std::vector<unsigned int>& order);
/// Decoding the first `count` camera frames at 1/`denominator`.
std::vector<Contender> decodingPeers(unsigned int count, unsigned int denominator);
/// Decoding frames of the camera recording in the given order.
std::vector<Contender> seekingDecodePeers(const std::vector<unsigned int>& order);
/// The same in Python; only while its interpreter runs.
std::vector<Contender> pythonPeers(const std::vector<unsigned int>& order);
/// A file of `count` small frames to list with another program; its path, empty without peers.
std::string listablePeerFile(unsigned int count);

#endif
