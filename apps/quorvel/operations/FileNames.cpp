#include <apps/quorvel/Binding.h>
#include <apps/quorvel/operations/Tables.h>

#include <quorvel/Extensions/Foundation/NSString+Additions+FileNames.h>
#include <quorvel/Extensions/Foundation/String+Paths.h>
#include <quorvel/Utility/StringUtils.h>

namespace quorvel::command {
namespace {

constexpr const char* kObject = "NSString(Additions)";
constexpr const char* kClass = "StringUtils";
constexpr const char* kValue = "String extension";

constexpr Operation kRows[] = {
    op<&createNewFileName>(kObject, "createNewFileName", "name", "the file name with the next number",
                           R"(["a (1).txt"])"),
    op<&checkFileNameValidity>(kObject, "checkFileNameValidity", "name", "whether the name can be used for a file",
                               R"(["a:b"])"),
    op<&removeMatchingFirstPattern>(kObject, "removeMatchingFirstPattern:", "text, pattern",
                                    "the first match in the trimmed text, or that text", R"(["  ab12cd ", "\\d+"])"),
    op<&URLStringByAppendingPathComponent>(kObject, "URLStringByAppendingPathComponent:", "url, path",
                                           "the URL with path segments before its fragment and query",
                                           R"(["proto://host/a#top?x=1", "b/c/"])"),
    op<&URLStringByDeletingLastPathComponent>(kObject, "URLStringByDeletingLastPathComponent", "url",
                                              "the URL without its last path segment", R"(["http://h/a/b?q"])"),

    op<&StringUtils::replaceToHEICImageExtension>(kClass, "replaceToHEICImageExtension:extension:", "path, extension",
                                                  "the path with the extension in place of heic",
                                                  R"(["IMG_1.HEIC", "jpg"])"),

    op<&pathExtension>(kValue, "pathExtension", "path", "the extension without its dot", R"(["/tmp/a.tar.gz"])"),
    op<&lastPathComponent>(kValue, "lastPathComponent", "path", "the last component", R"(["/tmp/a.b/"])"),
    op<&deletingPathExtension>(kValue, "deletingPathExtension", "path", "the path without its extension and the dot",
                               R"(["/tmp/a.tar.gz"])"),
    op<&stringByAppendingPathExtension>(kValue, "stringByAppendingPathExtension(_:)", "path, extension",
                                        "the path, a dot and the extension; nil where there is nothing to append to",
                                        R"(["/tmp/", "tiff"])"),
    op<&stringByAppendingPathComponent>(kValue, "stringByAppendingPathComponent(_:)", "path, component",
                                        "both with one slash between", R"(["/tmp/", "/a/"])"),
};

}  // namespace

std::span<const Operation> fileNameOperations() { return kRows; }

}  // namespace quorvel::command
