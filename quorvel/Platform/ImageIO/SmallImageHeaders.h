// SmallImageHeaders: the headers of BMP, ICO, CUR and PDF, which need no walk.
// Not here: SVG (SVGRoot.h), pixels (ImageReader.h).
#pragma once

#include <quorvel/Platform/ImageIO/ByteView.h>

namespace quorvel {

/// Headers of 12 bytes, and of 16 to 124; a height below zero is one from the top.
[[nodiscard]] bool isBMPFile(ByteView file);
void readBMPFacts(ByteView file, ImageFacts& facts);

/// Icons and cursors. The facts are those of the largest picture; of a PNG among them its own.
[[nodiscard]] bool isICOFile(ByteView file);
void readICOFacts(ByteView file, ImageFacts& facts);

/// "%PDF-" in the first 1,024 bytes. Pages are not counted, and the size is not known.
[[nodiscard]] bool isPDFFile(ByteView file);
void readPDFFacts(ByteView file, ImageFacts& facts);

}  // namespace quorvel
