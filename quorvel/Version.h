// The version, written here and nowhere else: the build reads these three lines.
#pragma once

#define QUORVEL_VERSION_MAJOR 0
#define QUORVEL_VERSION_MINOR 1
#define QUORVEL_VERSION_PATCH 0

// Exported with C linkage, so that a program can ask the library that it really runs with.
extern "C" {

/// `QuorvelVersionString`: the version of the linked library, "major.minor.patch".
extern const char QuorvelVersionString[];

/// `QuorvelVersionNumber`: major and minor version of the linked library read as a decimal number, 1.2 for 1.2.3 (and
/// 1.1 for 1.10, so compare the text where that matters).
extern const double QuorvelVersionNumber;

}  // extern "C"
