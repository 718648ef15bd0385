// The binary form. Objects are read when something names them, each once, without recursion.
#include <algorithm>
#include <bit>
#include <vector>

#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/Foundation/PropertyList.h>
#include <quorvel/Platform/Foundation/Unicode.h>

namespace quorvel {
namespace {

constexpr std::string_view kBinaryHeader = "bplist00";
constexpr std::size_t kTrailerBytes = 32;
/// Dates count from 2001-01-01 00:00:00 UTC.
constexpr double kReferenceDate = 978307200;

class BinaryReader {
 public:
  explicit BinaryReader(std::string_view bytes) : bytes_(bytes), budget_(bytes.size()) {}

  std::optional<Value> read() {
    if (!readTrailer() || !begin(top_)) return std::nullopt;
    while (!open_.empty()) {
      if (!step()) return std::nullopt;
    }
    return std::move(slots_[top_].value);
  }

 private:
  enum class State : std::uint8_t { Unread, Open, Done };
  struct Slot {
    Value value;
    State state = State::Unread;
    std::uint16_t height = 0;  // levels of lists and dictionaries, itself included
  };
  struct Frame {
    std::size_t object;
    std::size_t references;  // where they stand; a dictionary's keys first
    std::size_t count;
    bool isDictionary;
    std::size_t next = 0;
    std::uint16_t height = 0;
  };

  /// A big-endian number of at most eight bytes; the caller has checked that they are there.
  [[nodiscard]] std::uint64_t numberAt(std::size_t at, std::size_t size) const {
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < size; ++i) number = number << 8 | static_cast<unsigned char>(bytes_[at + i]);
    return number;
  }

  bool readTrailer() {
    if (bytes_.size() < kBinaryHeader.size() + kTrailerBytes || !bytes_.starts_with(kBinaryHeader)) return false;
    end_ = bytes_.size() - kTrailerBytes;
    offsetSize_ = numberAt(end_ + 6, 1);
    referenceSize_ = numberAt(end_ + 7, 1);
    const std::uint64_t count = numberAt(end_ + 8, 8);
    top_ = numberAt(end_ + 16, 8);
    table_ = numberAt(end_ + 24, 8);
    const auto isSize = [](std::size_t size) { return size >= 1 && size <= 8; };
    if (!isSize(offsetSize_) || !isSize(referenceSize_) || table_ > end_) return false;
    if (count > (end_ - table_) / offsetSize_ || count > limits::kPropertyListObjects || top_ >= count) return false;
    slots_.resize(count);
    return true;
  }

  /// Goes on with the innermost open list or dictionary.
  bool step() {
    Frame& frame = open_.back();
    if (frame.next == frame.count) return finish();
    const std::size_t child = numberAt(frame.references + frame.next * referenceSize_, referenceSize_);
    if (child >= slots_.size() || slots_[child].state == State::Open) return false;  // one that holds itself
    if (slots_[child].state == State::Unread) return begin(child);
    frame.height = std::max(frame.height, slots_[child].height);
    ++frame.next;
    return true;
  }

  bool finish() {
    const Frame frame = open_.back();
    open_.pop_back();
    if (frame.height >= limits::kPropertyListDepth) return false;
    std::optional<Value> value = frame.isDictionary ? dictionaryOf(frame) : listOf(frame);
    if (!value) return false;
    return done(frame.object, std::move(*value), static_cast<std::uint16_t>(frame.height + 1));
  }

  [[nodiscard]] const Value& childOf(const Frame& frame, std::size_t index) const {
    return slots_[numberAt(frame.references + index * referenceSize_, referenceSize_)].value;
  }
  [[nodiscard]] std::optional<Value> listOf(const Frame& frame) const {
    List list;
    list.reserve(frame.count);
    for (std::size_t i = 0; i < frame.count; ++i) list.append(childOf(frame, i));
    return list;
  }
  [[nodiscard]] std::optional<Value> dictionaryOf(const Frame& frame) const {
    Dictionary dictionary;
    const std::size_t pairs = frame.count / 2;
    for (std::size_t i = 0; i < pairs; ++i) {
      if (!childOf(frame, i).isString()) return std::nullopt;
      dictionary.set(childOf(frame, i), childOf(frame, pairs + i));
    }
    return dictionary;
  }

  bool done(std::size_t object, Value value, std::uint16_t height = 0) {
    slots_[object] = {std::move(value), State::Done, height};
    return true;
  }

  /// True when `count` items of `size` bytes stand at `at`. Objects may overlap, so what they take together is bounded.
  bool take(std::size_t at, std::uint64_t count, std::size_t size) {
    if (at > table_ || count > (table_ - at) / size || count * size > budget_) return false;
    budget_ -= count * size;
    return true;
  }

