#include <algorithm>
#include <cstdlib>
#include <new>

#include <string.h>  // NOLINT(modernize-deprecated-headers): explicit_bzero

#include <quorvel/Platform/Foundation/Hash.h>
#include <quorvel/Platform/Foundation/Log.h>
#include <quorvel/Platform/Foundation/Value.h>
#include <quorvel/Platform/Foundation/ValueBlocks.h>

namespace quorvel {
namespace detail {
namespace {

// A dictionary up to this size is looked through; a larger one has an index.
constexpr std::size_t kIndexFrom = 17;
constexpr std::uint64_t kUpperHalf = 0xFFFFFFFF00000000;

thread_local Block* waiting = nullptr;
thread_local bool draining = false;

/// Destroys values in order. Their blocks lie scattered in memory: each is asked for some turns ahead.
void destroyValues(Value* values, std::size_t count) {
  constexpr std::size_t kAhead = 8;
  for (std::size_t i = 0; i < count; ++i) {
    if (i + kAhead < count) ValueBulk::prefetch(values[i + kAhead]);
    values[i].~Value();
  }
}

void destroyContents(Block* block) {
  switch (block->kind) {
    case BlockKind::Data:
      if (block->indexMask != 0) ::explicit_bzero(static_cast<DataBlock*>(block)->bytes(), block->size);
      break;
    case BlockKind::List:
      destroyValues(static_cast<ListBlock*>(block)->items(), block->size);
      break;
    case BlockKind::Dictionary:
      destroyValues(&static_cast<DictionaryBlock*>(block)->entries()->key, block->size * std::size_t{2});
      std::free(static_cast<DictionaryBlock*>(block)->index);
      break;
    case BlockKind::Object:
      static_cast<ObjectBlock*>(block)->object.~shared_ptr();
      break;
  }
}

}  // namespace

void destroy(Block* block) noexcept {
  if (draining) {
    block->references.store(reinterpret_cast<std::uintptr_t>(waiting), std::memory_order_relaxed);
    waiting = block;
    return;
  }
  draining = true;
  while (block) {
    destroyContents(block);
    blockcache::Pages::give(block, block->place);
    block = waiting;
    // NOLINTNEXTLINE(performance-no-int-to-ptr): destroy() put the pointer there
    if (block) waiting = reinterpret_cast<Block*>(block->references.load(std::memory_order_relaxed));
  }
  draining = false;
}

namespace {

template <class Type>
Type* beginBlock(void* memory, BlockKind kind, std::size_t capacity) {
  if (!memory) throw std::bad_alloc();
  Type* block = new (memory) Type;
  block->kind = kind;
  block->capacity = static_cast<std::uint32_t>(capacity);
  return block;
}

template <class Type>
Type* allocateBlock(BlockKind kind, std::size_t capacity, std::size_t elementBytes) {
  contract(capacity <= UINT32_MAX, "Value", "more elements than a container holds");
  return beginBlock<Type>(std::malloc(sizeof(Type) + capacity * elementBytes), kind, capacity);
}

template <class Type>
Type* allocateBlockAmong(blockcache::Pages& pages, BlockKind kind, std::size_t capacity, std::size_t elementBytes) {
  contract(capacity <= UINT32_MAX, "Value", "more elements than a container holds");
  blockcache::PagePlace place;
  void* memory = pages.take(sizeof(Type) + capacity * elementBytes, place);
  Type* block = beginBlock<Type>(memory, kind, capacity);
  block->place = place;
  return block;
}

/// A block that nobody shares with room for more elements; they move as bytes, as a Value holds no address of itself.
template <class Type, class Element>
Type* growBlock(Type* block, std::size_t room) {
  contract(room <= UINT32_MAX, "Value", "more elements than a container holds");
  const std::size_t bytes = sizeof(Type) + room * sizeof(Element);
  const bool liesAlone = block->place == 0;
  void* memory = liesAlone ? std::realloc(static_cast<void*>(block), bytes) : std::malloc(bytes);
  if (!memory) throw std::bad_alloc();
  if (!liesAlone) {
    std::memcpy(memory, static_cast<void*>(block), sizeof(Type) + block->size * sizeof(Element));
    blockcache::Pages::give(block, block->place);
  }
  block = static_cast<Type*>(memory);
  block->place = 0;
  block->capacity = static_cast<std::uint32_t>(room);
  return block;
}

/// Makes `block` one that nobody shares, with room for `capacity` elements.
template <class Type, class Element>
Type* uniqueBlock(Type* block, BlockKind kind, std::size_t capacity) {
  if (!block) return allocateBlock<Type>(kind, std::max<std::size_t>(capacity, 4), sizeof(Element));
  const bool shared = block->isShared();
  if (!shared && capacity <= block->capacity) return block;
  const std::size_t room = capacity > block->capacity ? std::max<std::size_t>(capacity, block->size * 2U)
                                                      : std::max<std::size_t>(capacity, block->size);
  if (!shared) return growBlock<Type, Element>(block, room);
  Type* copy = allocateBlock<Type>(kind, room, sizeof(Element));
  const auto* from = reinterpret_cast<const Element*>(block + 1);
  std::uninitialized_copy_n(from, block->size, reinterpret_cast<Element*>(copy + 1));
  copy->size = block->size;
  release(block);
  return copy;
}

void buildIndex(DictionaryBlock* block) {
  std::size_t slots = 32;
  while (slots < block->capacity * 2ULL) slots *= 2;
  std::free(block->index);
  block->index = static_cast<std::uint64_t*>(std::calloc(slots, sizeof(std::uint64_t)));
  if (!block->index) throw std::bad_alloc();
  block->indexMask = static_cast<std::uint32_t>(slots - 1);
}

void addToIndex(DictionaryBlock* block, std::uint64_t hash, std::size_t place) {
  std::size_t slot = hash & block->indexMask;
  while (block->index[slot] != 0) slot = (slot + 1) & block->indexMask;
  block->index[slot] = (hash & kUpperHalf) | (place + 1);
}

void reindex(DictionaryBlock* block) {
  if (block->size < kIndexFrom) {
    std::free(std::exchange(block->index, nullptr));
    return;
  }
  buildIndex(block);
  for (std::size_t i = 0; i < block->size; ++i) addToIndex(block, block->entries()[i].key.hash(), i);
}

/// The place of the entry whose key `matches`, or the dictionary's size.
template <class Matches, class Hash>
std::size_t findEntry(const DictionaryBlock* block, Matches matches, Hash hash) {
  if (!block) return 0;
  if (!block->index) {
    std::size_t i = 0;
    while (i < block->size && !matches(block->entries()[i].key)) ++i;
    return i;
  }
  const std::uint64_t wanted = hash();
  for (std::size_t slot = wanted & block->indexMask; block->index[slot] != 0; slot = (slot + 1) & block->indexMask) {
    if (((block->index[slot] ^ wanted) & kUpperHalf) != 0) continue;
    const std::size_t place = (block->index[slot] & ~kUpperHalf) - 1;
    if (matches(block->entries()[place].key)) return place;
  }
  return block->size;
}

std::uint64_t hashText(StringView text) { return hashing::bytes(text.data(), text.size() * sizeof(char16_t)); }

std::size_t findText(const DictionaryBlock* block, StringView key) {
  return findEntry(
      block, [key](const Value& candidate) { return candidate.isString() && candidate.text() == key; },
      [key] { return hashText(key); });
}

}  // namespace

std::size_t findKey(const DictionaryBlock* block, const Value& key) {
  if (key.isString()) return findText(block, key.text());
  return findEntry(block, [&key](const Value& candidate) { return candidate == key; }, [&key] { return key.hash(); });
}

namespace {

bool hasTextBefore(const DictionaryBlock* block, StringView key) {
  const Entry* entries = block->entries();
  return std::any_of(entries, entries + block->size, [key](const Entry& entry) { return entry.key.text() == key; });
}

/// Moves the entries whose key did not come before to the front; the block's size grows to their number.
template <class CameBefore, class Kept>
void keepFirstOfEach(DictionaryBlock* block, std::size_t count, CameBefore cameBefore, Kept kept) {
  Entry* entries = block->entries();
  for (std::size_t i = 0; i < count; ++i) {
    Entry* place = entries + block->size;
    if (cameBefore(entries[i].key)) {
      std::destroy_at(entries + i);
      continue;
    }
    if (place != entries + i) std::memcpy(static_cast<void*>(place), entries + i, sizeof(Entry));
    kept(place->key);
    ++block->size;
  }
}

}  // namespace

void ValueBulk::prefetch(const Value& value) {
  if (value.isCounted()) __builtin_prefetch(value.block(), 1);
}

List ValueBulk::list(Value* elements, std::size_t count, blockcache::Pages& pages) {
  List result;
  if (count == 0) return result;
  result.block_ = allocateBlockAmong<ListBlock>(pages, BlockKind::List, count, sizeof(Value));
  std::memcpy(static_cast<void*>(result.block_->items()), elements, count * sizeof(Value));
  result.block_->size = static_cast<std::uint32_t>(count);
  return result;
}

Dictionary ValueBulk::dictionary(Value* keysAndValues, std::size_t count, bool distinct, blockcache::Pages& pages) {
  Dictionary result;
  if (count == 0) return result;
  auto* block = allocateBlockAmong<DictionaryBlock>(pages, BlockKind::Dictionary, count, sizeof(Entry));
  result.block_ = block;
  std::memcpy(static_cast<void*>(block->entries()), keysAndValues, count * sizeof(Entry));
  if (count >= kIndexFrom) {
    buildIndex(block);
    keepFirstOfEach(
        block, count, [=](const Value& key) { return !distinct && findText(block, key.text()) != block->size; },
        [=](const Value& key) { addToIndex(block, key.hash(), block->size); });
    if (block->size < kIndexFrom) reindex(block);
  } else if (distinct) {
    block->size = static_cast<std::uint32_t>(count);
  } else {
    keepFirstOfEach(
        block, count, [=](const Value& key) { return hasTextBefore(block, key.text()); }, [](const Value&) {});
  }
  return result;
}

}  // namespace detail

using detail::BlockKind;
using detail::DataBlock;
using detail::DictionaryBlock;
using detail::ListBlock;
using detail::ObjectBlock;

// Data

Data::Data(std::span<const std::uint8_t> bytes) {
  if (bytes.empty()) return;
  block_ = detail::allocateBlock<DataBlock>(BlockKind::Data, bytes.size(), 1);
  block_->size = static_cast<std::uint32_t>(bytes.size());
  std::memcpy(block_->bytes(), bytes.data(), bytes.size());
}
Data Data::secret(std::size_t size, std::span<std::uint8_t>& room) {
  Data data;
  room = {};
  if (size == 0) return data;
  data.block_ = detail::allocateBlock<DataBlock>(BlockKind::Data, size, 1);
  data.block_->size = static_cast<std::uint32_t>(size);
  data.block_->indexMask = 1;
  room = {data.block_->bytes(), size};
  std::fill(room.begin(), room.end(), std::uint8_t{0});
  return data;
}
Data Data::secret(std::span<const std::uint8_t> bytes) {
  std::span<std::uint8_t> room;
  Data data = secret(bytes.size(), room);
  std::copy(bytes.begin(), bytes.end(), room.begin());
  return data;
}
Data::Data(const Data& other) noexcept : block_(other.block_) { detail::retain(block_); }
Data::~Data() { detail::release(block_); }
std::span<const std::uint8_t> Data::bytes() const noexcept {
  if (!block_) return {};
  return {block_->bytes(), block_->size};
}
bool operator==(const Data& a, const Data& b) { return std::ranges::equal(a.bytes(), b.bytes()); }

// List

List::List(std::initializer_list<Value> values) {
  reserve(values.size());
  for (const Value& value : values) append(value);
}
List::List(const List& other) noexcept : block_(other.block_) { detail::retain(block_); }
List::~List() { detail::release(block_); }

std::size_t List::size() const noexcept { return block_ ? block_->size : 0; }
const Value* List::begin() const noexcept { return block_ ? block_->items() : nullptr; }
const Value* List::end() const noexcept { return block_ ? block_->items() + block_->size : nullptr; }
const Value& List::operator[](std::size_t index) const {
  contract(index < size(), "List", "an index past the end");
  return block_->items()[index];
}

void List::makeUnique(std::size_t capacity) {
  block_ = detail::uniqueBlock<ListBlock, Value>(block_, BlockKind::List, capacity);
}
void List::reserve(std::size_t capacity) {
  if (capacity > size()) makeUnique(capacity);
}
void List::append(Value value) { insert(size(), std::move(value)); }
void List::appendContentsOf(const List& values) {
  // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): the list itself may be appended
  const List held = values;
  makeUnique(size() + held.size());
  for (const Value& value : held) append(value);
}
void List::insert(std::size_t index, Value value) {
  contract(index <= size(), "List", "an index past the end");
  contract(!value.isNil(), "List", "nil as an element");
  makeUnique(size() + 1);
  Value* place = block_->items() + index;
  std::memmove(static_cast<void*>(place + 1), place, (block_->size - index) * sizeof(Value));
  new (place) Value(std::move(value));
  ++block_->size;
}
void List::remove(std::size_t index) {
  contract(index < size(), "List", "an index past the end");
  makeUnique(size());
  Value* place = block_->items() + index;
  const Value removed = std::move(*place);
  --block_->size;
  std::memmove(static_cast<void*>(place), place + 1, (block_->size - index) * sizeof(Value));
}
void List::set(std::size_t index, Value value) {
  contract(!value.isNil(), "List", "nil as an element");
  mutableAt(index) = std::move(value);
}
Value& List::mutableAt(std::size_t index) {
  contract(index < size(), "List", "an index past the end");
  makeUnique(size());
  return block_->items()[index];
}

// Dictionary

Dictionary::Dictionary(std::initializer_list<Entry> entries) {
  reserve(entries.size());
  for (const Entry& entry : entries) set(entry.key, entry.value);
}
Dictionary::Dictionary(const Dictionary& other) noexcept : block_(other.block_) { detail::retain(block_); }
Dictionary::~Dictionary() { detail::release(block_); }

std::size_t Dictionary::size() const noexcept { return block_ ? block_->size : 0; }
const Entry* Dictionary::begin() const noexcept { return block_ ? block_->entries() : nullptr; }
const Entry* Dictionary::end() const noexcept { return block_ ? block_->entries() + block_->size : nullptr; }

std::size_t Dictionary::indexOf(const Value& key) const { return detail::findKey(block_, key); }
const Value* Dictionary::find(StringView key) const {
  if (key.isNil()) return nullptr;
  const std::size_t place = detail::findText(block_, key);
  return place < size() ? &block_->entries()[place].value : nullptr;
}
const Value* Dictionary::find(const Value& key) const {
  const std::size_t place = indexOf(key);
  return place < size() ? &block_->entries()[place].value : nullptr;
}
const Value& Dictionary::operator[](StringView key) const {
  static const Value kAbsent;
  const Value* value = find(key);
  return value ? *value : kAbsent;
}

void Dictionary::makeUnique(std::size_t capacity) {
  const std::size_t capacityBefore = block_ ? block_->capacity : 0;
  block_ = detail::uniqueBlock<DictionaryBlock, Entry>(block_, BlockKind::Dictionary, capacity);
  const bool stale = !block_->index || block_->capacity != capacityBefore;
  if (stale && block_->size >= detail::kIndexFrom) detail::reindex(block_);
}
void Dictionary::reserve(std::size_t capacity) {
  if (capacity > size()) makeUnique(capacity);
}
void Dictionary::appendNew(Value key, Value value) {
  makeUnique(size() + 1);
  Entry* place = block_->entries() + block_->size;
  new (place) Entry{std::move(key), std::move(value)};
  ++block_->size;
  if (block_->index) {
    detail::addToIndex(block_, place->key.hash(), block_->size - 1);
  } else if (block_->size >= detail::kIndexFrom) {
    detail::reindex(block_);
  }
}
void Dictionary::set(Value key, Value value) {
  contract(!key.isNil(), "Dictionary", "nil as a key");
  if (value.isNil()) {
    remove(key);
    return;
  }
  const std::size_t place = indexOf(key);
  if (place == size()) return appendNew(std::move(key), std::move(value));
  makeUnique(size());
  block_->entries()[place].value = std::move(value);
}
bool Dictionary::insert(Value key, Value value) {
  contract(!key.isNil() && !value.isNil(), "Dictionary", "nil as a key or value");
  if (indexOf(key) != size()) return false;
  appendNew(std::move(key), std::move(value));
  return true;
}
bool Dictionary::remove(const Value& key) {
  const std::size_t place = indexOf(key);
  if (place == size()) return false;
  makeUnique(size());
  Entry* entry = block_->entries() + place;
  const Entry removed = std::move(*entry);
  --block_->size;
  std::memmove(static_cast<void*>(entry), entry + 1, (block_->size - place) * sizeof(Entry));
  if (block_->index) detail::reindex(block_);
  return true;
}
Value* Dictionary::mutableFind(StringView key) {
  if (key.isNil()) return nullptr;
  const std::size_t place = detail::findText(block_, key);
  if (place == size()) return nullptr;
  makeUnique(size());
  return &block_->entries()[place].value;
}

// Value

Value::Value(Number number) noexcept : Value() {
  std::uint64_t payload = number.bits();
  if (number.isFloating()) {
    const double floating = number.doubleValue();
    std::memcpy(&payload, &floating, sizeof payload);
  }
  std::memcpy(pad_, &payload, sizeof payload);
  tag_ = static_cast<std::uint8_t>(kNumberTag + static_cast<std::uint8_t>(number.kind()));
}
Value::Value(StringView text) : Value() {
  if (!text.isNil()) new (static_cast<void*>(this)) String(text);
}
Value::Value(Date date) noexcept : Value() {
  std::memcpy(pad_, &date.secondsSince1970, sizeof date.secondsSince1970);
  tag_ = kDateTag;
}
Value::Value(Data data) noexcept : Value() {
  new (static_cast<void*>(pad_)) Data(std::move(data));
  tag_ = kDataTag;
}
Value::Value(List list) noexcept : Value() {
  new (static_cast<void*>(pad_)) List(std::move(list));
  tag_ = kListTag;
}
Value::Value(Dictionary dictionary) noexcept : Value() {
  new (static_cast<void*>(pad_)) Dictionary(std::move(dictionary));
  tag_ = kDictionaryTag;
}
Value::Value(std::shared_ptr<const Object> object) : Value() {
  if (!object) return;
  auto* block = detail::allocateBlock<ObjectBlock>(BlockKind::Object, 0, 1);
  block->object = std::move(object);
  detail::Block* base = block;
  std::memcpy(pad_, static_cast<const void*>(&base), sizeof base);
  tag_ = kObjectTag;
}

void Value::retain() const noexcept {
  if (tag_ != String::kSharedTag) return detail::retain(block());
  // A copy of the text counts one owner up; that owner is this value's copy.
  alignas(String) unsigned char bytes[sizeof(String)];
  new (static_cast<void*>(bytes)) String(*place<String>());
}
void Value::release() noexcept {
  if (tag_ == String::kSharedTag) {
    place<String>()->~String();
  } else {
    detail::release(block());
  }
}

Value::Kind Value::kind() const noexcept {
  if (isString()) return Kind::String;
  if (isNumber()) return Kind::Number;
  switch (tag_) {
    case kNullTag:
      return Kind::Null;
    case kDateTag:
      return Kind::Date;
    case kDataTag:
      return Kind::Data;
    case kListTag:
      return Kind::List;
    case kDictionaryTag:
      return Kind::Dictionary;
    case kObjectTag:
      return Kind::Object;
    default:
      return Kind::Nil;
  }
}

std::optional<Number> Value::asNumber() const noexcept {
  if (!isNumber()) return nil;
  std::uint64_t payload;
  std::memcpy(&payload, pad_, sizeof payload);
  double floating;
  std::memcpy(&floating, pad_, sizeof floating);
  switch (static_cast<Number::Kind>(tag_ - kNumberTag)) {
    case Number::Kind::Boolean:
      return Number(payload != 0);
    case Number::Kind::Integer:
      return Number(static_cast<std::int64_t>(payload));
    case Number::Kind::Unsigned:
      return Number(payload);
    case Number::Kind::Double:
      return Number(floating);
    case Number::Kind::Float:
      return Number(static_cast<float>(floating));
  }
  return nil;
}

std::optional<Date> Value::asDate() const noexcept {
  if (tag_ != kDateTag) return nil;
  Date date;
  std::memcpy(&date.secondsSince1970, pad_, sizeof date.secondsSince1970);
  return date;
}

const Object* Value::asObject() const noexcept {
  return tag_ == kObjectTag ? static_cast<const ObjectBlock*>(block())->object.get() : nullptr;
}

}  // namespace quorvel
