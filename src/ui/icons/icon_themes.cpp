#include "ui/icons/icon_themes.h"

#include <QDir>
#include <QIcon>
#include <QStandardPaths>

namespace sonvel {
namespace {

constexpr QLatin1String kHicolor("hicolor"); // where every application puts its icon
constexpr QLatin1String kAdwaita("Adwaita"); // has an icon for what has none

QStringList standardFolders() {
  QStringList folders{QDir::homePath() + QStringLiteral("/.icons")};
  for (const auto& data : QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation))
    folders.append(data + QStringLiteral("/icons"));
  return folders;
}

QStringList joined(QStringList first, const QStringList& second) {
  for (const auto& item : second)
    if (!first.contains(item)) first.append(item);
  return first;
}

} // namespace

void completeIconThemes() {
  QIcon::setThemeSearchPaths(joined(QIcon::themeSearchPaths(), standardFolders()));
  QIcon::setFallbackSearchPaths(joined(QIcon::fallbackSearchPaths(), {QStringLiteral("/usr/share/pixmaps")}));
  if (QIcon::fallbackThemeName().isEmpty() || QIcon::fallbackThemeName() == kHicolor)
    QIcon::setFallbackThemeName(kAdwaita);
  if (QIcon::themeName().isEmpty()) QIcon::setThemeName(kHicolor);
}

} // namespace sonvel
