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

/// A version: numbers separated by dots, optionally with a pre-release suffix as in "1.2-beta". A pre-release
/// precedes its release (1.2-beta < 1.2); digits in suffixes compare as numbers (beta2 < beta10). Trailing
/// zeros are ignored (1.2 == 1.2.0).
class ProgramVersion {
 public:
  /// None unless `text` starts with a number, has at most 64 characters, and contains only ASCII letters,
  /// digits and . - + ~ _.
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

/// What items are compared with.
struct ChoiceCriteria {
  ProgramVersion installed;
  std::optional<ProgramVersion> newestSeen; ///< the newest version ever offered here
  std::set<std::string> allowedChannels;    ///< besides items without a channel
  ProgramVersion system;
  QString architecture;
  AddressPolicy policy;
  QDateTime now;
};

/// The result of a choice.
struct Choice {
  std::optional<AppcastItem> item;    ///< the newest that is newer than the installed one and runs here
  bool needsNewerSystem = false;      ///< no item, but a newer one exists for newer systems
  std::optional<UpdateFailure> fault; ///< of a skipped item that might be newer
};

/// Faulty items do not hide others.
Choice chooseUpdate(const Appcast& appcast, const ChoiceCriteria& criteria);

} // namespace sonvel::updater
