// NSURL(Image), writing: an image file made smaller in its place, and a bitmap written as a JPEG file.
// Not here: asking a file for its size (NSURL+Image.h).
#pragma once

#include <quorvel/Platform/CoreGraphics/CGImage.h>
#include <quorvel/Platform/Foundation/NSURL.h>

namespace quorvel {

/// `resizeImageAtPixel:`: the first image of the file, turned upright, at most `largestSide` pixels on its longer side
/// and never enlarged, written over the file as JPEG, whatever the file was and is called; the largest side counts in
/// whole pixels. The file is decoded no larger than that takes. False, and the file is as it was, when it is no image
/// that can be read, for a side below 1 or no number, and when the new file cannot be written.
[[nodiscard]] bool resizeImageAtPixel(const NSURL& url, double largestSide);

/// `writeToCGImageFile:`: the bitmap as a JPEG file of the writer's quality (`kJPEGQuality`), in place of a file that
/// is there; the old file stays whole until the new one is. False, and nothing is changed, for what is no file URL, a
/// bitmap without pixels, and when the file cannot be written.
[[nodiscard]] bool writeToCGImageFile(const NSURL& url, const CGImage& bitmap);

}  // namespace quorvel
