#pragma once

#include "remote/caller_gate.h"

#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QDBusVirtualObject>
#include <QTimer>
#include <QVariantMap>
#include <memory>
#include <vector>

namespace sonvel {

class ChannelState;
class MixerViewModel;

namespace remote {

/// The object on the bus by which other programs see and work the mixer (mixer_interface.h names it). It sees
/// every message itself, reads of properties too, so that callers in a sandbox get no answer at all.
///
/// A change of a property is told without its value: a broadcast would reach sandboxes as well. Methods bring
/// the model up to date before they act; calls that come meanwhile are served together by the next such
/// round. Main thread.
class MixerService final : public QDBusVirtualObject {
 public:
  /// Serves on this bus from now on; there may be none. Calls are answered from the event loop. `gate`
  /// outlives this object.
  MixerService(QDBusConnection bus, CallerGate& gate);
  ~MixerService() override;
  MixerService(const MixerService&) = delete;
  MixerService& operator=(const MixerService&) = delete;

  /// The model that calls are about; null: the program is about to end.
  void serve(const std::shared_ptr<MixerViewModel>& model);

  QString introspect(const QString& path) const override;
  bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

 private:
  void followModel(MixerViewModel& model);
  void followRow(ChannelState& row);
  void tellChanges();

  bool areLevelsWatched() const;
  void watch(const QString& caller, bool hasLevels);
  void unwatch(const QString& caller);
  void updateWatching();

  QVariantList answerOf(MixerViewModel& model, const QDBusMessage& message);
  QVariantList readProperties(MixerViewModel& model, const QDBusMessage& message) const;
  void reply(const QDBusMessage& message);
  void startRound();
  void finishRound();

  QDBusConnection bus_;
  CallerGate& gate_;
  std::weak_ptr<MixerViewModel> model_;
  std::vector<QDBusMessage> waiting_; ///< calls for the next round
  std::vector<QDBusMessage> round_;   ///< calls that the model is being brought up to date for
  QHash<QString, bool> watchers_;     ///< by unique name: whether it watches levels as well
  QDBusServiceWatcher leaving_;       ///< tells when one of them leaves the bus
  QTimer changes_;                    ///< tells them when the event loop is reached
  QVariantMap told_;                  ///< the properties, when changes were last told
};

} // namespace remote
} // namespace sonvel
