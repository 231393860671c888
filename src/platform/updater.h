#pragma once

#include <memory>
#include <set>
#include <string>

namespace sonvel {

class StandardUpdater;

/// Tells an updater which releases may be offered to this build.
class UpdaterDelegate {
 public:
  virtual ~UpdaterDelegate() = default;

  /// The channels whose items may be offered, besides items without a channel. Any thread; does not block.
  virtual std::set<std::string> allowedChannels(const StandardUpdater& updater) const = 0;
};

/// Checks a feed of releases; downloads, verifies and installs the release that the user accepts. Checks once
/// a day, counted over all runs of the program, and shows results and failures in its own window.
class StandardUpdater {
 public:
  virtual ~StandardUpdater() = default;

  /// Checks now because the user asked; the window opens and shows the result. Returns before the check
  /// begins. Main thread.
  virtual void checkForUpdates() = 0;
};

/// Where updates come from, and the keys that must have signed them.
struct UpdateSource {
  /// The feed's address: https, or http to a local host. With http to a local host, downloads may use the
  /// same.
  std::string feedURL;

  /// Base64 of the 32-byte Ed25519 public key that must have signed the feed.
  std::string publicKey;

  /// A second key whose signature is accepted too, so that the first can be replaced. Empty: none.
  std::string additionalPublicKey = {};

  friend bool operator==(const UpdateSource&, const UpdateSource&) = default;
};

/// Creates updaters.
class UpdaterProvider {
 public:
  virtual ~UpdaterProvider() = default;

  /// Creates and starts an updater. It asks `delegate` before every choice and does not keep it alive;
  /// without it, only items without a channel are offered. Never null; does not block. Main thread.
  virtual std::unique_ptr<StandardUpdater> startUpdater(const UpdateSource& source,
                                                        std::weak_ptr<const UpdaterDelegate> delegate) = 0;
};

} // namespace sonvel
