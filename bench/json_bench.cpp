// JSON read and written: a reply of a kilobyte and a message list of a megabyte, half of its text Korean.
// What a reader makes is destroyed inside the measured loop, for all peers alike.
#include <charconv>
#include <cstring>

#include <bench/Cases.h>

#include <quorvel/Extensions/Foundation/NSDictionary+ConvertJSON.h>
#include <quorvel/Extensions/Foundation/NSString+ConvertJSON.h>
#include <quorvel/Platform/Foundation/NSJSONSerialization.h>
#include <quorvel/Platform/Foundation/Unicode.h>

#if QUORVEL_HAVE_QT
#include <QJsonDocument>
#include <QJsonObject>
#endif
#if QUORVEL_HAVE_RAPIDJSON
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#endif
#if QUORVEL_HAVE_NLOHMANN
#include <nlohmann/json.hpp>
#endif
#if QUORVEL_HAVE_SIMDJSON
#include <simdjson.h>
#endif

namespace quorvel::bench {
namespace {

/// A list of messages as a server answers it, of about `bytes` bytes.
std::string messageList(std::size_t bytes) {
  const std::string words = *text(Script::Mixed, bytes).toUTF8();
  const std::string rooms[] = {"개발팀 Dev", "日本出張", "가족", "Design & QA <web>", "여행 준비방"};
  std::string out = R"({"result":"Y","total":23646,"next":null,"list":[)";
  std::size_t at = 0;
  for (std::int64_t number = 1; out.size() < bytes; ++number) {
    std::size_t end = words.find(' ', at + 10 + static_cast<std::size_t>(number * 7919 % 60));
    if (end == std::string::npos) end = words.size();
    const std::string sentAt = std::to_string(1500000726000 + number * 1234567);
    out += number == 1 ? "" : ",";
    out += R"({"msgNo":)" + std::to_string(number) + R"(,"room":")" + rooms[number % 5] + R"(","sender":)" +
           std::to_string(number % 3) + R"(,"text":")" + words.substr(at, end - at) + R"(","sentAt":)" +
           (number % 4 == 0 ? std::string("\"").append(sentAt).append("\"") : sentAt) + R"(,"read":)" +
           (number % 3 ? R"("Y")" : "null") + R"(,"edited":)" + (number % 2 ? "false" : R"("true")") + R"(,"unread":)" +
           (number % 5 ? std::string("\"").append(std::to_string(number)).append("\"") : std::to_string(number)) +
           R"(,"topic":0)" +
           (number % 16 ? "" : R"(,"attach":{"name":"여행 사진 (3).heic","size":77619409,"seconds":12.5})") + "}";
    at = end == words.size() ? 0 : end + 1;
  }
  return out + "]}";
}

#if QUORVEL_HAVE_RAPIDJSON

constexpr unsigned kExact = rapidjson::kParseValidateEncodingFlag | rapidjson::kParseFullPrecisionFlag;
using Document16 = rapidjson::GenericDocument<rapidjson::UTF16<char16_t>>;

/// Writes with sorted members and leaves the document as it is.
template <class Node, class Out>
void writeSorted(const Node& node, Out& out) {
  if (node.IsObject()) {
    std::vector<const typename Node::Member*> members;
    for (const auto& member : node.GetObject()) members.push_back(&member);
    std::sort(members.begin(), members.end(), [](const auto* a, const auto* b) {
      return std::string_view(a->name.GetString(), a->name.GetStringLength()) <
             std::string_view(b->name.GetString(), b->name.GetStringLength());
    });
    out.StartObject();
    for (const auto* member : members) {
      out.Key(member->name.GetString(), member->name.GetStringLength());
      writeSorted(member->value, out);
    }
    out.EndObject();
  } else if (node.IsArray()) {
    out.StartArray();
    for (const auto& element : node.GetArray()) writeSorted(element, out);
    out.EndArray();
  } else {
    node.Accept(out);
  }
}

#endif

#if QUORVEL_HAVE_SIMDJSON

/// The least that a tree of UTF-16 text can be: nodes of sixteen bytes, and memory that is given back all at once.
class Arena {
 public:
  template <class T>
  T* allocate(std::size_t count) {
    const std::size_t bytes = (count * sizeof(T) + 15) / 16 * 16;
    if (left_ < bytes) {
      left_ = std::max<std::size_t>(bytes, 64 * 1024);
      chunks_.push_back(std::make_unique_for_overwrite<char[]>(left_));
      at_ = chunks_.back().get();
    }
    left_ -= bytes;
    return reinterpret_cast<T*>(std::exchange(at_, at_ + bytes));
  }

