// What the two directions of Wire.h agree on.
#pragma once

#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel::command {

/// True for a text that begins with "$".
[[nodiscard]] bool isFormKey(const Value& key);
/// True when a JSON object reads as attributed text.
[[nodiscard]] bool hasAttributedForm(const Dictionary& json);

}  // namespace quorvel::command
