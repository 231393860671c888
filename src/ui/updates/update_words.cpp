#include "ui/updates/update_words.h"

namespace sonvel {
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
  case UpdateFailure::feedNotSigned:
    return "The list of updates isn't signed by the maker of this program, so it was not used.";
  case UpdateFailure::feedUnreadable:
    return "The list of updates is damaged and can't be read.";
  case UpdateFailure::feedOfOtherProgram:
    return "The list of updates belongs to another program, so it was not used.";
  case UpdateFailure::feedExpired:
    return "The list of updates has expired, so there may be newer versions that it doesn't name.";
  case UpdateFailure::feedOlderThanSeen:
    return "The update server offers something older than it did before, so it was not used.";
  case UpdateFailure::insecureDownload:
    return "The update is offered at an address that isn't secure, so it was not downloaded.";
  case UpdateFailure::incompleteOffer:
    return "The update is offered without all that is needed to check it, so it was not downloaded.";
  case UpdateFailure::downloadTooLarge:
    return "The update is too large to be genuine, so it was not downloaded.";
  case UpdateFailure::wrongLength:
    return "The downloaded update doesn't have the size that was announced, so it was deleted.";
  case UpdateFailure::wrongContent:
    return "The downloaded update isn't what its maker signed, so it was deleted.";
  case UpdateFailure::noSpace:
    return "There isn't enough memory or space on the disk for the update.";
  case UpdateFailure::wrongKindOfFile:
    return "The update isn't made for the way this program is installed, so it was not installed.";
  case UpdateFailure::cannotReplace:
    return "The program's file can't be replaced, so the update was not installed.";
  case UpdateFailure::noPackageInstaller:
    return "This desktop has no package installer that takes the update, so it was not installed.";
  case UpdateFailure::newVersionNotStarted:
    return "The new version couldn't be started, so the previous one is back.";
  case UpdateFailure::newVersionNotReady:
    return "The new version didn't become ready in time, so the previous one is back.";
  case UpdateFailure::newVersionDied:
    break;
  }
  return "The new version ended within a minute of its start, so the previous one is back.";
}

/// "Sonvel 1.1".
QString named(const std::string& version) {
  return QStringLiteral("Sonvel ") + QString::fromStdString(version);
}

QString sizeText(std::int64_t bytes, const QLocale& locale) {
  return locale.formattedDataSize(bytes, 1, QLocale::DataSizeSIFormat);
}

QString text(const char* latin) {
  return QString::fromLatin1(latin);
}

UpdateWords offerWords(const UpdateState& state, const QLocale& locale) {
  return {.heading = text("%1 is available").arg(named(state.offeredVersion)),
          .detail =
              text("You have version %1. The download is %2.")
                  .arg(QString::fromStdString(state.installedVersion), sizeText(state.totalBytes, locale)),
          .acceptLabel = text("Download"),
          .dismissLabel = text("Not Now")};
}

UpdateWords downloadWords(const UpdateState& state, const QLocale& locale) {
  return {.heading = text("Downloading %1").arg(named(state.offeredVersion)),
          .detail = text("Nothing is installed before you say so."),
          .progressText =
              text("%1 of %2").arg(sizeText(state.receivedBytes, locale), sizeText(state.totalBytes, locale)),
          .dismissLabel = text("Cancel"),
          .hasProgress = true};
}

UpdateWords readyWords(const UpdateState& state) {
  return {
      .heading = text("%1 is ready to install").arg(named(state.offeredVersion)),
      .detail =
          state.isPackage
              ? text("It is complete and signed by its maker. The desktop's package installer takes it "
                     "from here and may ask for your password.")
              : text("It is complete and signed by its maker. Sonvel returns every application's sound to "
                     "normal, quits and starts again."),
      .acceptLabel = state.isPackage ? text("Install") : text("Install and Relaunch"),
      .dismissLabel = text("Cancel")};
}

UpdateWords handedOverWords(const UpdateState& state) {
  return {.heading = text("The package installer has the update"),
          .detail = text("Finish the installation of %1 there, then quit Sonvel and open it again.")
                        .arg(named(state.offeredVersion)),
          .acceptLabel = text("OK"),
          .symbol = text("checkmark")};
}

UpdateWords failureWords(const UpdateState& state) {
  return {.heading = text("Sonvel couldn't be updated"),
          .detail = state.failure ? sentenceOf(*state.failure) : QString(),
          .acceptLabel = text("Try Again"),
          .dismissLabel = text("Close"),
          .symbol = text("exclamationmark")};
}

} // namespace

QString sentenceOf(UpdateFailure failure) {
  return text(sentenceText(failure));
}

std::optional<double> fractionOf(const UpdateState& state) {
  if (state.stage != UpdateStage::downloading || state.totalBytes <= 0) return std::nullopt;
  return static_cast<double>(state.receivedBytes) / static_cast<double>(state.totalBytes);
}

UpdateWords wordsOf(const UpdateState& state, const QLocale& locale) {
  switch (state.stage) {
  case UpdateStage::idle:
    return {};
  case UpdateStage::checking:
    return {.heading = text("Looking for a new version"),
            .detail = text("You have %1.").arg(named(state.installedVersion)),
            .dismissLabel = text("Cancel"),
            .hasProgress = true};
  case UpdateStage::upToDate:
    return {
        .heading = text("Sonvel is up to date"),
        .detail =
            text("Version %1 is the newest there is.").arg(QString::fromStdString(state.installedVersion)),
        .acceptLabel = text("OK"),
        .symbol = text("checkmark")};
  case UpdateStage::needsNewerSystem:
    return {.heading = text("The new version needs a newer system"),
            .detail = text("There is a newer version of Sonvel, but it doesn't run on this system. You keep "
                           "version %1.")
                          .arg(QString::fromStdString(state.installedVersion)),
            .acceptLabel = text("OK")};
  case UpdateStage::available:
    return offerWords(state, locale);
  case UpdateStage::downloading:
    return downloadWords(state, locale);
  case UpdateStage::verifying:
    return {.heading = text("Verifying %1").arg(named(state.offeredVersion)),
            .detail = text("Checking that it is complete and signed by its maker."),
            .dismissLabel = text("Cancel"),
            .hasProgress = true};
  case UpdateStage::ready:
    return readyWords(state);
  case UpdateStage::installing:
    return {.heading = text("Installing %1").arg(named(state.offeredVersion)),
            .detail = text("This takes a moment."),
            .dismissLabel = text("Cancel"),
            .hasProgress = true};
  case UpdateStage::restarting:
    return {.heading = text("%1 is installed").arg(named(state.offeredVersion)),
            .detail = text("Sonvel quits now and starts again as the new version."),
            .symbol = text("checkmark")};
  case UpdateStage::handedOver:
    return handedOverWords(state);
  case UpdateStage::failed:
    break;
  }
  return failureWords(state);
}

} // namespace sonvel
