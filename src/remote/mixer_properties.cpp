#include "remote/mixer_properties.h"

#include <cmath>

namespace sonvel::remote {
namespace {

QString word(AudioCaptureStatus status) {
  switch (status) {
    using enum AudioCaptureStatus;
  case authorized:
    return QStringLiteral("authorized");
  case denied:
    return QStringLiteral("denied");
  case undetermined:
    return QStringLiteral("undetermined");
  case unknown:
    break;
  }
  return QStringLiteral("unknown");
}

void insertIfSet(QVariantMap& map, const QString& name, const QVariant& value) {
  if (value.isValid()) map.insert(name, value);
}

QVariantMap describe(const ChannelState& row, bool hasLevel) {
  QVariantMap map{{"key", row.stableKeyText()}, {"name", row.name()},         {"volume", row.gainPercent()},
                  {"muted", row.muted()},       {"playing", row.isPlaying()}, {"controlled", row.active()}};
  insertIfSet(map, QStringLiteral("route"), row.outputUIDText());
  insertIfSet(map, QStringLiteral("output"), row.playingUIDText());
  insertIfSet(map, QStringLiteral("error"), row.lastErrorText());
  if (row.isPartial()) map.insert(QStringLiteral("partial"), true);
  if (hasLevel) map.insert(QStringLiteral("level"), double{row.level()});
  return map;
}

QList<QVariantMap> applications(const MixerViewModel& model, bool hasLevels) {
  QList<QVariantMap> list;
  for (const auto& row : model.channels()->rows())
    list.append(describe(*row, hasLevels));
  return list;
}

QList<QVariantMap> devices(const MixerViewModel& model) {
  QList<QVariantMap> list;
  for (const auto& device : model.outputDevices())
    list.append({{"uid", QString::fromStdString(device.uid)}, {"name", QString::fromStdString(device.name)}});
  return list;
}

} // namespace

int toPercent(double fraction) {
  return static_cast<int>(std::lround(fraction * 100));
}

QVariantMap mixerProperties(const MixerViewModel& model, bool hasLevels) {
  return {{"Applications", QVariant::fromValue(applications(model, hasLevels))},
          {"Devices", QVariant::fromValue(devices(model))},
          {"MasterVolume", toPercent(model.masterVolume())},
          {"MasterAdjustable", model.masterSupported()},
          {"Permission", word(model.permission())}};
}

} // namespace sonvel::remote
