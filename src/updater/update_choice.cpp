#include "updater/update_choice.h"

namespace sonvel::updater {
namespace {

bool isForChannel(const AppcastItem& item, const std::set<std::string>& allowed) {
  return item.channel.isEmpty() || allowed.contains(item.channel.toStdString());
}

bool runsOn(const AppcastItem& item, const ProgramVersion& system) {
  if (item.minimumSystemVersion.isEmpty()) return true;
  const auto minimum = ProgramVersion::parse(item.minimumSystemVersion);
  return minimum && *minimum <= system;
}

} // namespace

Choice chooseUpdate(const Appcast& appcast, const ChoiceCriteria& criteria) {
  Choice choice;
  ProgramVersion best = criteria.installed;
  for (const AppcastItem& item : appcast) {
    const auto version = ProgramVersion::parse(item.version);
    if (!version || *version <= best || !isForChannel(item, criteria.allowedChannels)) continue;
    if (!runsOn(item, criteria.system)) {
      choice.needsNewerSystem = true;
      continue;
    }
    best = *version;
    choice.item = item;
  }
  if (choice.item) choice.needsNewerSystem = false;
  return choice;
}

} // namespace sonvel::updater
