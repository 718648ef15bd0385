#include <algorithm>
#include <cerrno>
#include <cstring>

#include <apps/quorvel/Reply.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <quorvel/Extensions/Foundation/NSDictionary+Addtion.h>
#include <quorvel/Platform/Foundation/NSJSONSerialization.h>

namespace quorvel::command {
namespace {

constexpr std::size_t kReplyBytes = std::size_t{1} << 30;
constexpr std::size_t kChunk = 1 << 20;

/// Closes on every way out, but leaves standard input open.
class Descriptor {
 public:
  explicit Descriptor(const std::string& path)
      : number_(path == "-" ? STDIN_FILENO : ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY)) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (number_ > STDIN_FILENO) ::close(number_);
  }
  [[nodiscard]] int number() const { return number_; }

 private:
  int number_;
};

std::string systemError() { return std::strerror(errno); }

/// Reads the whole file into `bytes`; why it cannot be read, or an empty text.
std::string readAll(const std::string& path, std::string& bytes, const ReadProgress& progress) {
  const Descriptor file(path);
  if (file.number() < 0) return systemError();
  struct stat status{};
  if (::fstat(file.number(), &status) != 0) return systemError();
  if (S_ISDIR(status.st_mode)) return "is a directory";
  std::size_t size = 0;
  bytes.resize(S_ISREG(status.st_mode) ? std::min(static_cast<std::size_t>(status.st_size) + 1, kReplyBytes) : kChunk);
  while (true) {
    if (size == bytes.size()) bytes.resize(std::min(size * 2, kReplyBytes + 1));
    const ssize_t count = ::read(file.number(), bytes.data() + size, std::min(bytes.size() - size, kChunk));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return systemError();
    if (count == 0) break;
    size += static_cast<std::size_t>(count);
    if (size > kReplyBytes) return "is larger than 1 GiB";
    progress(size);
  }
  bytes.resize(size);
  return {};
}

/// "LINE:COLUMN" of a byte, both from 1; columns count characters.
std::string placeOf(std::string_view bytes, std::size_t offset) {
  const std::string_view before = bytes.substr(0, offset);
  const auto line = 1 + std::count(before.begin(), before.end(), '\n');
  const std::size_t start = before.rfind('\n') == std::string_view::npos ? 0 : before.rfind('\n') + 1;
  const auto column = 1 + std::count_if(before.begin() + static_cast<std::ptrdiff_t>(start), before.end(),
                                        [](char byte) { return (byte & 0xC0) != 0x80; });
  return std::to_string(line) + ":" + std::to_string(column);
}

const char* kindName(const Value& value) {
  switch (value.kind()) {
    case Value::Kind::String:
      return "a string";
    case Value::Kind::Number:
      return value.asNumber()->isBoolean() ? "a boolean" : "a number";
    case Value::Kind::List:
      return "a list";
    case Value::Kind::Dictionary:
      return "a record";
    default:
      return "null";
  }
}

/// Why `listKey` leads to no list, with the keys that would.
std::string noList(const Dictionary& reply, const std::string& listKey, const Value& found) {
  std::string message =
      found.isNil() ? "no list under '" + listKey + "'" : "'" + listKey + "' is " + kindName(found) + ", not a list";
  std::string others;
  for (const Entry& entry : reply) {
    if (entry.value.isList()) others += (others.empty() ? "" : ", ") + entry.key.asString()->toUTF8Replacing();
  }
  return others.empty() ? message : message + " (lists here: " + others + ")";
}

Value findList(const Dictionary& reply, const std::string& listKey) {
  const String key = String::fromUTF8Replacing(listKey);
  if (const Value* direct = reply.find(key)) return *direct;
  return valueForKeyPathOrNil(reply, key);
}

}  // namespace

std::variant<Reply, std::string> readReply(const std::string& path, const std::string& listKey,
                                           const ReadProgress& progress) {
  const std::string name = path == "-" ? "standard input" : path;
  std::string bytes;
  if (const std::string reason = readAll(path, bytes, progress); !reason.empty()) return name + ": " + reason;

  JSONError error;
  const Value top = NSJSONSerialization::parse(std::string_view(bytes), &error);
  if (top.isNil()) return name + ":" + placeOf(bytes, error.offset) + ": " + error.reason;
  const Dictionary* reply = top.asDictionary();
  if (!reply) return name + ": the top level is " + kindName(top) + ", not a record";
  const Value found = findList(*reply, listKey);
  const List* records = found.asList();
  if (!records) return name + ": " + noList(*reply, listKey, found);
  for (std::size_t i = 0; i < records->size(); ++i) {
    const Value& record = (*records)[i];
    if (!record.isDictionary()) {
      std::string reason = name + ": ";
      return reason.append(listKey).append("[").append(std::to_string(i)).append("] is ").append(kindName(record)) +
             ", not a record";
    }
  }
  return Reply{*records, bytes.size()};
}

}  // namespace quorvel::command
