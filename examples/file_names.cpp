// Names for saved files, and addresses whose path grows and shrinks in place.
#include <iostream>

#include <quorvel/Extensions/Foundation/NSString+Additions+FileNames.h>
#include <quorvel/Extensions/Foundation/String+Paths.h>
#include <quorvel/Utility/StringUtils.h>

using namespace quorvel;

int main() {
  std::cout << std::boolalpha;
  for (const String& name :
       {String(u"여행.jpg"), String(u"여행 (9).jpg"), String(u"a (1).b (5).c"), String(u"folder")}) {
    std::cout << name << " -> " << createNewFileName(name) << '\n';
  }
  for (const StringView name : std::initializer_list<StringView>{u"my file (2).txt", u".profile", u"a:b", u"a.", u""}) {
    std::cout << "'" << name << "' is a file name: " << checkFileNameValidity(name) << '\n';
  }
  for (const String& path : {String(u"/tmp/a.tar.gz"), String(u"/tmp/.profile"), String(u"photos/"), String(u"/")}) {
    std::cout << path << ": '" << lastPathComponent(path) << "' '" << pathExtension(path) << "' '"
              << deletingPathExtension(path) << "' " << stringByAppendingPathExtension(path, u"bak") << ' '
              << stringByAppendingPathComponent(path, u"/more/") << '\n';
  }
  std::cout << StringUtils::replaceToHEICImageExtension(String(u"IMG_1.HEIC"), u"jpg") << ", '"
            << removeMatchingFirstPattern(u"  room 12, floor 3", u"\\d+") << "'\n";
  const String url = u"proto://host//a/b/#top?x=1";
  std::cout << URLStringByAppendingPathComponent(url, u"c/d/") << '\n'
            << URLStringByDeletingLastPathComponent(u"http://host/dir/page?x=1") << '\n'
            << URLStringByDeletingLastPathComponent(u"dir/no url") << '\n';
}
