#include "remote/mixer_actions.h"

#include "model/mixer_view_model.h"
#include "remote/mixer_interface.h"
#include "remote/mixer_properties.h"
#include "remote/name_match.h"
#include "remote/refusal.h"

#include <algorithm>
#include <array>

namespace sonvel::remote {
namespace {

constexpr int kMostVolume = 200; // percent
constexpr int kMostMasterVolume = 100;

ChannelState& application(const MixerViewModel& model, const QVariant& wanted) {
  const auto& rows = model.channels()->rows();
  std::vector<Named> names;
  names.reserve(rows.size());
  for (const auto& row : rows)
    names.push_back({row->stableKeyText(), row->name()});
  return *rows[findNamed(wanted.toString(), names, QStringLiteral("application"))];
}

std::string device(const MixerViewModel& model, const QString& wanted) {
  std::vector<Named> names;
  names.reserve(model.outputDevices().size());
  for (const auto& device : model.outputDevices())
    names.push_back({QString::fromStdString(device.uid), QString::fromStdString(device.name)});
  return model.outputDevices()[findNamed(wanted, names, QStringLiteral("output device"))].uid;
}

int checked(int percent, int most) {
  if (percent < 0 || percent > most)
    throw Refusal(error::kInvalidArguments, QStringLiteral("the volume must be 0 to %1 percent").arg(most));
  return percent;
}

/// The sum, clamped to 0 to `most`, without overflow.
int changed(int percent, int difference, int most) {
  return std::clamp(percent + std::clamp(difference, -1000, 1000), 0, most);
}

QVariantList setVolume(MixerViewModel& model, const QVariantList& arguments) {
  const int percent = checked(arguments[1].toInt(), kMostVolume);
  model.setGain(percent, &application(model, arguments[0]));
  return {};
}

QVariantList changeVolume(MixerViewModel& model, const QVariantList& arguments) {
  auto& row = application(model, arguments[0]);
  model.setGain(changed(row.gainPercent(), arguments[1].toInt(), kMostVolume), &row);
  return {row.gainPercent()};
}

QVariantList setMuted(MixerViewModel& model, const QVariantList& arguments) {
  auto& row = application(model, arguments[0]);
  if (row.muted() != arguments[1].toBool()) model.toggleMute(&row);
  return {};
}

QVariantList toggleMute(MixerViewModel& model, const QVariantList& arguments) {
  auto& row = application(model, arguments[0]);
  model.toggleMute(&row);
  return {row.muted()};
}

QVariantList setRoute(MixerViewModel& model, const QVariantList& arguments) {
  auto& row = application(model, arguments[0]);
  const auto wanted = arguments[1].toString();
  model.setOutput(wanted.isEmpty() ? std::nullopt : std::optional(device(model, wanted)), &row);
  return {};
}

void setMaster(MixerViewModel& model, int percent) {
  if (!model.masterSupported())
    throw Refusal(error::kNotAdjustable, QStringLiteral("this output device has no adjustable volume"));
  model.setMaster(percent / 100.0);
}

QVariantList setMasterVolume(MixerViewModel& model, const QVariantList& arguments) {
  setMaster(model, checked(arguments[0].toInt(), kMostMasterVolume));
  return {};
}

QVariantList changeMasterVolume(MixerViewModel& model, const QVariantList& arguments) {
  const int percent = changed(toPercent(model.masterVolume()), arguments[0].toInt(), kMostMasterVolume);
  setMaster(model, percent);
  return {percent};
}

QVariantList resetVolumes(MixerViewModel& model, const QVariantList& /*arguments*/) {
  model.resetAllVolumes();
  return {};
}

QVariantList resetRoutes(MixerViewModel& model, const QVariantList& /*arguments*/) {
  model.everythingToSystemOutput();
  return {};
}

struct Method {
  QLatin1String name;
  QLatin1String signature;
  QVariantList (*carryOut)(MixerViewModel& model, const QVariantList& arguments);
};

constexpr std::array kMethods{
    Method{QLatin1String("SetVolume"), QLatin1String("si"), setVolume},
    Method{QLatin1String("ChangeVolume"), QLatin1String("si"), changeVolume},
    Method{QLatin1String("SetMuted"), QLatin1String("sb"), setMuted},
    Method{QLatin1String("ToggleMute"), QLatin1String("s"), toggleMute},
    Method{QLatin1String("SetRoute"), QLatin1String("ss"), setRoute},
    Method{QLatin1String("SetMasterVolume"), QLatin1String("i"), setMasterVolume},
    Method{QLatin1String("ChangeMasterVolume"), QLatin1String("i"), changeMasterVolume},
    Method{QLatin1String("ResetVolumes"), QLatin1String(""), resetVolumes},
    Method{QLatin1String("ResetRoutes"), QLatin1String(""), resetRoutes},
};

} // namespace

QVariantList carryOut(MixerViewModel& model, const QString& method, const QString& signature,
                      const QVariantList& arguments) {
  const auto isIt = [&](const Method& one) { return one.name == method && one.signature == signature; };
  const auto* const found = std::ranges::find_if(kMethods, isIt);
  if (found == kMethods.end())
    throw Refusal(error::kUnknownMethod, QStringLiteral("no method %1(%2)").arg(method, signature));
  if (!model.permissionGranted())
    throw Refusal(error::kNotPermitted,
                  QStringLiteral("Sonvel has no access to the sound of other applications"));
  return found->carryOut(model, arguments);
}

} // namespace sonvel::remote
