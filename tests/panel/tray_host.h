#pragma once

#include <QColor>
#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>
#include <QStringList>

namespace sonvel::testing {

/// A desktop's tray without a picture: the watcher and the host of StatusNotifierItem icons on a session bus.
/// It is seen by others as long as it lives and its thread's event loop runs.
class TrayHost : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
  Q_PROPERTY(bool IsStatusNotifierHostRegistered READ tellHostRegistered)
  Q_PROPERTY(QStringList RegisteredStatusNotifierItems READ items)
  Q_PROPERTY(int ProtocolVersion READ protocolVersion)

 public:
  /// Takes the watcher's name, and hosts icons at once or by setHostRegistered().
  explicit TrayHost(const QDBusConnection& bus, bool isHostRegistered = true);
  ~TrayHost() override;
  TrayHost(const TrayHost&) = delete;
  TrayHost& operator=(const TrayHost&) = delete;

  void setHostRegistered(bool isRegistered);

  /// How often others have asked whether there is a host.
  [[nodiscard]] int questions() const noexcept { return questions_; }

  /// The bus names of the icons, in the order they came.
  [[nodiscard]] QStringList items() const { return items_; }

  [[nodiscard]] int protocolVersion() const noexcept { return 0; }

  // What a desktop asks of an icon; these block until it has answered.
  [[nodiscard]] QVariant property(const QString& item, const QString& name) const;
  [[nodiscard]] QString toolTipTitle(const QString& item) const;
  /// The colour in the middle of its picture.
  [[nodiscard]] QColor color(const QString& item) const;
  void activate(const QString& item) const;
  /// The labels of its menu.
  [[nodiscard]] QStringList menu(const QString& item) const;
  /// Chooses what has this label from its menu; false when nothing has.
  bool choose(const QString& item, const QString& label) const;

  // The interface's own names. NOLINTBEGIN(readability-identifier-naming)
  Q_SCRIPTABLE void RegisterStatusNotifierItem(const QString& item);
  Q_SCRIPTABLE void RegisterStatusNotifierHost(const QString& host);

 Q_SIGNALS:
  Q_SCRIPTABLE void StatusNotifierItemRegistered(const QString& item);
  Q_SCRIPTABLE void StatusNotifierItemUnregistered(const QString& item);
  Q_SCRIPTABLE void StatusNotifierHostRegistered();
  Q_SCRIPTABLE void StatusNotifierHostUnregistered();
  // NOLINTEND(readability-identifier-naming)

 private:
  bool tellHostRegistered() noexcept {
    ++questions_;
    return isHostRegistered_;
  }

  void forget(const QString& item);

  QDBusConnection bus_;
  int questions_ = 0;
  bool isHostRegistered_;
  QStringList items_;
};

} // namespace sonvel::testing
