#include "ui/icons/icon_themes.h"

#include <QDir>
#include <QSettings>
#include <QStandardPaths>
#include <algorithm>
#include <map>
#include <sys/stat.h>

namespace sonvel {
namespace {

constexpr QLatin1String kHicolor("hicolor"); // the theme into which applications install their icons
constexpr QLatin1String kAdwaita("Adwaita"); // has a fallback icon

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

/// False if the file could block Qt, or is too large.
bool isReadable(const QString& path) {
  constexpr off_t kMaximumBytes = 16L * 1024 * 1024;

  struct stat status {};

  const bool exists = stat(QFile::encodeName(path).constData(), &status) == 0;
  return !exists || (S_ISREG(status.st_mode) && status.st_size <= kMaximumBytes);
}

bool areThemesReadable(const QString& folder) {
  return std::ranges::all_of(QDir(folder).entryList(QDir::Dirs | QDir::NoDotAndDotDot),
                             [&](const QString& theme) {
                               const QString start = folder + QLatin1Char('/') + theme;
                               return isReadable(start + QLatin1String("/index.theme")) &&
                                      isReadable(start + QLatin1String("/icon-theme.cache"));
                             });
}

/// Adds the folders of a theme and of the themes that it inherits.
void addFolders(const QString& theme, QStringList& themes, QStringList& folders) {
  if (theme.isEmpty() || themes.contains(theme)) return;
  themes.append(theme);
  QStringList starts;
  QStringList parts;
  QStringList parents;
  for (const QString& path : QIcon::themeSearchPaths()) {
    starts.append(path + QLatin1Char('/') + theme + QLatin1Char('/'));
    const QSettings description(starts.back() + QLatin1String("index.theme"), QSettings::IniFormat);
    for (const QString& key : description.allKeys())
      if (key.endsWith(QLatin1String("/Size"))) parts = joined(parts, {key.chopped(5)});
    parents.append(description.value(QLatin1String("Icon Theme/Inherits")).toStringList());
  }
  for (const QString& start : starts)
    for (const QString& part : parts)
      if (QDir(start + part).exists()) folders.append(start + part);
  for (const QString& parent : parents)
    addFolders(parent, themes, folders);
}

/// The folders in which Qt looks for icons.
const QStringList& iconFolders() {
  static std::map<QString, QStringList> known; // by theme
  const auto [entry, isNew] = known.try_emplace(QIcon::themeName());
  if (!isNew) return entry->second;
  QStringList themes;
  for (const QString& theme : {QIcon::themeName(), QIcon::fallbackThemeName(), QString(kHicolor)})
    addFolders(theme, themes, entry->second);
  entry->second.append(QIcon::fallbackSearchPaths());
  return entry->second;
}

} // namespace

QIcon themedIcon(const QString& name) {
  if (name.contains(QLatin1Char('/'))) return {};
  for (QString part = name; !part.isEmpty();
       part.truncate(part.lastIndexOf(QLatin1Char('-')))) { // as Qt does
    for (const QString& folder : iconFolders())
      for (const char* suffix : {".png", ".svg", ".xpm"})
        if (!isReadable(folder + QLatin1Char('/') + part + QLatin1String(suffix))) return {};
    if (!part.contains(QLatin1Char('-'))) break;
  }
  return QIcon::fromTheme(name);
}

void completeIconThemes() {
  QStringList folders = joined(QIcon::themeSearchPaths(), standardFolders());
  folders.removeIf([](const QString& folder) { return !areThemesReadable(folder); });
  QIcon::setThemeSearchPaths(folders);
  QIcon::setFallbackSearchPaths(joined(QIcon::fallbackSearchPaths(), {QStringLiteral("/usr/share/pixmaps")}));
  if (QIcon::fallbackThemeName().isEmpty() || QIcon::fallbackThemeName() == kHicolor)
    QIcon::setFallbackThemeName(kAdwaita);
  if (QIcon::themeName().isEmpty()) QIcon::setThemeName(kHicolor);
}

} // namespace sonvel
