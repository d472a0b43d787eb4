#ifndef VELMAR_TESTS_PICTURES_H
#define VELMAR_TESTS_PICTURES_H

#include <string>

/// A JPEG of 32 x 16 pixels, another one for each number. In front of the picture stands a comment
/// of that many bytes, which holds a start and an end marker as a thumbnail would.
std::string numberedJpeg(unsigned int number, std::size_t commentSize = 40);

enum class Coding { Optimized, Arithmetic, Progressive, ArithmeticProgressive };
/// A grey JPEG of one shade; Huffman tables are made for it.
std::string uniformJpeg(int width, int height, Coding coding);

/// The JPEG without its Huffman tables: decoders take the standard's.
std::string withoutHuffmanTables(const std::string& jpeg);
/// The JPEG's tables without its picture.
std::string tablesOf(const std::string& jpeg);
/// The JPEG with another size in its header.
std::string claiming(unsigned int width, unsigned int height, std::string jpeg);

#endif
