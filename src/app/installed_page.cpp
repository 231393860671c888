#include "app/installed_page.h"

#include "platform/descriptor_limit.h"
#include "updater/relaunch.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <utility>

namespace sonvel {

void openInstalledPage(const QString& path, std::function<void()> failed) {
  if (!QFile::exists(path)) {
    failed();
    return;
  }
  // It may run as long as what it opens. NOLINTNEXTLINE(cppcoreguidelines-owning-memory): a child
  auto* const opener = new QProcess(QCoreApplication::instance());
  opener->setProcessEnvironment(updater::environmentOutsideImage(QProcessEnvironment::systemEnvironment()));
  opener->setProcessChannelMode(QProcess::ForwardedChannels);
  opener->setStandardInputFile(QProcess::nullDevice());
  opener->setChildProcessModifier([] { RaisedDescriptorLimit::lowerFor(0); });
  const auto end = [opener, failed = std::move(failed)](bool isOpened) {
    opener->deleteLater();
    if (!isOpened) failed();
  };
  QObject::connect(opener, &QProcess::finished, opener, [end](int exitCode, QProcess::ExitStatus status) {
    end(status == QProcess::NormalExit && exitCode == 0);
  });
  QObject::connect(opener, &QProcess::errorOccurred, opener, [end](QProcess::ProcessError error) {
    if (error == QProcess::FailedToStart) end(false);
  });
  opener->start(QStringLiteral("xdg-open"), {path});
}

} // namespace sonvel
