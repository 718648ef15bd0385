// Where a keychain's master key is kept: a file, the Secret Service, or in the application's own hands. A store has one
// source, named by the file "key-source" beside it, and no operation ever turns to another.
#pragma once

#include <array>
#include <memory>
#include <optional>
#include <string>

#include <quorvel/Platform/Security/PrivateFile.h>
#include <quorvel/Platform/Security/SecretBytes.h>

namespace quorvel {

enum class KeySource : std::uint8_t { File = 1, SecretService = 2, HandedIn = 3 };

/// Whether a source can give its key, and why not.
enum class KeyState {
  Ready,
  Missing,      // no such key there
  Refused,      // a link, a FIFO, somebody else's or a readable file, or one of a wrong size
  Locked,       // the Secret Service holds it in a locked collection
  Silent,       // the Secret Service did not answer in time
  Unreachable,  // no Secret Service, or no library to reach it with
  Wrong,        // it does not open the store
};

/// "file", "secret-service", "handed-in".
[[nodiscard]] const char* nameOf(KeySource source);
[[nodiscard]] std::optional<KeySource> keySourceNamed(std::string_view name);
[[nodiscard]] const char* nameOf(KeyState state);

/// Which of the master keys that a source may hold: a new one has a new name, so that the old stays until the store has
/// been turned to the new.
using KeyName = std::array<std::uint8_t, 16>;

class MasterKeys {
 public:
  virtual ~MasterKeys() = default;
  [[nodiscard]] virtual KeyState read(const KeyName& name, SecretBytes& key) = 0;
  [[nodiscard]] virtual KeyState write(const KeyName& name, const SecretBytes& key) = 0;
  virtual void remove(const KeyName& name) = 0;

  /// The keys of a source. `folder` and `handedIn` must outlive it; `handedIn` matters to that source alone.
  [[nodiscard]] static std::unique_ptr<MasterKeys> of(KeySource source, const FileDescriptor& folder,
                                                      const SecretBytes& handedIn);
};

/// What the file "key-source" says; nothing when it is missing, not ours or says something else.
[[nodiscard]] std::optional<KeySource> readKeySource(const FileDescriptor& folder);
/// Written in place of what stands there; a crash leaves the old or the new. The caller holds the folder's lock.
[[nodiscard]] bool writeKeySource(const FileDescriptor& folder, KeySource source);

/// Bytes of key material that are enough for a master key handed in.
inline constexpr std::size_t kLeastMasterKeyBytes = 16;

}  // namespace quorvel
