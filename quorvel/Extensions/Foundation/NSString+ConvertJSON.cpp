#include <quorvel/Extensions/Foundation/NSString+ConvertJSON.h>
#include <quorvel/Platform/Foundation/NSJSONSerialization.h>

namespace quorvel {

Value objectFromJSONString(StringView text) { return NSJSONSerialization::parse(text); }

}  // namespace quorvel
