// Cookie properties and a stored cookie file from arbitrary bytes, and a file of defaults: both are read without harm,
// and what is read can be written and read again.
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <fuzz/FuzzInput.h>

#include <quorvel/Platform/Foundation/ApplicationFolders.h>
#include <quorvel/Platform/Foundation/NSHTTPCookieStorage.h>
#include <quorvel/Platform/Foundation/NSUserDefaults.h>

using namespace quorvel;
using fuzz::require;

namespace {

constexpr Date kNow{1'000'000'000};

/// A folder of this run, gone at its end.
class Folder {
 public:
  Folder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "quorvel-fuzz-XXXXXX").string();
    require(::mkdtemp(pattern.data()) != nullptr, "a folder can be made");
    path_ = pattern;
    ::setenv("XDG_CONFIG_HOME", pattern.c_str(), 1);
    std::filesystem::create_directories(path_ / "jar");
    std::filesystem::create_directories(path_ / "quorvel/defaults");
  }
  ~Folder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  void write(const char* name, std::string_view bytes) const {
    std::ofstream(path_ / name, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  }
  [[nodiscard]] std::string jar() const { return (path_ / "jar").string(); }

 private:
  std::filesystem::path path_;
};

Value anyValue(fuzz::Input& input) {
  switch (input.byte() % 6) {
    case 0:
      return nil;
    case 1:
      return static_cast<std::int64_t>(input.byte()) - 128;
    case 2:
      return Date{static_cast<double>(input.byte()) * 1e7};
    case 3:
      return u"TRUE";
    case 4:
      return u"/a";
    default:
      return input.text();
  }
}

Dictionary anyProperties(fuzz::Input& input) {
  Dictionary properties{{NSHTTPCookieName, u"n"}, {NSHTTPCookieValue, u"v"}, {NSHTTPCookieDomain, u".h.kr"}};
  properties.set(NSHTTPCookiePath, u"/");
  for (const StringView key :
       {StringView(NSHTTPCookieName), StringView(NSHTTPCookieValue), StringView(NSHTTPCookieDomain),
        StringView(NSHTTPCookiePath), StringView(NSHTTPCookieOriginURL), StringView(NSHTTPCookieExpires),
        StringView(NSHTTPCookieMaximumAge), StringView(NSHTTPCookieDiscard)}) {
    if (input.byte() & 1) properties.set(key, anyValue(input));
  }
  return properties;
}

void checkProperties(fuzz::Input& input) {
  const Dictionary properties = anyProperties(input);
  const auto cookie = NSHTTPCookie::withProperties(properties, kNow);
  if (!cookie) return;
  require(NSHTTPCookie::withProperties(cookie->properties(), kNow) == cookie,
          "a cookie is made again of its properties");
  require(cookie->isSamePlaceAs(*cookie), "a cookie takes its own place");
  for (const String& text : {cookie->name(), cookie->value(), cookie->domain(), cookie->path()}) {
    for (const char16_t unit : text) require(unit >= 0x20 && unit != 0x7F && unit != u';', "no text begins a header");
  }
}

void checkStoredCookies(const Folder& folder, std::string_view bytes) {
  folder.write("jar/cookies.json", bytes);
  const NSHTTPCookieStorage storage = NSHTTPCookieStorage::at(folder.jar());
  const auto before = storage.cookies();
  require(before.has_value(), "a regular file can always be read");
  const auto own = NSHTTPCookie::withProperties({{NSHTTPCookieName, u"own"},
                                                 {NSHTTPCookieValue, u""},
                                                 {NSHTTPCookieDomain, u"own.invalid"},
                                                 {NSHTTPCookiePath, u"/"}});
  require(storage.setCookie(*own), "a cookie can be set in whatever was there");
  const auto after = storage.cookies();
  require(after && after->size() >= std::max<std::size_t>(1, before->size()), "the others stay");
  require(storage.deleteCookie(*own), "and deleted again");
}

void checkDefaults(const Folder& folder, std::string_view bytes) {
  folder.write("quorvel/defaults/fuzz.json", bytes);
  const auto store = NSUserDefaults::withSuiteName(u"fuzz");
  const Dictionary before = store->dictionaryRepresentation();
  for (const auto& [key, value] : before) {
    require(store->objectForKey(key.text()) == value, "one entry is what the whole has");
    const Value form = detail::toStoredForm(value);
    require(form.isNil() || detail::fromStoredForm(form) == value, "a stored form reads back");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Folder folder;
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  fuzz::Input input(data, size);
  checkProperties(input);
  // Files cost a disk's time: every eighth input.
  if (size == 0 || (data[size - 1] & 7) != 0) return 0;
  checkStoredCookies(folder, bytes);
  checkStoredCookies(folder, "{\"cookies\":[" + std::string(bytes) + "]}");
  checkDefaults(folder, bytes);
  checkDefaults(folder, "{\"key\":" + std::string(bytes) + "}");
  return 0;
}
