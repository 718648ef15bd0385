// Processors without AVX2 instructions: no kernel takes anything, and the callers' own code does it all.
#include <quorvel/Platform/Foundation/WideKernels.h>

#if !defined(__x86_64__)

namespace quorvel::wide {

bool isAvailable() { return false; }
void setEnabled(bool /*enabled*/) {}
Progress utf8ToUTF16(const char* /*bytes*/, std::size_t /*size*/, char16_t* /*out*/) { return {0, 0}; }
Progress utf16ToUTF8(const char16_t* /*units*/, std::size_t /*size*/, char* /*out*/) { return {0, 0}; }
Progress utf16Length(const char* /*bytes*/, std::size_t /*size*/) { return {0, 0}; }
Progress utf8Length(const char16_t* /*units*/, std::size_t /*size*/) { return {0, 0}; }
std::size_t leadingASCII(const char16_t* /*units*/, std::size_t /*size*/) { return 0; }
std::size_t leadingCommon(const char16_t* /*units*/, std::size_t /*size*/, bool /*withoutCapitals*/) { return 0; }
std::size_t leadingOutside(const char16_t* /*units*/, std::size_t /*size*/, char16_t /*low*/, char16_t /*span*/) {
  return 0;
}
std::size_t leadingEqual(const char16_t* /*a*/, const char16_t* /*b*/, std::size_t /*size*/) { return 0; }
std::size_t leadingMembers(const char16_t* /*units*/, std::size_t /*size*/, const ASCIISet& /*set*/) { return 0; }
Progress percentLength(const char16_t* /*units*/, std::size_t /*size*/, const ASCIISet& /*set*/) { return {0, 0}; }
Progress percentEncode(const char16_t* /*units*/, std::size_t /*size*/, const ASCIISet& /*set*/,
                       const std::uint64_t* /*escapes*/, char16_t* /*out*/) {
  return {0, 0};
}
Progress percentEncodeBytes(const char16_t* /*units*/, std::size_t /*size*/,
                            const std::array<std::uint64_t, 256>& /*written*/, char16_t* /*out*/) {
  return {0, 0};
}
Progress copyWithout(const char16_t* /*units*/, std::size_t /*size*/, const char16_t (& /*members*/)[4],
                     char16_t* /*out*/) {
  return {0, 0};
}
std::size_t findPair(const char16_t* /*units*/, std::size_t /*size*/, std::size_t from, const Pair& /*pair*/) {
  return from;
}

}  // namespace quorvel::wide

#endif
