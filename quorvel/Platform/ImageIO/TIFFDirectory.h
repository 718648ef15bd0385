// TIFFDirectory: the directories of a TIFF, classic or Big, in either byte order (TIFF 6.0, section 2), which are those
// of EXIF blocks too. Not here: pixels (ImageReader.h), what the tags of EXIF are called (EXIFProperties.h).
#pragma once

#include <optional>

#include <quorvel/Platform/Foundation/String.h>
#include <quorvel/Platform/ImageIO/ByteView.h>

namespace quorvel {

/// Of one tag: `count` numbers of a type, or a text.
struct TIFFField {
  std::uint16_t tag = 0;
  std::uint16_t type = 0;
  std::uint64_t count = 0;
  /// Of the values, which lie in the block to their end.
  std::uint64_t location = 0;
  std::uint64_t length = 0;
};

class TIFFBlock {
 public:
  /// Pages of a chain that are counted.
  static constexpr std::size_t kPages = 65'536;

  /// nil when the bytes do not begin as a TIFF.
  [[nodiscard]] static std::optional<TIFFBlock> open(ImageBytes bytes);

  [[nodiscard]] std::uint64_t firstDirectory() const { return offset(isBig_ ? 8 : 4, isBig_ ? 8 : 4); }
  /// Entries of the directory there, no more than the block holds.
  [[nodiscard]] std::uint64_t entryCount(std::uint64_t directory) const;
  /// An entry by its index below `entryCount`. A field whose values lie beyond the block has a count and a length of 0.
  [[nodiscard]] TIFFField entry(std::uint64_t directory, std::uint64_t index) const;
  [[nodiscard]] std::optional<TIFFField> find(std::uint64_t directory, std::uint16_t tag) const;

  /// One of a field's numbers, rationals divided; nil beyond its count, for a text, and for a division by zero.
  [[nodiscard]] std::optional<double> number(const TIFFField& field, std::uint64_t index = 0) const;
  /// The first whole number, 0 or more.
  [[nodiscard]] std::optional<std::uint64_t> integer(const TIFFField& field) const;
  [[nodiscard]] std::optional<std::uint64_t> integer(std::uint64_t directory, std::uint16_t tag) const;
  [[nodiscard]] ImageBytes bytes(const TIFFField& field) const { return view_.part(field.location, field.length); }

  /// Directories from the first on, each once, though the last may point back at one of them; `kPages` at most.
  [[nodiscard]] std::size_t pageCount() const;

 private:
  TIFFBlock(ByteView view, bool isLittle, bool isBig) : view_(view), isLittle_(isLittle), isBig_(isBig) {}
  [[nodiscard]] std::uint64_t offset(std::uint64_t at, unsigned count) const {
    return isLittle_ ? view_.little(at, count) : view_.big(at, count);
  }
  [[nodiscard]] std::uint64_t nextDirectory(std::uint64_t directory) const;
  /// Of a chain that ends in a cycle of this length.
  [[nodiscard]] std::size_t pagesBeforeRepeating(std::size_t length) const;

  ByteView view_;
  bool isLittle_;
  bool isBig_;
};

[[nodiscard]] bool isTIFFFile(ByteView file);
/// Never complete: directories and what they name may stand anywhere in the file.
void readTIFFFacts(ByteView file, ImageFacts& facts);

/// EXIF's 1 to 8 of a block's first directory; 1 when it does not say it.
[[nodiscard]] std::uint8_t orientationOfTIFFBlock(ImageBytes block);

/// The text up to its first NUL without spaces at its end; bytes that are not UTF-8 are Latin-1. Of a text of more than
/// 65,536 bytes, those.
[[nodiscard]] String textOfBytes(ImageBytes bytes);

}  // namespace quorvel
