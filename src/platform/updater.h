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
/// itself once a day for as long as it exists, and remembers over the program's end when it did last. What it
/// finds and what goes wrong it tells the user in a window of its own.
class StandardUpdater {
 public:
  virtual ~StandardUpdater() = default;

  /// Looks for an update at once because the user wants it to: the window comes up and says how it ends,
  /// whatever the outcome. Returns before the check has begun. Main thread.
  virtual void checkForUpdates() = 0;
};

/// Where updates come from and what proves that they are ours.
struct UpdateSource {
  /// The feed's address: https, or http to a local host, which then holds for the downloads it names too.
  std::string feedURL;

  /// Base64 of the 32 bytes of an Ed25519 public key.
  std::string publicKey;

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
