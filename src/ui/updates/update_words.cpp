#include "platform/updater/update_failure.h"

namespace sonvel::updater {
namespace {

const char* sentenceText(UpdateFailure failure) {
  switch (failure) {
  case UpdateFailure::noNetwork:
    return "The update server can't be reached; check the network connection and try again.";
  case UpdateFailure::insecureConnection:
    return "The connection to the update server isn't secure, so nothing was read from it.";
  case UpdateFailure::serverRefused:
    return "The update server doesn't have what was asked for; try again later.";
  case UpdateFailure::tooSlow:
    return "The update server took too long to answer; try again later.";
  case UpdateFailure::interrupted:
    return "The connection to the update server broke off before everything had arrived; try again later.";
  case UpdateFailure::insecureRedirect:
    return "The update server points to an address that isn't secure, so it was not followed.";
  case UpdateFailure::tooManyRedirects:
    return "The update server points from one address to another without an end.";
  case UpdateFailure::feedTooLarge:
    return "The list of updates is too large to be genuine, so it was not read.";
  case UpdateFailure::feedUnreadable:
    return "The list of updates is damaged and can't be read.";
  case UpdateFailure::feedNotFeed:
    return "The update server sent something other than a list of updates.";
  case UpdateFailure::feedWithEntities:
    return "The list of updates contains definitions that it must not have, so it was not read.";
  case UpdateFailure::insecureDownload:
    return "The update is offered at an address that isn't secure, so it was not downloaded.";
  case UpdateFailure::downloadWithoutLength:
    return "The update is offered without its size, so it was not downloaded.";
  case UpdateFailure::downloadWithoutSignature:
    return "The update is offered without a valid signature, so it was not downloaded.";
  case UpdateFailure::downloadTooLarge:
    return "The update is too large to be genuine, so it was not downloaded.";
  case UpdateFailure::wrongLength:
    return "The downloaded update doesn't have the size that was announced, so it was deleted.";
  case UpdateFailure::wrongSignature:
    return "The downloaded update isn't signed by the maker of this program, so it was deleted.";
  case UpdateFailure::noFolder:
    return "There is no folder to keep the download in, so nothing was downloaded.";
  case UpdateFailure::diskFull:
    return "There isn't enough space on the disk for the update.";
  case UpdateFailure::changedAfterCheck:
    return "The downloaded update changed after it was checked, so it was not installed.";
  case UpdateFailure::wrongKindOfFile:
    return "The update isn't made for the way this program is installed, so it was not installed.";
  case UpdateFailure::cannotReplace:
    return "The program's file can't be replaced, so the update was not installed.";
  case UpdateFailure::noPackageInstaller:
    break;
  }
  return "This desktop has no package installer that takes the update, so it was not installed.";
}

} // namespace

QString sentenceOf(UpdateFailure failure) {
  return QString::fromLatin1(sentenceText(failure));
}

} // namespace sonvel::updater
