// Property lists, in XML (the 1.0 document type) and in the binary form that begins with "bplist00".
// Not here: string tables as text and what a bundle makes of them (NSBundle.h).
#pragma once

#include <string_view>

#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {

/// The value that the bytes describe; nil when they break the form, hold text that is not UTF-8 (XML) or has an
/// unpaired surrogate (binary), are nested deeper than `limits::kPropertyListDepth`, or list more than
/// `limits::kPropertyListObjects` objects (binary). Time and memory are linear in the bytes: an object that a binary
/// list names many times is read once and shared.
///
/// XML: dict, array, string, integer (decimal or 0x; a signed or unsigned 64-bit number), real, true, false, date
/// ("2017-07-14T02:40:00Z") and data, with comments, processing instructions, one document type without declarations,
/// CDATA sections, the five predefined entities and character references; of repeated keys the last value stays. UTF-8
/// alone.
[[nodiscard]] std::optional<Value> parsePropertyList(std::string_view bytes);

/// True when the bytes begin like a property list in either form, after white space or a byte-order mark.
[[nodiscard]] bool isPropertyList(std::string_view bytes);

namespace detail {

[[nodiscard]] std::optional<Value> parseXMLPropertyList(std::string_view bytes);

}  // namespace detail
}  // namespace quorvel
