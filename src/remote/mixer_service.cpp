#include "remote/mixer_service.h"

#include "model/mixer_view_model.h"
#include "remote/mixer_actions.h"
#include "remote/mixer_interface.h"
#include "remote/mixer_properties.h"
#include "remote/refusal.h"

#include <QDBusConnectionInterface>
#include <QDBusMetaType>
#include <QDateTime>
#include <QFile>
#include <QPointer>
#include <algorithm>
#include <utility>

namespace sonvel::remote {

namespace {

constexpr qsizetype kErrorsKept = 10;

} // namespace

MixerService::MixerService(QDBusConnection bus, CallerGate& gate)
    : bus_(std::move(bus))
    , gate_(gate) {
  leaving_.setConnection(bus_);
  leaving_.setWatchMode(QDBusServiceWatcher::WatchForUnregistration);
  connect(&leaving_, &QDBusServiceWatcher::serviceUnregistered, this, &MixerService::unwatch);
  qDBusRegisterMetaType<QList<QVariantMap>>();
  changes_.setSingleShot(true);
  changes_.callOnTimeout(this, &MixerService::tellChanges);
  bus_.registerVirtualObject(kPath, this);
}

MixerService::~MixerService() {
  bus_.unregisterObject(kPath);
}

void MixerService::serve(const std::shared_ptr<MixerViewModel>& model) {
  model_ = model;
  if (model) followModel(*model);
}

void MixerService::followModel(MixerViewModel& model) {
  const auto note = [this] { changes_.start(); };
  connect(&model, &MixerViewModel::masterVolumeChanged, this, note);
  connect(&model, &MixerViewModel::masterSupportedChanged, this, note);
  connect(&model, &MixerViewModel::outputDevicesChanged, this, note);
  connect(&model, &MixerViewModel::permissionChanged, this, note);
  connect(model.channels(), &ChannelList::rowsMoved, this, note);
  connect(model.channels(), &ChannelList::rowsRemoved, this, note);
  connect(model.channels(), &ChannelList::rowsInserted, this,
          [this, &model, note](const QModelIndex& /*parent*/, int first, int last) {
            for (int i = first; i <= last; ++i)
              followRow(*model.channels()->rows()[static_cast<std::size_t>(i)]);
            note();
          });
  for (const auto& row : model.channels()->rows())
    followRow(*row);
  told_ = properties(model, false);
}

void MixerService::followRow(ChannelState& row) {
  const auto note = [this] { changes_.start(); };
  connect(&row, &ChannelState::appChanged, this, note);
  connect(&row, &ChannelState::gainPercentChanged, this, note);
  connect(&row, &ChannelState::mutedChanged, this, note);
  connect(&row, &ChannelState::activeChanged, this, note);
  connect(&row, &ChannelState::isPlayingChanged, this, note);
  connect(&row, &ChannelState::outputUIDChanged, this, note);
  connect(&row, &ChannelState::lastErrorChanged, this, [this, &row, note] {
    keepError(row);
    note();
  });
  connect(&row, &ChannelState::playbackChanged, this, note);
  connect(&row, &ChannelState::levelChanged, this, [this] {
    if (areLevelsWatched()) changes_.start();
  });
}

void MixerService::keepError(const ChannelState& row) {
  if (!row.lastError()) return;
  errors_ += QStringLiteral("%1 %2: %3")
                 .arg(QDateTime::currentDateTime().toString(Qt::ISODate), row.name(),
                      row.lastErrorText().toString());
  if (errors_.size() > kErrorsKept) errors_.removeFirst();
}

QVariantMap MixerService::properties(const MixerViewModel& model, bool hasLevels) const {
  auto properties = mixerProperties(model, hasLevels);
  properties[QStringLiteral("LastErrors")] = errors_;
  return properties;
}

/// The model also announces values that stay the same, so compare before sending.
void MixerService::tellChanges() {
  const auto model = model_.lock();
  if (!model) return;
  const auto before = std::exchange(told_, properties(*model, areLevelsWatched()));
  QStringList changed;
  for (auto now = told_.cbegin(); now != told_.cend(); ++now)
    if (before.value(now.key()) != now.value()) changed += now.key();
  if (changed.isEmpty()) return;
  auto signal = QDBusMessage::createSignal(kPath, kPropertiesInterface, QStringLiteral("PropertiesChanged"));
  signal << kInterface << QVariantMap() << changed;
  bus_.send(signal);
}

bool MixerService::areLevelsWatched() const {
  return std::ranges::find(watchers_, true) != watchers_.end();
}

void MixerService::watch(const QString& caller, bool hasLevels) {
  watchers_[caller] = hasLevels;
  leaving_.addWatchedService(caller);
  updateWatching();
  // It may have left the bus before the watch began.
  if (!bus_.interface()->isServiceRegistered(caller).value()) unwatch(caller);
}

void MixerService::unwatch(const QString& caller) {
  watchers_.remove(caller);
  leaving_.removeWatchedService(caller);
  updateWatching();
}

void MixerService::updateWatching() {
  if (const auto model = model_.lock()) model->setWatched(!watchers_.isEmpty());
}

QString MixerService::introspect(const QString& /*path*/) const {
  QFile file(QStringLiteral(":/remote/com.quellmarsh.sonvel.Mixer1.xml"));
  if (!file.open(QIODevice::ReadOnly)) return {};
  const auto text = QString::fromUtf8(file.readAll());
  const auto start = text.indexOf(QLatin1String("<interface"));
  return text.mid(start, text.indexOf(QLatin1String("</node>")) - start);
}

bool MixerService::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
  if (!gate_.admits(message.service(), connection)) {
    bus_.send(message.createErrorReply(
        error::kAccessDenied, QStringLiteral("a program in a sandbox has no right to Sonvel's mixer")));
    return true;
  }
  if (message.interface() == kPropertiesInterface) {
    reply(message);
    return true;
  }
  if (message.interface() != kInterface) return false;
  waiting_.push_back(message);
  if (round_.empty()) startRound();
  return true;
}

