// The rows of the table of operations, a source for each topic.
#pragma once

#include <apps/quorvel/Operation.h>

namespace quorvel::command {

std::span<const Operation> textOperations();
std::span<const Operation> fileNameOperations();
std::span<const Operation> cleaningOperations();
std::span<const Operation> highlightingOperations();
std::span<const Operation> recordOperations();
std::span<const Operation> listOperations();
std::span<const Operation> percentEncodingOperations();
std::span<const Operation> queryOperations();
std::span<const Operation> jsonOperations();
std::span<const Operation> digestOperations();
std::span<const Operation> sizeOperations();
std::span<const Operation> versionOperations();
std::span<const Operation> localeOperations();
std::span<const Operation> durationOperations();
std::span<const Operation> textSearchOperations();
std::span<const Operation> colorOperations();
std::span<const Operation> imageOperations();
std::span<const Operation> deviceOperations();

inline constexpr std::span<const Operation> (*kTopics[])() = {
    textOperations,  fileNameOperations,        cleaningOperations,   highlightingOperations, recordOperations,
    listOperations,  percentEncodingOperations, queryOperations,      jsonOperations,         digestOperations,
    sizeOperations,  durationOperations,        textSearchOperations, versionOperations,      localeOperations,
    colorOperations, imageOperations,           deviceOperations,
};

}  // namespace quorvel::command
