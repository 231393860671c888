#include "updater/update_choice.h"

#include <algorithm>
#include <utility>

namespace sonvel::updater {
namespace {

constexpr qsizetype kMaximumCharacters = 64;

bool isDigit(QChar character) {
  return character >= QLatin1Char('0') && character <= QLatin1Char('9');
}

bool isOfVersions(QChar character) {
  return isDigit(character) || (character >= QLatin1Char('a') && character <= QLatin1Char('z')) ||
         (character >= QLatin1Char('A') && character <= QLatin1Char('Z')) ||
         QStringView(u".-+~_").contains(character);
}

/// Removes and returns the leading digits of `text`, without leading zeros.
QStringView takeNumber(QStringView& text) {
  while (text.size() > 1 && text.front() == QLatin1Char('0') && isDigit(text.at(1)))
    text = text.mid(1);
  qsizetype length = 0;
  while (length < text.size() && isDigit(text.at(length)))
    ++length;
  const QStringView number = text.left(length);
  text = text.mid(length);
  return number;
}

std::strong_ordering compareSuffixes(QStringView left, QStringView right) {
  while (!left.isEmpty() && !right.isEmpty()) {
    if (isDigit(left.front()) && isDigit(right.front())) {
      const QStringView leftNumber = takeNumber(left);
      const QStringView rightNumber = takeNumber(right);
      if (leftNumber.size() != rightNumber.size()) return leftNumber.size() <=> rightNumber.size();
      if (const int order = leftNumber.compare(rightNumber); order != 0) return order <=> 0;
    } else {
      if (left.front() != right.front()) return left.front().unicode() <=> right.front().unicode();
      left = left.mid(1);
      right = right.mid(1);
    }
  }
  return left.size() <=> right.size();
}

bool isMeantFor(const AppcastItem& item, const ChoiceCriteria& criteria) {
  return item.architecture == criteria.architecture &&
         (item.channel.isEmpty() || criteria.allowedChannels.contains(item.channel.toStdString()));
}

bool runsOn(const AppcastItem& item, const ProgramVersion& system) {
  if (item.minimumSystemVersion.isEmpty()) return true;
  const auto minimum = ProgramVersion::parse(item.minimumSystemVersion);
  return minimum && *minimum <= system;
}

/// Whether a newer or unreadable version prevents the answer "nothing newer".
bool couldBeNewer(const AppcastItem& item, const ProgramVersion& installed) {
  const auto version = ProgramVersion::parse(item.version);
  return !version || *version > installed;
}

} // namespace

ProgramVersion::ProgramVersion(QVersionNumber number, QString suffix)
    : number_(std::move(number))
    , suffix_(std::move(suffix)) {}

std::optional<ProgramVersion> ProgramVersion::parse(const QString& text) {
  if (text.size() > kMaximumCharacters || !std::all_of(text.begin(), text.end(), isOfVersions))
    return std::nullopt;
  qsizetype end = 0;
  const QVersionNumber number = QVersionNumber::fromString(text, &end);
  if (number.isNull()) return std::nullopt;
  return ProgramVersion(number.normalized(), text.mid(end));
}

std::strong_ordering operator<=>(const ProgramVersion& left, const ProgramVersion& right) {
  if (const int order = QVersionNumber::compare(left.number_, right.number_); order != 0) return order <=> 0;
  if (left.suffix_.isEmpty() != right.suffix_.isEmpty())
    return left.suffix_.isEmpty() ? std::strong_ordering::greater : std::strong_ordering::less;
  return compareSuffixes(left.suffix_, right.suffix_);
}

Choice chooseUpdate(const Appcast& appcast, const ChoiceCriteria& criteria) {
  Choice choice;
  ProgramVersion best = criteria.installed;
  for (const AppcastItem& item : appcast.items) {
    if (!item.architecture.isEmpty() && !isMeantFor(item, criteria)) continue;
    if (const auto fault = faultOf(item, criteria.policy)) {
      if (couldBeNewer(item, criteria.installed)) choice.fault = fault;
      continue;
    }
    const ProgramVersion version = *ProgramVersion::parse(item.version);
    if (version <= best) continue;
    if (item.expires.isValid() && item.expires <= criteria.now) {
      choice.fault = UpdateFailure::feedExpired;
    } else if (criteria.newestSeen && version < *criteria.newestSeen) {
      choice.fault = UpdateFailure::feedOlderThanSeen;
    } else if (!runsOn(item, criteria.system)) {
      choice.needsNewerSystem = true;
    } else {
      best = version;
      choice.item = item;
    }
  }
  if (choice.item) choice.needsNewerSystem = false;
  return choice;
}

} // namespace sonvel::updater
