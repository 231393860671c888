#pragma once

#include <QString>
#include <QVersionNumber>
#include <compare>
#include <optional>

namespace sonvel::updater {

/// A release's version: numbers between dots and, for one that leads up to a release, a suffix as in
/// "1.2-beta". It precedes the release itself (1.2-beta < 1.2); suffixes are compared as texts in which runs
/// of digits are numbers (beta2 < beta10). Trailing zeros don't count (1.2 == 1.2.0).
class ProgramVersion {
 public:
  /// None if `text` doesn't begin with a number or has more than 64 characters.
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

} // namespace sonvel::updater
