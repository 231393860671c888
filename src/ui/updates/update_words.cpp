#include "ui/updates/update_words.h"

#include <QCoreApplication>

namespace sonvel {
namespace {

/// What the program says, in the user's language.
struct Words {
  Q_DECLARE_TR_FUNCTIONS(UpdateWords)
};

} // namespace

QString sentenceOf(UpdateFailure failure) {
  switch (failure) {
  case UpdateFailure::noNetwork:
    return Words::tr("The update server can't be reached; check the network connection and try again.");
  case UpdateFailure::insecureConnection:
    return Words::tr("The connection to the update server isn't secure, so nothing was read from it.");
  case UpdateFailure::serverRefused:
    return Words::tr("The update server doesn't have what was asked for; try again later.");
  case UpdateFailure::tooSlow:
    return Words::tr("The update server took too long to answer; try again later.");
  case UpdateFailure::interrupted:
    return Words::tr(
        "The connection to the update server broke off before everything had arrived; try again later.");
  case UpdateFailure::insecureRedirect:
    return Words::tr("The update server points to an address that isn't secure, so it was not followed.");
  case UpdateFailure::tooManyRedirects:
    return Words::tr("The update server points from one address to another without an end.");
  case UpdateFailure::feedTooLarge:
    return Words::tr("The list of updates is too large to be genuine, so it was not read.");
  case UpdateFailure::feedNotSigned:
    return Words::tr("The list of updates isn't signed by the maker of this program, so it was not used.");
  case UpdateFailure::feedUnreadable:
    return Words::tr("The list of updates is damaged and can't be read.");
  case UpdateFailure::feedOfOtherProgram:
    return Words::tr("The list of updates belongs to another program, so it was not used.");
  case UpdateFailure::feedExpired:
    return Words::tr("The list of updates has expired, so there may be newer versions that it doesn't name.");
  case UpdateFailure::feedOlderThanSeen:
    return Words::tr("The update server offers something older than it did before, so it was not used.");
  case UpdateFailure::insecureDownload:
    return Words::tr("The update is offered at an address that isn't secure, so it was not downloaded.");
  case UpdateFailure::incompleteOffer:
    return Words::tr(
        "The update is offered without all that is needed to check it, so it was not downloaded.");
  case UpdateFailure::downloadTooLarge:
    return Words::tr("The update is too large to be genuine, so it was not downloaded.");
  case UpdateFailure::wrongLength:
    return Words::tr("The downloaded update doesn't have the size that was announced, so it was deleted.");
  case UpdateFailure::wrongContent:
    return Words::tr("The downloaded update isn't what its maker signed, so it was deleted.");
  case UpdateFailure::noSpace:
    return Words::tr("There isn't enough memory or space on the disk for the update.");
  case UpdateFailure::wrongKindOfFile:
    return Words::tr("The update isn't made for the way this program is installed, so it was not installed.");
  case UpdateFailure::cannotReplace:
    return Words::tr("The program's file can't be replaced, so the update was not installed.");
  case UpdateFailure::noPackageInstaller:
    return Words::tr("This desktop has no package installer that takes the update, so it was not installed.");
  case UpdateFailure::newVersionNotStarted:
    return Words::tr("The new version couldn't be started, so the previous one is back.");
  case UpdateFailure::newVersionNotReady:
    return Words::tr("The new version didn't become ready in time, so the previous one is back.");
  case UpdateFailure::newVersionDied:
    break;
  }
  return Words::tr("The new version ended within a minute of its start, so the previous one is back.");
}

namespace {

/// "Sonvel 1.1".
QString named(const std::string& version) {
  return QStringLiteral("Sonvel ") + QString::fromStdString(version);
}

QString sizeText(std::int64_t bytes, const QLocale& locale) {
  return locale.formattedDataSize(bytes, 1, QLocale::DataSizeSIFormat);
}

UpdateWords offerWords(const UpdateState& state, const QLocale& locale) {
  return {.heading = Words::tr("%1 is available").arg(named(state.offeredVersion)),
          .detail =
              Words::tr("You have version %1. The download is %2.")
                  .arg(QString::fromStdString(state.installedVersion), sizeText(state.totalBytes, locale)),
          .acceptLabel = Words::tr("Download"),
          .dismissLabel = Words::tr("Not Now")};
}

UpdateWords downloadWords(const UpdateState& state, const QLocale& locale) {
  return {.heading = Words::tr("Downloading %1").arg(named(state.offeredVersion)),
          .detail = Words::tr("Nothing is installed before you say so."),
          .progressText = Words::tr("%1 of %2")
                              .arg(sizeText(state.receivedBytes, locale), sizeText(state.totalBytes, locale)),
          .dismissLabel = Words::tr("Cancel"),
          .hasProgress = true};
}

UpdateWords readyWords(const UpdateState& state) {
  return {
      .heading = Words::tr("%1 is ready to install").arg(named(state.offeredVersion)),
      .detail =
          state.isPackage
              ? Words::tr("It is complete and signed by its maker. The desktop's package installer takes it "
                          "from here and may ask for your password.")
              : Words::tr(
                    "It is complete and signed by its maker. Sonvel returns every application's sound to "
                    "normal, quits and starts again."),
      .acceptLabel = state.isPackage ? Words::tr("Install") : Words::tr("Install and Relaunch"),
      .dismissLabel = Words::tr("Cancel")};
}

UpdateWords handedOverWords(const UpdateState& state) {
  return {.heading = Words::tr("The package installer has the update"),
          .detail = Words::tr("Finish the installation of %1 there, then quit Sonvel and open it again.")
                        .arg(named(state.offeredVersion)),
          .acceptLabel = Words::tr("OK"),
          .symbol = QStringLiteral("checkmark")};
}

UpdateWords failureWords(const UpdateState& state) {
  return {.heading = Words::tr("Sonvel couldn't be updated"),
          .detail = state.failure ? sentenceOf(*state.failure) : QString(),
          .acceptLabel = Words::tr("Try Again"),
          .dismissLabel = Words::tr("Close"),
          .symbol = QStringLiteral("exclamationmark")};
}

} // namespace

std::optional<double> fractionOf(const UpdateState& state) {
  if (state.stage != UpdateStage::downloading || state.totalBytes <= 0) return std::nullopt;
  return static_cast<double>(state.receivedBytes) / static_cast<double>(state.totalBytes);
}

UpdateWords wordsOf(const UpdateState& state, const QLocale& locale) {
  switch (state.stage) {
  case UpdateStage::idle:
    return {};
  case UpdateStage::checking:
    return {.heading = Words::tr("Looking for a new version"),
            .detail = Words::tr("You have %1.").arg(named(state.installedVersion)),
            .dismissLabel = Words::tr("Cancel"),
            .hasProgress = true};
  case UpdateStage::upToDate:
    return {.heading = Words::tr("Sonvel is up to date"),
            .detail = Words::tr("Version %1 is the newest there is.")
                          .arg(QString::fromStdString(state.installedVersion)),
            .acceptLabel = Words::tr("OK"),
            .symbol = QStringLiteral("checkmark")};
  case UpdateStage::needsNewerSystem:
    return {.heading = Words::tr("The new version needs a newer system"),
            .detail =
                Words::tr("There is a newer version of Sonvel, but it doesn't run on this system. You keep "
                          "version %1.")
                    .arg(QString::fromStdString(state.installedVersion)),
            .acceptLabel = Words::tr("OK")};
  case UpdateStage::available:
    return offerWords(state, locale);
  case UpdateStage::downloading:
    return downloadWords(state, locale);
  case UpdateStage::verifying:
    return {.heading = Words::tr("Verifying %1").arg(named(state.offeredVersion)),
            .detail = Words::tr("Checking that it is complete and signed by its maker."),
            .dismissLabel = Words::tr("Cancel"),
            .hasProgress = true};
  case UpdateStage::ready:
    return readyWords(state);
  case UpdateStage::installing:
    return {.heading = Words::tr("Installing %1").arg(named(state.offeredVersion)),
            .detail = Words::tr("This takes a moment."),
            .dismissLabel = Words::tr("Cancel"),
            .hasProgress = true};
  case UpdateStage::restarting:
    return {.heading = Words::tr("%1 is installed").arg(named(state.offeredVersion)),
            .detail = Words::tr("Sonvel quits now and starts again as the new version."),
            .symbol = QStringLiteral("checkmark")};
  case UpdateStage::handedOver:
    return handedOverWords(state);
  case UpdateStage::failed:
    break;
  }
  return failureWords(state);
}

} // namespace sonvel
