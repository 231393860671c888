#pragma once

#include "platform/appearance.h"

#include <memory>

class QDBusConnection;

namespace sonvel::desktop {

/// The appearance that the desktop portal tells of on the session bus. It is asked when this object is made
/// and whenever it comes or comes back; what changes in between it tells by itself. While there is none, the
/// last answer stands.
///
/// Answers arrive through the Qt event loop of the thread that made this object. Making it waits for the bus
/// at most, never for the portal.
class PortalAppearance final : public DesktopAppearance {
 public:
  /// On this user's session bus. All defaults if there is none.
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
