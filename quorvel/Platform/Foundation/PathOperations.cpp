#include <quorvel/Platform/Foundation/PathOperations.h>
#include <quorvel/Platform/Foundation/Unicode.h>

namespace quorvel::paths {
namespace {

/// The path without slashes at its end; of a path of slashes one stays.
StringView withoutTrailingSlashes(StringView path) {
  std::size_t size = path.size();
  while (size > 1 && path[size - 1] == u'/') --size;
  return path.sub(0, size);
}

/// Appends the path, every run of slashes as one.
void appendCompressed(StringBuilder& out, StringView path) {
  for (std::size_t from = 0; from < path.size();) {
    const std::size_t slashes = unicode::findLiteral(path, u"//", from);
    if (slashes == unicode::kInvalid) return out.append(path.sub(from));
    out.append(path.sub(from, slashes + 1 - from));
    from = slashes + 2;
    while (from < path.size() && path[from] == u'/') ++from;
  }
}

/// The path with single slashes and none at its end; `owner`, whose text `path` may be, is shared if nothing changes.
String fixed(StringView path, const String& owner) {
  const StringView text = withoutTrailingSlashes(path);
  if (unicode::findLiteral(text, u"//") == unicode::kInvalid) return text.isSameAs(owner) ? owner : String(text);
  StringBuilder out;
  appendCompressed(out, text);
  return String(withoutTrailingSlashes(out.view()));
}

bool hasOnlyDots(StringView text) { return text.units().find_first_not_of(u'.') == std::u16string_view::npos; }

/// Where the last component's extension begins, behind its dot; the path's size where there is none. `path` ends in no
/// slash.
std::size_t startOfExtension(StringView path) {
  const StringView component = lastPathComponent(path);
  const std::size_t dot = component.units().rfind(u'.');
  if (dot == std::u16string_view::npos || hasOnlyDots(component.sub(0, dot))) return path.size();
  const bool hasSpace = unicode::findUnit(component, u' ', dot) != unicode::kInvalid;
  return hasSpace ? path.size() : path.size() - component.size() + dot + 1;
}

}  // namespace

StringView lastPathComponent(StringView path) {
  const StringView text = withoutTrailingSlashes(path);
  const std::size_t slash = text.units().rfind(u'/');
  return slash == std::u16string_view::npos || text.size() == 1 ? text : text.sub(slash + 1);
}

StringView pathExtension(StringView path) {
  const StringView text = withoutTrailingSlashes(path);
  return text.sub(startOfExtension(text));
}

String stringByDeletingPathExtension(const String& path) {
  const StringView text = withoutTrailingSlashes(path);
  const std::size_t start = startOfExtension(text);
  return fixed(start == text.size() ? text : text.sub(0, start - 1), path);
}

String stringByDeletingLastPathComponent(const String& path) {
  const StringView text = withoutTrailingSlashes(path);
  const std::size_t slash = text.units().rfind(u'/');
  return slash == std::u16string_view::npos ? String() : fixed(text.sub(0, slash + 1), path);
}

String stringByAppendingPathComponent(const String& path, StringView component) {
  if (component.isEmpty()) return fixed(path, path);
  if (path.isEmpty()) return fixed(component, path);
  StringBuilder out;
  out.reserve(path.size() + component.size() + 1);
  out.append(path);
  out.append(u'/');
  out.append(component);
  return fixed(out.view(), path);
}

std::optional<String> stringByAppendingPathExtension(const String& path, StringView extension) {
  const StringView text = withoutTrailingSlashes(path);
  if (text.isEmpty() || text == u"/" || extension.isNil()) return nil;
  if (unicode::findUnit(extension, u'/') != unicode::kInvalid) return nil;
  if (extension.isEmpty()) return fixed(text, path);
  StringBuilder out;
  appendCompressed(out, text);
  out.append(u'.');
  out.append(extension);
  return out.finish();
}

}  // namespace quorvel::paths