  /// Reads an object, or opens it when it is a list or a dictionary.
  bool begin(std::size_t object) {
    std::size_t at = numberAt(table_ + object * offsetSize_, offsetSize_);
    if (at < kBinaryHeader.size() || !take(at, 1, 1)) return false;
    const std::uint64_t marker = numberAt(at++, 1);
    const std::uint64_t low = marker & 0xF;
    switch (marker >> 4) {
      case 0x0:
        if (low == 8 || low == 9) return done(object, low == 9);
        return low == 0 && done(object, null);
      case 0x1:
        return readInteger(object, at, low);
      case 0x2:
        return readReal(object, at, low);
      case 0x3:
        if (low != 3 || !take(at, 1, 8)) return false;
        return done(object, Date{kReferenceDate + std::bit_cast<double>(numberAt(at, 8))});
      default:
        return readCounted(object, at, marker >> 4, low);
    }
  }

  bool readInteger(std::size_t object, std::size_t at, std::uint64_t power) {
    const std::size_t size = std::size_t{1} << power;
    if (power > 4 || !take(at, 1, size)) return false;
    if (size < 8) return done(object, numberAt(at, size));
    if (size == 8) return done(object, static_cast<std::int64_t>(numberAt(at, 8)));
    return numberAt(at, 8) == 0 && done(object, numberAt(at + 8, 8));
  }

  bool readReal(std::size_t object, std::size_t at, std::uint64_t power) {
    if ((power != 2 && power != 3) || !take(at, 1, std::size_t{1} << power)) return false;
    if (power == 3) return done(object, std::bit_cast<double>(numberAt(at, 8)));
    return done(object, std::bit_cast<float>(static_cast<std::uint32_t>(numberAt(at, 4))));
  }

  bool readCounted(std::size_t object, std::size_t at, std::uint64_t kind, std::uint64_t count) {
    if (count == 0xF) {
      if (!take(at, 1, 1)) return false;
      const std::uint64_t marker = numberAt(at++, 1);
      const std::size_t size = std::size_t{1} << (marker & 0xF);
      if (marker >> 4 != 1 || size > 8 || !take(at, 1, size)) return false;
      count = numberAt(at, size);
      at += size;
    }
    switch (kind) {
      case 0x4:
        return take(at, count, 1) && done(object, dataAt(at, count));
      case 0x5:
        return take(at, count, 1) && readASCII(object, bytes_.substr(at, count));
      case 0x6:
        return take(at, count, 2) && readUTF16(object, at, count);
      case 0xA:
        return take(at, count, referenceSize_) && open({object, at, count, false});
      case 0xD:
        return take(at, count, 2 * referenceSize_) && open({object, at, 2 * count, true});
      default:
        return false;
    }
  }

  [[nodiscard]] Data dataAt(std::size_t at, std::size_t count) const {
    return Data({reinterpret_cast<const std::uint8_t*>(bytes_.data()) + at, count});
  }
  bool readASCII(std::size_t object, std::string_view text) {
    if (std::any_of(text.begin(), text.end(), [](char byte) { return (byte & 0x80) != 0; })) return false;
    return done(object, String::fromASCII(text));
  }
  bool readUTF16(std::size_t object, std::size_t at, std::size_t count) {
    const String text = String::build(count, [&](char16_t* out) {
      for (std::size_t i = 0; i < count; ++i) out[i] = static_cast<char16_t>(numberAt(at + 2 * i, 2));
      return count;
    });
    return unicode::isWellFormed(text) && done(object, text);
  }
  bool open(Frame frame) {
    if (open_.size() >= limits::kPropertyListDepth) return false;
    slots_[frame.object].state = State::Open;
    open_.push_back(frame);
    return true;
  }

  std::string_view bytes_;
  std::size_t budget_;
  std::size_t end_ = 0;
  std::size_t table_ = 0;
  std::size_t top_ = 0;
  std::size_t offsetSize_ = 0;
  std::size_t referenceSize_ = 0;
  std::vector<Slot> slots_;
  std::vector<Frame> open_;
};

}  // namespace

bool isPropertyList(std::string_view bytes) {
  if (bytes.starts_with(kBinaryHeader)) return true;
  if (bytes.starts_with("\xEF\xBB\xBF")) bytes.remove_prefix(3);
  bytes.remove_prefix(std::min(bytes.find_first_not_of(" \t\r\n"), bytes.size()));
  return bytes.starts_with("<?xml") || bytes.starts_with("<!DOCTYPE plist") || bytes.starts_with("<plist");
}

std::optional<Value> parsePropertyList(std::string_view bytes) {
  if (bytes.size() > limits::kResourceFileBytes) return std::nullopt;
  if (bytes.starts_with(kBinaryHeader)) return BinaryReader(bytes).read();
  return detail::parseXMLPropertyList(bytes);
}

}  // namespace quorvel
