#pragma once

#include <memory>
#include <set>
#include <string>

namespace sonvel {

class StandardUpdater;

/// Asked by an updater which releases this build may be offered.
class UpdaterDelegate {
 public:
  virtual ~UpdaterDelegate() = default;

  /// The channels whose items may be offered, besides those that name no channel. Any thread; does not wait.
  virtual std::set<std::string> allowedChannels(const StandardUpdater& updater) const = 0;
};

/// Checks a feed of releases, and downloads, verifies and installs the one that the user takes. It checks by
/// itself once a day, counted over all runs of the program, and shows results and failures in its own window.
class StandardUpdater {
 public:
  virtual ~StandardUpdater() = default;

  /// Checks at once because the user asked for it; the window opens and shows the result, whatever it is.
  /// Returns before the check has begun. Main thread.
  virtual void checkForUpdates() = 0;
};

/// Where updates come from and whose signature they need.
struct UpdateSource {
  /// The feed's address: https, or http to a local host, which then holds for the downloads it names too.
  std::string feedURL;

  /// Base64 of the 32 bytes of an Ed25519 public key, which has to have signed the feed.
  std::string publicKey;

  /// A second such key, whose signature is as good, so that the first can be replaced. Empty: none.
  std::string additionalPublicKey = {};

  friend bool operator==(const UpdateSource&, const UpdateSource&) = default;
};

/// Makes updaters.
class UpdaterProvider {
 public:
  virtual ~UpdaterProvider() = default;

  /// An updater that has started. It asks `delegate` before every choice and does not keep it alive; once it
  /// is gone, only items without a channel are offered. Never null; does not wait. Main thread.
  virtual std::unique_ptr<StandardUpdater> startUpdater(const UpdateSource& source,
                                                        std::weak_ptr<const UpdaterDelegate> delegate) = 0;
};

} // namespace sonvel
