#pragma once

#include "platform/appearance.h"

#include <memory>

class QDBusConnection;

namespace sonvel::desktop {

/// The appearance settings of the desktop portal on the session bus. Read when this object is created and
/// whenever the portal appears; afterwards the portal announces changes. Without a portal the last answer
/// stays valid.
///
/// Answers arrive in the Qt event loop of the creating thread. The constructor may wait for the bus, never
/// for the portal.
class PortalAppearance final : public DesktopAppearance {
 public:
  /// Uses this user's session bus; all defaults without one.
  PortalAppearance();

  explicit PortalAppearance(const QDBusConnection& bus);
  ~PortalAppearance() override;
  PortalAppearance(const PortalAppearance&) = delete;
  PortalAppearance& operator=(const PortalAppearance&) = delete;

  Appearance current() const override;
  void onChange(std::function<void()> changed) override;

 private:
  class Follower;
  const std::unique_ptr<Follower> follower_;
};

} // namespace sonvel::desktop
