#include "updater/download_folder.h"

#include <QDir>
#include <QTemporaryDir>
#include <utility>

namespace sonvel::updater {
namespace {

const QString kPrefix = QStringLiteral("download-");

} // namespace

std::unique_ptr<DownloadFolder> DownloadFolder::make(const QString& parent) {
  if (!QDir().mkpath(parent)) return nullptr;
  auto folder =
      std::make_unique<QTemporaryDir>(parent + QLatin1Char('/') + kPrefix + QStringLiteral("XXXXXX"));
  if (!folder->isValid()) return nullptr;
  return std::unique_ptr<DownloadFolder>(new DownloadFolder(std::move(folder)));
}

DownloadFolder::DownloadFolder(std::unique_ptr<QTemporaryDir> folder)
    : folder_(std::move(folder)) {}

DownloadFolder::~DownloadFolder() = default;

std::filesystem::path DownloadFolder::file(const QString& name) const {
  return folder_->filePath(name).toStdString();
}

void DownloadFolder::keep() {
  folder_->setAutoRemove(false);
}

void DownloadFolder::remove() {
  folder_->remove();
}

void DownloadFolder::sweep(const QString& parent) {
  const QDir folder(parent);
  for (const QString& name : folder.entryList({kPrefix + QLatin1Char('*')}, QDir::Dirs | QDir::NoSymLinks))
    QDir(folder.filePath(name)).removeRecursively();
}

} // namespace sonvel::updater
