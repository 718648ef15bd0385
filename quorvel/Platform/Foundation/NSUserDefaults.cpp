#include <cmath>

#include <quorvel/Platform/Foundation/ApplicationFolders.h>
#include <quorvel/Platform/Foundation/Base64.h>
#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/Foundation/Log.h>
#include <quorvel/Platform/Foundation/NSUserDefaults.h>

namespace quorvel {
namespace detail {
namespace {

constexpr std::u16string_view kDate = u"$date";
constexpr std::u16string_view kData = u"$data";
constexpr std::u16string_view kDictionary = u"$dictionary";

/// The only entry of a dictionary whose key begins with "$", or nullptr.
const Entry* markedEntry(const Dictionary& dictionary) {
  if (dictionary.size() != 1) return nullptr;
  const StringView key = dictionary.begin()->key.text();
  return !key.isEmpty() && key.front() == u'$' ? dictionary.begin() : nullptr;
}

/// The values inside, to be changed in place. Their places hold until the container itself is changed.
void appendChildren(Value& value, std::vector<Value*>& children) {
  if (List* list = value.mutableList()) {
    for (std::size_t i = 0; i < list->size(); ++i) children.push_back(&list->mutableAt(i));
  } else if (Dictionary* dictionary = value.mutableDictionary()) {
    for (const Entry& entry : Dictionary(*dictionary)) children.push_back(dictionary->mutableFind(entry.key.text()));
  }
}

bool hasTextKeys(const Dictionary& dictionary) {
  for (const Entry& entry : dictionary) {
    if (!entry.key.isString()) return false;
  }
  return true;
}

/// Turns one value into its form; its children are left. False when it has none. `open` is what holds the children.
bool encodeOne(Value& value, Value*& open) {
  if (const auto date = value.asDate()) {
    if (!std::isfinite(date->secondsSince1970)) return false;
    value = Dictionary{{StringView(kDate), date->secondsSince1970}};
    open = nullptr;
  } else if (const Data* data = value.asData()) {
    value = Dictionary{{StringView(kData), base64EncodedString(data->bytes())}};
    open = nullptr;
  } else if (const Dictionary* dictionary = value.asDictionary()) {
    if (!hasTextKeys(*dictionary)) return false;
    if (!markedEntry(*dictionary)) return true;
    value = Dictionary{{StringView(kDictionary), std::move(value)}};
    open = value.mutableDictionary()->mutableFind(StringView(kDictionary));
  } else if (const auto number = value.asNumber()) {
    return !number->isFloating() || std::isfinite(number->doubleValue());
  }
  return value.isString() || value.isList() || value.isDictionary();
}

void decodeOne(Value& value) {
  const Entry* entry = value.isDictionary() ? markedEntry(*value.asDictionary()) : nullptr;
  if (!entry) return;
  const Value inner = entry->value;
  const StringView key = entry->key.text();
  if (key == StringView(kDate) && inner.isNumber()) {
    value = Date{inner.asNumber()->doubleValue()};
  } else if (key == StringView(kData) && inner.isString()) {
    if (const auto bytes = decodeBase64(inner.text())) value = Data(*bytes);
  } else if (key == StringView(kDictionary) && inner.isDictionary()) {
    value = inner;
  }
}

}  // namespace

Value toStoredForm(Value value) {
  std::vector<Value*> pending = {&value};
  // Each takes two bytes at least. Values that share parts may be larger than what memory holds when written out.
  for (std::size_t count = 0; !pending.empty(); ++count) {
    Value* next = pending.back();
    Value* open = next;
    pending.pop_back();
    if (count > limits::kStoreFileBytes / 2 || !encodeOne(*next, open)) return nil;
    if (open) appendChildren(*open, pending);
  }
  return value;
}

Value fromStoredForm(Value stored) {
  std::vector<Value*> pending = {&stored};
  while (!pending.empty()) {
    Value* next = pending.back();
    pending.pop_back();
    decodeOne(*next);
    appendChildren(*next, pending);
  }
  return stored;
}

}  // namespace detail

NSUserDefaults::NSUserDefaults(std::string name)
    : name_(std::move(name)), store_(folders::configuration().value_or(""), {"quorvel", "defaults"}, name_ + ".json") {}

NSUserDefaults NSUserDefaults::standardUserDefaults() { return NSUserDefaults(folders::applicationName()); }

std::optional<NSUserDefaults> NSUserDefaults::withSuiteName(StringView name) {
  if (name.isNil()) return standardUserDefaults();
  const std::optional<std::string> bytes = String(name).toUTF8();
  if (!bytes || !folders::isStoreName(*bytes)) return nil;
  return NSUserDefaults(*bytes);
}

Value NSUserDefaults::objectForKey(StringView key) const {
  const auto entries = key.isNil() ? nil : store_.read();
  return entries ? detail::fromStoredForm((*entries)[key]) : Value(nil);
}

bool NSUserDefaults::setObject(const Value& value, StringView key) const {
  const Value form = value.isNil() ? value : detail::toStoredForm(value);
  if (key.isNil() || form.isNil() != value.isNil()) return false;
  const FileError error = store_.change([&](Dictionary& entries) {
    if (form.isNil()) return entries.remove(key);
    entries.set(key, form);
    return true;
  });
  if (error) log(LogLevel::Warning, "NSUserDefaults: " + name_ + ": " + error.description().toUTF8Replacing());
  return !error;
}

Dictionary NSUserDefaults::dictionaryRepresentation() const {
  Dictionary result;
  for (const auto& [key, stored] : store_.read().value_or(Dictionary())) {
    result.set(key, detail::fromStoredForm(stored));
  }
  return result;
}

}  // namespace quorvel
