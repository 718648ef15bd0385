#include <chrono>
#include <memory>
#include <mutex>

#include <libsecret/secret.h>

#include <quorvel/Platform/Foundation/Base64.h>
#include <quorvel/Platform/Foundation/LoadedLibrary.h>
#include <quorvel/Platform/Security/ItemCipher.h>
#include <quorvel/Platform/Security/SecretService.h>

namespace quorvel {
namespace {

using std::chrono::steady_clock;
constexpr std::chrono::milliseconds kPatience{2800};  // what else opening a store takes fits into three seconds

/// The functions of libsecret and GLib, found by name in the loaded library and those that it needs.
struct Functions : LoadedLibrary {
  // NOLINTBEGIN(readability-identifier-naming): the members are called as what they point at
  Functions() : LoadedLibrary("libsecret-1.so.0") {}
  QUORVEL_FUNCTION(g_main_context_new);
  QUORVEL_FUNCTION(g_main_context_unref);
  QUORVEL_FUNCTION(g_main_context_push_thread_default);
  QUORVEL_FUNCTION(g_main_context_pop_thread_default);
  QUORVEL_FUNCTION(g_main_context_iteration);
  QUORVEL_FUNCTION(g_timeout_source_new);
  QUORVEL_FUNCTION(g_source_set_callback);
  QUORVEL_FUNCTION(g_source_attach);
  QUORVEL_FUNCTION(g_source_destroy);
  QUORVEL_FUNCTION(g_source_unref);
  QUORVEL_FUNCTION(g_cancellable_new);
  QUORVEL_FUNCTION(g_cancellable_cancel);
  QUORVEL_FUNCTION(g_object_ref);
  QUORVEL_FUNCTION(g_object_unref);
  QUORVEL_FUNCTION(g_error_free);
  QUORVEL_FUNCTION(g_list_free);
  QUORVEL_FUNCTION(g_hash_table_new);
  QUORVEL_FUNCTION(g_hash_table_insert);
  QUORVEL_FUNCTION(g_hash_table_unref);
  QUORVEL_FUNCTION(g_str_hash);
  QUORVEL_FUNCTION(g_str_equal);
  QUORVEL_FUNCTION(g_bus_get);
  QUORVEL_FUNCTION(g_bus_get_finish);
  QUORVEL_FUNCTION(g_dbus_connection_get_exit_on_close);
  QUORVEL_FUNCTION(g_dbus_connection_set_exit_on_close);
  QUORVEL_FUNCTION(secret_service_open);
  QUORVEL_FUNCTION(secret_service_open_finish);
  QUORVEL_FUNCTION(secret_service_get_type);
  QUORVEL_FUNCTION(secret_service_search);
  QUORVEL_FUNCTION(secret_service_search_finish);
  QUORVEL_FUNCTION(secret_service_store);
  QUORVEL_FUNCTION(secret_service_store_finish);
  QUORVEL_FUNCTION(secret_service_clear);
  QUORVEL_FUNCTION(secret_service_clear_finish);
  QUORVEL_FUNCTION(secret_item_get_locked);
  QUORVEL_FUNCTION(secret_item_get_secret);
  QUORVEL_FUNCTION(secret_value_new);
  QUORVEL_FUNCTION(secret_value_get);
  QUORVEL_FUNCTION(secret_value_unref);
  // NOLINTEND(readability-identifier-naming)
};

const Functions& functions() {
  static const Functions found;
  return found;
}

const SecretSchema& schema() {
  static const SecretSchema kSchema = [] {
    SecretSchema made{};
    made.name = "quorvel.keychain.MasterKey";
    made.attributes[0] = {"key", SECRET_SCHEMA_ATTRIBUTE_STRING};
    return made;
  }();
  return kSchema;
}

/// One exchange with the service on a main context of its own. It outlives its caller when the service stays silent,
/// since a late answer still comes to it.
class Exchange : public std::enable_shared_from_this<Exchange> {
 public:
  explicit Exchange(std::string name)
      : f_(functions()),
        name_(std::move(name)),
        attributes_(f_.g_hash_table_new(f_.g_str_hash, f_.g_str_equal)),
        context_(f_.g_main_context_new()),
        cancellable_(f_.g_cancellable_new()) {
    f_.g_hash_table_insert(attributes_, const_cast<char*>("key"), name_.data());
  }
  Exchange(const Exchange&) = delete;
  Exchange& operator=(const Exchange&) = delete;
  ~Exchange() {
    if (answer_) f_.g_object_unref(answer_);
    if (service_) f_.g_object_unref(service_);
    // What their ends have left to be done in this context would otherwise never be freed.
    while (f_.g_main_context_iteration(context_, FALSE)) {
    }
    if (bus_) {
      f_.g_dbus_connection_set_exit_on_close(bus_, exitsOnClose_);
      f_.g_object_unref(bus_);
    }
    f_.g_object_unref(cancellable_);
    f_.g_main_context_unref(context_);
    f_.g_hash_table_unref(attributes_);
  }

