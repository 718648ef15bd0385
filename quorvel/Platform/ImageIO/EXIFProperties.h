// EXIFProperties: the directories of an EXIF block or a TIFF as dictionaries (CIPA DC-008-2019, section 4.6).
// Not here: the walk through directories (TIFFDirectory.h).
#pragma once

#include <quorvel/Platform/Foundation/Value.h>
#include <quorvel/Platform/ImageIO/ImageFacts.h>

namespace quorvel {

struct EXIFProperties {
  Dictionary tiff;
  Dictionary exif;
  Dictionary gps;
};

/// The tags that have names, each once. Numbers are numbers, rationals divided; tags of several numbers are lists of at
/// most 64. Texts are UTF-8 or else Latin-1, without spaces at their end; an empty one is left out. Of the position,
/// degrees with minutes and seconds are one number and the time is "10:20:30". What is damaged is left out.
[[nodiscard]] EXIFProperties exifProperties(ImageBytes block);

}  // namespace quorvel
