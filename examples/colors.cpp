// Colours from packed integers, texts and components, the named palette, and which colours are similar.
#include <iomanip>
#include <iostream>

#include <quorvel/Extensions/UIKit/UIColor+ColorWithHex.h>
#include <quorvel/Extensions/UIKit/UIColor+Common.h>
#include <quorvel/Extensions/UIKit/UIColor+Extension.h>

using namespace quorvel;
using namespace quorvel::UIColorWithHex;

namespace {

void print(StringView name, const UIColor& color) {
  std::cout << name << ": " << color.red() << ' ' << color.green() << ' ' << color.blue() << ' ' << color.alpha()
            << '\n';
}

}  // namespace

int main() {
  std::cout << std::fixed << std::setprecision(3) << std::boolalpha;
  print(u"0x12336699 as RGB", colorWithHex(0x12336699));
  print(u"0x336699 with alpha 0.3", colorWithRGB(0x336699, 0.3));
  print(u"0x80FF0000 as ARGB", colorWithAlphaHex(0x80FF0000));
  print(u"0x80FF0000 as RGBA", colorWithAlphaHexRGBA(0x80FF0000));
  constexpr StringView texts[] = {u"#FF0000", u" 0xff0000", u"##FF0000", u"F00", u"-1", u"00FF00zz"};
  for (const StringView text : texts) {
    print(text, colorWithHexString(text));
  }
  print(u"#336699CC as ARGB", colorWithAlphaHexString(u"#336699CC"));
  print(u"#336699CC as RGBA", colorWithAlphaHexStringRGBA(u"#336699CC"));
  print(u"urlCopyBlue", UIColor::Common::urlCopyBlue());
  print(u"transparentWhiteColor", UIColor::Common::transparentWhiteColor());
  print(u"components 51, 102, 153, alpha 0.5", UIColorExtension::color(51, 102, 153, 0.5F));
  const UIColor color(0.1234569, 0, 0, 1);
  std::cout << "similar: " << isSimilar(color, UIColor(0.1234561, 0, 0, 1)) << ", "
            << isSimilar(color, UIColor(0.1234571, 0, 0, 1)) << '\n';
}
