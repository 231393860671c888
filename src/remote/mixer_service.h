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

/// The bus object by which other programs read and control the mixer (names in mixer_interface.h). It handles
/// every message itself, including property reads, so that sandboxed callers get no answer at all.
///
/// A change notice carries no value, because sandboxed programs receive broadcasts too. Methods bring the
/// model up to date before they act; calls that arrive meanwhile share the next update. Main thread.
class MixerService final : public QDBusVirtualObject {
 public:
  /// Registers on this bus, which may be unconnected. Calls are answered from the event loop. `gate` outlives
  /// this object.
  MixerService(QDBusConnection bus, CallerGate& gate);
  ~MixerService() override;
  MixerService(const MixerService&) = delete;
  MixerService& operator=(const MixerService&) = delete;

  /// Sets the model; null: the program is about to end.
  void serve(const std::shared_ptr<MixerViewModel>& model);

  QString introspect(const QString& path) const override;
  bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

 private:
  void followModel(MixerViewModel& model);
  void followRow(ChannelState& row);
  void keepError(const ChannelState& row);
  QVariantMap properties(const MixerViewModel& model, bool hasLevels) const;
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
  std::vector<QDBusMessage> waiting_; ///< calls for the next update
  std::vector<QDBusMessage> round_;   ///< calls that wait for the running update
  QHash<QString, bool> watchers_;     ///< unique name: whether it watches levels too
  QDBusServiceWatcher leaving_;       ///< reports watchers that leave the bus
  QTimer changes_;                    ///< sends change notices from the event loop
  QStringList errors_;                ///< of all rows, oldest first
  QVariantMap told_;                  ///< the properties at the last change notice
};

} // namespace remote
} // namespace sonvel