  /// Starts `call(cancellable, callback, data)` and waits for its answer; false when none came in time.
  template <class Call>
  bool ask(Call call) {
    if (answer_) f_.g_object_unref(std::exchange(answer_, nullptr));
    self_ = shared_from_this();  // until the answer comes
    f_.g_main_context_push_thread_default(context_);
    call(cancellable_, &Exchange::received, this);
    const bool answered = waitUntil(deadline_);
    if (!answered) {
      f_.g_cancellable_cancel(cancellable_);
      (void)waitUntil(steady_clock::now() + std::chrono::milliseconds(100));
    }
    f_.g_main_context_pop_thread_default(context_);
    return answered;
  }

  KeyState connect() {
    const KeyState state = connectToBus();
    if (state != KeyState::Ready) return state;
    // Not the one that libsecret keeps for the process: its session dies with a service that is started anew.
    if (!ask([this](auto... rest) {
          f_.secret_service_open(f_.secret_service_get_type(), nullptr, SECRET_SERVICE_OPEN_SESSION, rest...);
        })) {
      return KeyState::Silent;
    }
    GError* error = nullptr;
    service_ = f_.secret_service_open_finish(answer_, &error);
    if (error) f_.g_error_free(error);
    return service_ ? KeyState::Ready : KeyState::Unreachable;
  }

  /// Whether an answer is still owed, after a look for it.
  bool isOwed() {
    f_.g_main_context_push_thread_default(context_);
    while (self_ && f_.g_main_context_iteration(context_, FALSE)) {
    }
    f_.g_main_context_pop_thread_default(context_);
    return self_ != nullptr;
  }

  [[nodiscard]] SecretService* service() const { return service_; }
  /// What names the key there; kept as long as a call may still look at it.
  [[nodiscard]] GHashTable* attributes() const { return attributes_; }
  [[nodiscard]] GAsyncResult* answer() const { return answer_; }

 private:
  /// The session's bus, which libsecret will take too. By default GLib ends the process when that goes away; during an
  /// exchange this must not happen.
  KeyState connectToBus() {
    if (!ask([this](auto... rest) { f_.g_bus_get(G_BUS_TYPE_SESSION, rest...); })) return KeyState::Silent;
    GError* error = nullptr;
    bus_ = f_.g_bus_get_finish(answer_, &error);
    if (error) f_.g_error_free(error);
    if (!bus_) return KeyState::Unreachable;
    exitsOnClose_ = f_.g_dbus_connection_get_exit_on_close(bus_);
    f_.g_dbus_connection_set_exit_on_close(bus_, FALSE);
    return KeyState::Ready;
  }

  static void received(GObject* /*source*/, GAsyncResult* result, gpointer data) {
    auto* exchange = static_cast<Exchange*>(data);
    const std::shared_ptr<Exchange> kept = std::move(exchange->self_);
    exchange->answer_ = static_cast<GAsyncResult*>((exchange->f_.g_object_ref)(result));
  }

  bool waitUntil(steady_clock::time_point deadline) {
    while (self_) {
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - steady_clock::now()).count();
      if (left <= 0) return false;
      GSource* const alarm = f_.g_timeout_source_new(static_cast<guint>(left));
      f_.g_source_set_callback(alarm, [](gpointer) -> gboolean { return FALSE; }, nullptr, nullptr);
      f_.g_source_attach(alarm, context_);
      f_.g_main_context_iteration(context_, TRUE);
      f_.g_source_destroy(alarm);
      f_.g_source_unref(alarm);
    }
    return true;
  }

  const Functions& f_;
  std::string name_;
  GHashTable* attributes_;
  steady_clock::time_point deadline_ = steady_clock::now() + kPatience;
  GMainContext* context_;
  GCancellable* cancellable_;
  GAsyncResult* answer_ = nullptr;
  GDBusConnection* bus_ = nullptr;
  gboolean exitsOnClose_ = FALSE;  // the policy of whoever else uses the bus
  SecretService* service_ = nullptr;
  std::shared_ptr<Exchange> self_;
};

/// One exchange at a time; while a silent service owes an answer no further ones pile up.
class Exchanges {
 public:
  template <class Work>
  KeyState run(const std::string& name, Work work) {
    const Functions& f = functions();
    if (!f.isComplete()) return KeyState::Unreachable;
    const std::lock_guard lock(mutex_);
    if (owed_ && owed_->isOwed()) return KeyState::Silent;
    owed_ = std::make_shared<Exchange>(name);
    KeyState state = owed_->connect();
    if (state == KeyState::Ready) state = work(f, *owed_);
    if (!owed_->isOwed()) owed_.reset();
    return state;
  }

