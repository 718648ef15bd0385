#include <quorvel/Extensions/Foundation/NSURL+File.h>
#include <quorvel/Platform/Foundation/NSFileManager.h>

namespace quorvel {

Value fileSize(const NSURL& url) {
  if (url.scheme() != u"file") return 0;
  const auto attributes = NSFileManager::defaultManager().attributesOfItemAtPath(url.path());
  return attributes ? (*attributes)[NSFileSize] : Value(nil);
}

}  // namespace quorvel
