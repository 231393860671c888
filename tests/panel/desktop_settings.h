#pragma once

#include <QDBusConnection>
#include <QDBusVirtualObject>

namespace sonvel::testing {

/// The desktop's settings as its portal tells them on a session bus: light or dark. It is seen as long as it
/// lives and its thread's event loop runs.
class DesktopSettings final : public QDBusVirtualObject {
 public:
  explicit DesktopSettings(const QDBusConnection& bus);
  ~DesktopSettings() override;
  DesktopSettings(const DesktopSettings&) = delete;
  DesktopSettings& operator=(const DesktopSettings&) = delete;

  void setDark(bool isDark);

  QString introspect(const QString& path) const override;
  bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

 private:
  [[nodiscard]] uint colorScheme() const { return isDark_ ? 1U : 2U; }

  QDBusConnection bus_;
  bool isDark_ = false;
};

} // namespace sonvel::testing
