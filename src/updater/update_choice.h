#pragma once

#include "updater/appcast.h"

#include <QDateTime>
#include <QString>
#include <QVersionNumber>
#include <compare>
#include <optional>
#include <set>
#include <string>

namespace sonvel::updater {

/// A release's version: numbers between dots and, for one that leads up to a release, a suffix as in
/// "1.2-beta". It precedes the release itself (1.2-beta < 1.2); suffixes are compared as texts in which runs
/// of digits are numbers (beta2 < beta10). Trailing zeros don't count (1.2 == 1.2.0).
class ProgramVersion {
 public:
  /// None if `text` doesn't begin with a number, has more than 64 characters, or others than letters and
  /// digits of ASCII, and . - + ~ _.
  static std::optional<ProgramVersion> parse(const QString& text);

  friend std::strong_ordering operator<=>(const ProgramVersion& left, const ProgramVersion& right);

  friend bool operator==(const ProgramVersion& left, const ProgramVersion& right) {
    return (left <=> right) == std::strong_ordering::equal;
  }

 private:
  ProgramVersion(QVersionNumber number, QString suffix);

  QVersionNumber number_;
  QString suffix_;
};

/// What an item is measured against.
struct ChoiceCriteria {
  ProgramVersion installed;
  std::optional<ProgramVersion> newestSeen; ///< the newest that was ever offered here
  std::set<std::string> allowedChannels;    ///< besides items without a channel
  ProgramVersion system;
  QString architecture;
  AddressPolicy policy;
  QDateTime now;
};

/// What to offer.
struct Choice {
  std::optional<AppcastItem> item;    ///< the newest that is newer than what is installed and runs here
  bool needsNewerSystem = false;      ///< no item, though there is a newer one for newer systems
  std::optional<UpdateFailure> fault; ///< of an item that was passed over and might be newer
};

/// Faulty items never hide others.
Choice chooseUpdate(const Appcast& appcast, const ChoiceCriteria& criteria);

} // namespace sonvel::updater