void MixerService::reply(const QDBusMessage& message) {
  try {
    const auto model = model_.lock();
    if (!model) throw Refusal(error::kLeaving, QStringLiteral("Sonvel is about to end"));
    bus_.send(message.createReply(answerOf(*model, message)));
  } catch (const Refusal& refusal) {
    bus_.send(message.createErrorReply(refusal.name(), refusal.text()));
  }
}

void MixerService::startRound() {
  round_ = std::exchange(waiting_, {});
  const auto model = model_.lock();
  if (!model) return finishRound();
  static constexpr auto bringUpToDate = [](std::shared_ptr<MixerViewModel> asked,
                                           QPointer<MixerService> self) -> QCoro::Task<> {
    co_await asked->refresh();
    if (self) self->finishRound();
  };
  (void)bringUpToDate(model, this);
}

void MixerService::finishRound() {
  for (const auto& message : std::exchange(round_, {}))
    reply(message);
  if (!waiting_.empty()) startRound();
}

QVariantList MixerService::answerOf(MixerViewModel& model, const QDBusMessage& message) {
  const auto method = message.member();
  const auto signature = message.signature();
  if (message.interface() == kPropertiesInterface) return readProperties(model, message);
  if (method == QLatin1String("Watch") && signature == QLatin1String("b"))
    watch(message.service(), message.arguments().constFirst().toBool());
  else if (method == QLatin1String("Unwatch") && signature.isEmpty())
    unwatch(message.service());
  else if (method != QLatin1String("Refresh") || !signature.isEmpty())
    return carryOut(model, method, signature, message.arguments());
  return {};
}

QVariantList MixerService::readProperties(MixerViewModel& model, const QDBusMessage& message) const {
  const auto arguments = message.arguments();
  if (arguments.value(0).toString() != kInterface)
    throw Refusal(error::kInvalidArguments, QStringLiteral("not an interface of this object"));
  const auto all = properties(model, model.isFollowed());
  if (message.member() == QLatin1String("GetAll")) return {all};
  const auto found = all.constFind(arguments.value(1).toString());
  if (found == all.constEnd()) throw Refusal(error::kUnknownProperty, QStringLiteral("no such property"));
  if (message.member() != QLatin1String("Get"))
    throw Refusal(error::kReadOnly, QStringLiteral("properties are changed by methods"));
  return {QVariant::fromValue(QDBusVariant(*found))};
}

} // namespace sonvel::remote
