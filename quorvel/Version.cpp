#include <quorvel/Version.h>

// Two steps each, since # and ## do not expand what they work on.
#define QUORVEL_QUOTED(value) #value
#define QUORVEL_DOTTED(major, minor, patch) QUORVEL_QUOTED(major) "." QUORVEL_QUOTED(minor) "." QUORVEL_QUOTED(patch)
#define QUORVEL_JOINED(major, minor) major##.##minor
#define QUORVEL_DECIMAL(major, minor) QUORVEL_JOINED(major, minor)

const char QuorvelVersionString[] = QUORVEL_DOTTED(QUORVEL_VERSION_MAJOR, QUORVEL_VERSION_MINOR, QUORVEL_VERSION_PATCH);
const double QuorvelVersionNumber = QUORVEL_DECIMAL(QUORVEL_VERSION_MAJOR, QUORVEL_VERSION_MINOR);
