#pragma once

#include <QString>

namespace sonvel::updater {

/// What can keep an update from being found, fetched or installed.
enum class UpdateFailure {
  noNetwork,
  insecureConnection,
  serverRefused,
  tooSlow,
  interrupted,
  insecureRedirect,
  tooManyRedirects,
  feedTooLarge,
  feedUnreadable,
  feedNotFeed,
  feedWithEntities,
  insecureDownload,
  downloadWithoutLength,
  downloadWithoutSignature,
  downloadTooLarge,
  wrongLength,
  wrongSignature,
  noFolder,
  diskFull,
  changedAfterCheck,
  wrongKindOfFile,
  cannotReplace,
  noPackageInstaller,
};

/// What to tell the user: one sentence.
QString sentenceOf(UpdateFailure failure);

} // namespace sonvel::updater
