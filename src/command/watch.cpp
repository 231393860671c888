#include "command/watch.h"

#include "command/listing.h"
#include "remote/mixer_interface.h"

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

} // namespace

Watch::Watch(const MixerClient& mixer, Format format, bool hasLevels)
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

void Watch::run() {
  mixer_.call(QStringLiteral("Watch"), {hasLevels_});
  reading_.start();
  loop_.exec();
  if (failure_) throw Failure(*failure_);
  throw Failure(kNotRunning, QStringLiteral("the watched Sonvel has ended"));
}

/// One read serves all changes that arrive together.
void Watch::note() {
  reading_.start();
}

void Watch::read() {
  try {
    print(mixer_.properties());
  } catch (const Failure& failure) { // exceptions must not pass through the event loop
    failure_ = failure;
    loop_.quit();
  }
}

/// Prints only differences: a change notice may be for other watchers.
void Watch::print(const QVariantMap& properties) {
  const auto text = format_(hasLevels_ ? properties : withoutLevels(properties));
  if (text != printed_) command::print(text);
  printed_ = text;
}

} // namespace sonvel::command
