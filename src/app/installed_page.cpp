#include "app/installed_page.h"

#include "platform/descriptor_limit.h"
#include "updater/relaunch.h"

#include <glib.h>

#include <QFile>
#include <array>
#include <string>
#include <vector>

namespace sonvel {

bool openInstalledPage(const QString& path) {
  if (!QFile::exists(path)) return false;
  std::string program = "xdg-open";
  std::string page = QFile::encodeName(path).toStdString();
  std::array<char*, 3> arguments{program.data(), page.data(), nullptr};
  std::vector<std::string> texts;
  for (const QString& text :
       updater::environmentOutsideImage(QProcessEnvironment::systemEnvironment()).toStringList())
    texts.push_back(text.toLocal8Bit().toStdString());
  std::vector<char*> environment;
  for (std::string& text : texts)
    environment.push_back(text.data());
  environment.push_back(nullptr);
  const auto prepareChild = [](gpointer) { RaisedDescriptorLimit::lowerFor(0); };
  return g_spawn_async(nullptr, arguments.data(), environment.data(), G_SPAWN_SEARCH_PATH, prepareChild,
                       nullptr, nullptr, nullptr) != FALSE;
}

} // namespace sonvel
