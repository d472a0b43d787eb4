#include "Peers.h"

std::vector<Contender> writingPeers(const Frames& /*frames*/, unsigned int /*count*/) { return {}; }

std::vector<Contender> openingPeers(const Frames& /*frames*/, const std::string& /*framesName*/,
                                    unsigned int /*count*/) {
  return {};
}

std::vector<Contender> readingPeers(unsigned int /*count*/) { return {}; }

std::vector<Contender> seekingPeers(const std::vector<unsigned int>& /*order*/) { return {}; }

std::vector<Contender> decodingPeers(unsigned int /*count*/, unsigned int /*denominator*/) {
  return {};
}

std::vector<Contender> seekingDecodePeers(const std::vector<unsigned int>& /*order*/) { return {}; }

std::vector<Contender> pythonPeers(const std::vector<unsigned int>& /*order*/) { return {}; }

std::string listablePeerFile(unsigned int /*count*/) { return ""; }