 private:
  std::vector<std::unique_ptr<char[]>> chunks_;
  char* at_ = nullptr;
  std::size_t left_ = 0;
};

struct Node {
  enum class Kind : std::uint32_t { Null, Boolean, Integer, Double, Text, List, Dictionary } kind;
  std::uint32_t size;
  union {
    std::int64_t integer;
    double floating;
    const char16_t* text;
    const Node* nodes;
  };
};

class ArenaReader {
 public:
  Node read(simdjson::ondemand::value value) {
    using simdjson::ondemand::json_type;
    Node node{Node::Kind::Null, 0, {0}};
    switch (value.type()) {
      case json_type::array:
        return readList(value.get_array());
      case json_type::object:
        return readDictionary(value.get_object());
      case json_type::string:
        return readText(value.get_string());
      case json_type::number:
        return readNumber(value.get_number());
      case json_type::boolean:
        node.kind = Node::Kind::Boolean;
        node.integer = bool(value.get_bool());
        return node;
      case json_type::null:
        return node;
    }
    return node;
  }

 private:
  Node readText(std::string_view bytes) {
    char16_t* units = arena_.allocate<char16_t>(bytes.size());
    const std::size_t size = unicode::utf8ToUTF16(bytes, units);
    Node node{Node::Kind::Text, static_cast<std::uint32_t>(size), {0}};
    node.text = units;
    return node;
  }
  static Node readNumber(simdjson::ondemand::number number) {
    Node node{number.is_double() ? Node::Kind::Double : Node::Kind::Integer, 0, {0}};
    if (number.is_double()) {
      node.floating = number.get_double();
    } else {
      node.integer = number.get_int64();
    }
    return node;
  }
  Node readList(simdjson::ondemand::array list) {
    const std::size_t first = waiting_.size();
    for (auto element : list) waiting_.push_back(read(element.value()));
    return finish(Node::Kind::List, first);
  }
  Node readDictionary(simdjson::ondemand::object dictionary) {
    const std::size_t first = waiting_.size();
    for (auto field : dictionary) {
      waiting_.push_back(readText(field.unescaped_key()));
      const Node value = read(field.value());
      waiting_.push_back(value);
    }
    return finish(Node::Kind::Dictionary, first);
  }
  Node finish(Node::Kind kind, std::size_t first) {
    const std::size_t size = waiting_.size() - first;
    Node* nodes = arena_.allocate<Node>(size);
    std::memcpy(nodes, waiting_.data() + first, size * sizeof(Node));
    waiting_.resize(first);
    Node node{kind, static_cast<std::uint32_t>(size), {0}};
    node.nodes = nodes;
    return node;
  }

