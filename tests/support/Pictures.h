#ifndef VELMAR_TESTS_PICTURES_H
#define VELMAR_TESTS_PICTURES_H

#include <string>

/// A JPEG of 32 x 16 pixels, another one for each number. In front of the picture stands a comment
/// of that many bytes, which holds a start and an end marker as a thumbnail would.
std::string numberedJpeg(unsigned int number, std::size_t commentSize = 40);

#endif
