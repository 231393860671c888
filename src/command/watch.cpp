#include "command/watch.h"

#include "command/listing.h"
#include "remote/mixer_interface.h"

#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QEventLoop>
#include <QTimer>
#include <optional>

namespace sonvel::command {
namespace {

QVariantMap withoutLevels(QVariantMap properties) {
  QVariantList applications;
  for (const auto& application : properties["Applications"].toList()) {
    auto fields = application.toMap();
    fields.remove("level");
    applications.append(fields);
  }
  properties["Applications"] = applications;
  return properties;
}

class Watch final : public QObject {
  Q_OBJECT

 public:
  Watch(const MixerClient& mixer, Format format, bool hasLevels)
      : mixer_(mixer)
      , format_(format)
      , hasLevels_(hasLevels)
      , ending_(mixer.service(), mixer.bus(), QDBusServiceWatcher::WatchForUnregistration) {
    auto bus = mixer.bus();
    bus.connect(mixer.service(), remote::kPath, remote::kPropertiesInterface,
                QStringLiteral("PropertiesChanged"), this, SLOT(note()));
    connect(&ending_, &QDBusServiceWatcher::serviceUnregistered, &loop_, &QEventLoop::quit);
    reading_.setSingleShot(true);
    reading_.callOnTimeout(this, &Watch::read);
  }

  /// Returns when the program ends or does not answer any more.
  void run() {
    mixer_.call(QStringLiteral("Watch"), {hasLevels_});
    reading_.start();
    loop_.exec();
    if (failure_) throw Failure(*failure_);
  }

 private:
  /// Changes that come together are read together.
  Q_SLOT void note() { reading_.start(); }

  void read() {
    try {
      print(mixer_.properties());
    } catch (const Failure& failure) { // which must not pass through the event loop
      failure_ = failure;
      loop_.quit();
    }
  }

  /// Only what differs: what is told may concern others that watch.
  void print(const QVariantMap& properties) {
    const auto text = format_(hasLevels_ ? properties : withoutLevels(properties));
    if (text != printed_) command::print(text);
    printed_ = text;
  }

  const MixerClient& mixer_;
  const Format format_;
  const bool hasLevels_;
  QDBusServiceWatcher ending_;
  QEventLoop loop_;
  QTimer reading_;
  QByteArray printed_;
  std::optional<Failure> failure_;
};

} // namespace

void watchMixer(const MixerClient& mixer, Format format, bool hasLevels) {
  Watch(mixer, format, hasLevels).run();
  throw Failure(kNotRunning, QStringLiteral("the Sonvel that was watched has ended"));
}

} // namespace sonvel::command

#include "watch.moc"
