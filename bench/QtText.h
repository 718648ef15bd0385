// Our texts as those of Qt, to measure Qt's operations on.
#pragma once

#if QUORVEL_HAVE_QT
#include <QString>

#include <quorvel/Platform/Foundation/String.h>

namespace quorvel::bench {

[[nodiscard]] inline QString qt(const String& text) {
  return QString::fromUtf16(text.data(), static_cast<qsizetype>(text.size()));
}

}  // namespace quorvel::bench
#endif