 private:
  std::mutex mutex_;
  std::shared_ptr<Exchange> owed_;
};

Exchanges& exchanges() {
  static auto* const kept = new Exchanges;  // a late answer may come until the process ends
  return *kept;
}

bool decodeKey(ConstBytes text, SecretBytes& key) {
  std::array<char16_t, 64> units{};
  if (text.size() != base64Length(kKeyBytes)) return false;
  std::copy(text.begin(), text.end(), units.begin());
  auto bytes = decodeBase64(StringView(units.data(), text.size()));
  wipe({reinterpret_cast<std::uint8_t*>(units.data()), sizeof units});
  if (!bytes || bytes->size() != kKeyBytes) return false;
  key = SecretBytes(*bytes);
  wipe(*bytes);
  return true;
}

KeyState keyOf(const Functions& f, SecretItem* item, SecretBytes& key) {
  if (f.secret_item_get_locked(item)) return KeyState::Locked;
  SecretValue* const value = f.secret_item_get_secret(item);
  if (!value) return KeyState::Unreachable;
  gsize size = 0;
  const gchar* const text = f.secret_value_get(value, &size);
  const bool decoded = decodeKey({reinterpret_cast<const std::uint8_t*>(text), size}, key);
  f.secret_value_unref(value);
  return decoded ? KeyState::Ready : KeyState::Refused;
}

KeyState search(const Functions& f, Exchange& exchange, SecretBytes& key) {
  if (!exchange.ask([&](auto... rest) {
        // Without SECRET_SEARCH_UNLOCK: a locked collection asks nobody.
        f.secret_service_search(exchange.service(), &schema(), exchange.attributes(), SECRET_SEARCH_LOAD_SECRETS,
                                rest...);
      })) {
    return KeyState::Silent;
  }
  GError* error = nullptr;
  GList* const items = f.secret_service_search_finish(exchange.service(), exchange.answer(), &error);
  if (error) {
    f.g_error_free(error);
    return KeyState::Unreachable;
  }
  const KeyState state = items ? keyOf(f, static_cast<SecretItem*>(items->data), key) : KeyState::Missing;
  for (const GList* item = items; item; item = item->next) f.g_object_unref(item->data);
  f.g_list_free(items);
  return state;
}

KeyState store(const Functions& f, Exchange& exchange, const SecretBytes& key) {
  std::array<char, 64> text{};
  encodeBase64(key.bytes(), text.data());
  SecretValue* const value =
      f.secret_value_new(text.data(), static_cast<gssize>(base64Length(key.bytes().size())), "text/plain");
  wipe({reinterpret_cast<std::uint8_t*>(text.data()), sizeof text});
  const bool answered = exchange.ask([&](auto... rest) {
    f.secret_service_store(exchange.service(), &schema(), exchange.attributes(), SECRET_COLLECTION_DEFAULT,
                           "Quorvel keychain master key", value, rest...);
  });
  f.secret_value_unref(value);
  if (!answered) return KeyState::Silent;
  GError* error = nullptr;
  const bool stored = f.secret_service_store_finish(exchange.service(), exchange.answer(), &error);
  if (error) f.g_error_free(error);
  return stored ? KeyState::Ready : KeyState::Locked;
}

}  // namespace

KeyState readFromSecretService(const std::string& name, SecretBytes& key) {
  return exchanges().run(name, [&](const Functions& f, Exchange& exchange) { return search(f, exchange, key); });
}

KeyState writeToSecretService(const std::string& name, const SecretBytes& key) {
  if (key.bytes().size() != kKeyBytes) return KeyState::Refused;
  return exchanges().run(name, [&](const Functions& f, Exchange& exchange) { return store(f, exchange, key); });
}

void removeFromSecretService(const std::string& name) {
  (void)exchanges().run(name, [&](const Functions& f, Exchange& exchange) {
    if (exchange.ask([&](auto... rest) {
          f.secret_service_clear(exchange.service(), &schema(), exchange.attributes(), rest...);
        })) {
      GError* error = nullptr;
      f.secret_service_clear_finish(exchange.service(), exchange.answer(), &error);
      if (error) f.g_error_free(error);
    }
    return KeyState::Ready;
  });
}

}  // namespace quorvel