  Arena arena_;
  std::vector<Node> waiting_;
};

#endif

void addReading(std::size_t size, const std::string& utf8, const String& utf16) {
  add("json/read-utf8", size, "ours", [utf8] { return NSJSONSerialization::parse(std::string_view(utf8)); });
  add("json/read-utf16", size, "ours", [utf16] { return objectFromJSONString(utf16); });
#if QUORVEL_HAVE_QT
  const QByteArray bytes(utf8.data(), static_cast<qsizetype>(utf8.size()));
  const QString units = QString::fromUtf8(bytes);
  add("json/read-utf8", size, "qt", [bytes] { return QJsonDocument::fromJson(bytes); });
  add("json/read-utf16", size, "qt", [units] { return QJsonDocument::fromJson(units.toUtf8()); });
#endif
#if QUORVEL_HAVE_RAPIDJSON
  add("json/read-utf8", size, "rapidjson", [utf8] {
    rapidjson::Document document;
    document.Parse<kExact>(utf8.data(), utf8.size());
    return document;
  });
  add("json/read-utf16", size, "rapidjson", [units = std::u16string(utf16.data(), utf16.size())] {
    Document16 document;
    document.Parse<kExact>(units.c_str());
    return document;
  });
#endif
#if QUORVEL_HAVE_NLOHMANN
  add("json/read-utf8", size, "nlohmann", [utf8] { return nlohmann::json::parse(utf8); });
  add("json/read-utf16", size, "nlohmann", [utf16] { return nlohmann::json::parse(*utf16.toUTF8()); });
#endif
#if QUORVEL_HAVE_SIMDJSON
  const auto padded = std::make_shared<simdjson::padded_string>(utf8);
  const auto parser = std::make_shared<simdjson::ondemand::parser>();
  add("json/read-utf8", size, "simdjson", [padded, parser] {
    ArenaReader reader;
    auto document = parser->iterate(*padded);
    return std::pair(reader.read(document.get_value()), std::move(reader));
  });
#endif
  add("json/read-utf8", size, "floor:memcpy", [utf8] { return utf8; });
  add("json/read-utf16", size, "floor:memcpy", [units = std::u16string(utf16.data(), utf16.size())] { return units; });
}

void addWriting(std::size_t size, const std::string& utf8) {
  const Value value = NSJSONSerialization::parse(std::string_view(utf8));
  add("json/write-sorted-utf16", size, "ours", [value] { return toJSONString(*value.asDictionary()); });
  add("json/write-sorted-utf8", size, "ours",
      [value] { return NSJSONSerialization::writeFragmentUTF8(value, NSJSONSerialization::kSortedKeys); });
  add("json/write-pretty-utf8", size, "ours", [value] { return NSJSONSerialization::writeFragmentUTF8(value, 3); });
#if QUORVEL_HAVE_QT
  const QJsonDocument document = QJsonDocument::fromJson({utf8.data(), static_cast<qsizetype>(utf8.size())});
  add("json/write-sorted-utf8", size, "qt", [document] { return document.toJson(QJsonDocument::Compact); });
  add("json/write-sorted-utf16", size, "qt",
      [document] { return QString::fromUtf8(document.toJson(QJsonDocument::Compact)); });
  add("json/write-pretty-utf8", size, "qt", [document] { return document.toJson(QJsonDocument::Indented); });
#endif
#if QUORVEL_HAVE_RAPIDJSON
  const auto tree = std::make_shared<rapidjson::Document>();
  tree->Parse<kExact>(utf8.data(), utf8.size());
  add("json/write-sorted-utf8", size, "rapidjson", [tree] {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    writeSorted(*tree, writer);
    return buffer;
  });
#endif
#if QUORVEL_HAVE_NLOHMANN
  const nlohmann::json json = nlohmann::json::parse(utf8);
  add("json/write-sorted-utf8", size, "nlohmann", [json] { return json.dump(); });
  add("json/write-pretty-utf8", size, "nlohmann", [json] { return json.dump(2); });
#endif
  add("json/write-sorted-utf8", size, "floor:memcpy", [utf8] { return utf8; });
}

}  // namespace
}  // namespace quorvel::bench

int main(int argc, char** argv) {
  for (const std::size_t size : {std::size_t{1024}, std::size_t{1024 * 1024}}) {
    const std::string utf8 = quorvel::bench::messageList(size);
    quorvel::bench::addReading(size, utf8, *quorvel::String::fromUTF8(utf8));
    quorvel::bench::addWriting(size, utf8);
  }
  return quorvel::bench::run(argc, argv);
}
