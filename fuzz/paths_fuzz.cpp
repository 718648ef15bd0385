// Paths, URLs and file names on arbitrary text: what is taken apart goes together again, results stay valid.
#include <fuzz/FuzzInput.h>

#include <quorvel/Extensions/Foundation/NSString+Additions+FileNames.h>
#include <quorvel/Platform/Foundation/NSURL.h>
#include <quorvel/Platform/Foundation/PathOperations.h>
#include <quorvel/Platform/Foundation/Unicode.h>

using namespace quorvel;
using fuzz::require;

namespace {

bool hasSlash(StringView text) { return unicode::findUnit(text, u'/') != unicode::kInvalid; }

/// Single slashes, and none at the end but in "/".
bool isFixed(StringView path) {
  const bool endsInSlash = path.size() > 1 && path.back() == u'/';
  return !endsInSlash && unicode::findLiteral(path, u"//") == unicode::kInvalid;
}

void checkPath(const String& path) {
  const String last = paths::lastPathComponent(path);
  const String extension = paths::pathExtension(path);
  const String fixed = paths::stringByAppendingPathComponent(path, u"");
  require(isFixed(fixed) && paths::stringByAppendingPathComponent(fixed, u"") == fixed, "a fixed path stays");
  require(!hasSlash(last) || last == String(u"/"), "a component holds no slash");
  require(last == String(paths::lastPathComponent(fixed)), "slashes do not change the last component");
  const String parent = paths::stringByDeletingLastPathComponent(path);
  if (last != String(u"/")) {
    require(paths::stringByAppendingPathComponent(parent, last) == fixed, "parent and last component make the path");
  }
  const String stem = paths::stringByDeletingPathExtension(path);
  require(isFixed(stem) && isFixed(parent), "results are fixed");
  if (extension.isEmpty()) return require(stem == fixed, "a path without extension stays");
  require(paths::stringByAppendingPathExtension(stem, extension) == fixed, "stem and extension make the path");
}

void checkURL(const String& text) {
  const std::optional<NSURL> url = NSURL::withString(text);
  if (!url) return;
  const std::optional<NSURL> again = NSURL::withString(url->absoluteString());
  require(again && *again == *url, "the text of a URL is that URL");
  const NSURL parent = url->byDeletingLastPathComponent();
  require(NSURL::withString(parent.absoluteString()) == parent, "the parent of a URL is one");
  require(parent.scheme() == url->scheme(), "the scheme stays");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const String piece = input.text();
  const String text = input.rest();
  checkPath(text);
  checkURL(text);
  require(isFixed(paths::stringByAppendingPathComponent(text, piece)), "joined paths are fixed");
  require(!createNewFileName(text).isEmpty(), "a new name is a name");
  require(!checkFileNameValidity(text) || !hasSlash(text), "a valid name is one component");
  static_cast<void>(URLStringByAppendingPathComponent(text, piece));
  static_cast<void>(URLStringByDeletingLastPathComponent(text));
  return 0;
}
