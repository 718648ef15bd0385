#include <algorithm>
#include <bit>
#include <iterator>

#include <apps/quorvel/Binding.h>
#include <apps/quorvel/Operation.h>
#include <apps/quorvel/operations/Tables.h>

namespace quorvel::command {
namespace {

/// FNV-1a over the units of texts of either width.
class UnitHash {
 public:
  template <class Text>
  UnitHash& add(const Text& text) {
    for (const auto unit : text) add(static_cast<std::uint16_t>(unit));
    return *this;
  }
  UnitHash& add(std::uint16_t unit) {
    hash_ = (hash_ ^ unit) * 0x100000001B3U;
    return *this;
  }
  [[nodiscard]] std::size_t value() const { return static_cast<std::size_t>(hash_ ^ hash_ >> 32); }

 private:
  std::uint64_t hash_ = 0xCBF29CE484222325U;
};

/// Names are ASCII.
bool isSame(std::string_view name, std::string_view text) { return name == text; }
bool isSame(std::string_view name, StringView text) {
  return name.size() == text.size() && std::equal(name.begin(), name.end(), text.begin());
}

/// From families and names, full ones and those of C++, to operations.
class Index {
 public:
  struct Slot {
    std::string_view family;
    std::string_view name;
    const Operation* operation = nullptr;  // nullptr where the name is that of several
  };

  explicit Index(std::span<const Operation> operations) : slots_(std::bit_ceil(operations.size() * 8)) {
    for (const Operation& operation : operations)
      find(operation.family, operation.name) = {operation.family, operation.name, &operation};
    for (const Operation& operation : operations) addFunctionName(operation);
  }

  /// The slot of that name, or the free one where it would be.
  template <class Text>
  [[nodiscard]] Slot& find(Text family, Text name) {
    std::size_t at = UnitHash().add(family).add(std::uint16_t{0}).add(name).value();
    for (;; ++at) {
      Slot& slot = slots_[at & (slots_.size() - 1)];
      if (slot.family.empty() || (isSame(slot.family, family) && isSame(slot.name, name))) return slot;
    }
  }

 private:
  void addFunctionName(const Operation& operation) {
    const std::string_view name = functionName(operation);
    Slot& slot = find(operation.family, name);
    if (slot.family.empty()) {
      slot = {operation.family, name, &operation};
    } else if (slot.operation && slot.operation->name != name && slot.operation != &operation) {
      slot.operation = nullptr;
    }
  }

  std::vector<Slot> slots_;
};

std::string quoted(StringView text) { return joined({"'", String(text).toUTF8Replacing(), "'"}); }

std::string severalText(StringView family, StringView name) {
  std::string text = joined({quoted(name), " names several operations of ", quoted(family), ":"});
  for (const Operation& operation : allOperations()) {
    if (isSame(operation.family, family) && isSame(functionName(operation), name))
      text += joined({" '", operation.name, "'"});
  }
  return text;
}

std::string unknownText(StringView family, StringView name) {
  const bool hasFamily = std::ranges::any_of(
      allOperations(), [family](const Operation& operation) { return isSame(operation.family, family); });
  if (!hasFamily) return joined({"unknown family ", quoted(family)});
  return joined({"family ", quoted(family), " has no operation ", quoted(name)});
}

}  // namespace

std::string joined(std::initializer_list<std::string_view> pieces) {
  std::string text;
  for (const std::string_view piece : pieces) text += piece;
  return text;
}

std::string_view functionName(const Operation& operation) {
  const std::string_view qualified = operation.function;
  if (!qualified.empty()) return qualified.substr(qualified.rfind(':') + 1);
  return operation.name.substr(0, operation.name.find_first_of(":("));
}

std::vector<std::string_view> parameterNames(const Operation& operation) {
  std::vector<std::string_view> names;
  for (std::string_view rest = operation.parameters; !rest.empty();) {
    const std::size_t end = std::min(rest.find(", "), rest.size());
    names.push_back(rest.substr(0, end));
    rest.remove_prefix(std::min(end + 2, rest.size()));
  }
  return names;
}

std::span<const Operation> allOperations() {
  static const std::vector<Operation> operations = [] {
    std::vector<Operation> rows;
    std::vector<std::string_view> families;
    for (const auto topic : kTopics) {
      for (const Operation& operation : topic()) {
        rows.push_back(operation);
        if (std::ranges::find(families, operation.family) == families.end()) families.push_back(operation.family);
      }
    }
    // A family that several topics have stands in one piece, where it comes first.
    std::vector<Operation> all;
    for (const std::string_view family : families)
      std::ranges::copy_if(rows, std::back_inserter(all),
                           [family](const Operation& row) { return row.family == family; });
    return all;
  }();
  return operations;
}

const Operation* findOperation(StringView family, StringView name, std::string& error) {
  static Index index(allOperations());
  const Index::Slot& slot = index.find(family, name);
  if (!slot.operation) error = slot.family.empty() ? unknownText(family, name) : severalText(family, name);
  return slot.operation;
}

namespace detail {

void refuseCount(const Operation& operation, std::size_t count, std::string& error) {
  const std::size_t wanted = parameterNames(operation).size();
  const std::string arguments = wanted == 0   ? "no arguments"
                                : wanted == 1 ? "1 argument"
                                              : joined({std::to_string(wanted), " arguments"});
  const std::string names = wanted == 0 ? "" : joined({" (", operation.parameters, ")"});
  error = joined({"'", operation.name, "' takes ", arguments, names, ", got ", std::to_string(count)});
}

void placeRefusal(const Operation& operation, std::size_t index, std::string& error) {
  error = joined({"'", operation.name, "', argument ", std::to_string(index + 1), " (",
                  parameterNames(operation)[index], "): ", error});
}

void refuseDepth(const Operation& operation, std::string& error) {
  error = joined({"'", operation.name, "': the result is nested too deeply for JSON"});
}

}  // namespace detail
}  // namespace quorvel::command
