#include "updater/feed_text.h"

#include <QRegularExpression>
#include <QStringList>
#include <array>

namespace sonvel::updater {
namespace {

constexpr qsizetype kMaximumNotesCharacters = 16'384;

QString tagName(QStringView tag) {
  QStringView name = tag.startsWith(QLatin1Char('/')) ? tag.mid(1) : tag;
  qsizetype length = 0;
  while (length < name.size() && name.at(length).isLetterOrNumber())
    ++length;
  return name.left(length).toString().toLower();
}

QString replacementOf(QStringView tag) {
  static const QStringList lines{QStringLiteral("p"),  QStringLiteral("br"), QStringLiteral("div"),
                                 QStringLiteral("ul"), QStringLiteral("ol"), QStringLiteral("li"),
                                 QStringLiteral("h1"), QStringLiteral("h2"), QStringLiteral("h3"),
                                 QStringLiteral("h4"), QStringLiteral("tr")};
  const QString name = tagName(tag);
  if (name == QLatin1String("li") && !tag.startsWith(QLatin1Char('/'))) return QStringLiteral("\n\u2022 ");
  return lines.contains(name) ? QStringLiteral("\n") : QString();
}

QString withoutTags(QStringView html) {
  QString text;
  while (!html.isEmpty()) {
    const qsizetype open = html.indexOf(QLatin1Char('<'));
    const qsizetype close = open < 0 ? -1 : html.indexOf(QLatin1Char('>'), open);
    if (close < 0) {
      text.append(html);
      break;
    }
    text.append(html.left(open));
    text.append(replacementOf(html.mid(open + 1, close - open - 1)));
    html = html.mid(close + 1);
  }
  return text;
}

/// Decodes named characters; `&amp;` last, so that nothing is decoded twice.
QString withCharacters(QString text) {
  static const std::array<std::pair<QLatin1String, QLatin1String>, 6> names{
      {{QLatin1String("&lt;"), QLatin1String("<")},
       {QLatin1String("&gt;"), QLatin1String(">")},
       {QLatin1String("&quot;"), QLatin1String("\"")},
       {QLatin1String("&#39;"), QLatin1String("'")},
       {QLatin1String("&nbsp;"), QLatin1String(" ")},
       {QLatin1String("&amp;"), QLatin1String("&")}}};
  for (const auto& [name, character] : names)
    text.replace(name, character);
  return text;
}

/// Whether a character is an invisible control, such as those that reverse the writing direction. Joiners are
/// kept: scripts and emoji need them.
bool isUnseen(QChar character) {
  constexpr char16_t kZeroWidthNonJoiner = 0x200C;
  constexpr char16_t kZeroWidthJoiner = 0x200D;
  if (character == kZeroWidthNonJoiner || character == kZeroWidthJoiner) return false;
  return character.category() == QChar::Other_Control || character.category() == QChar::Other_Format ||
         character.category() == QChar::Other_NotAssigned;
}

QString withoutUnseen(QString text) {
  text.replace(QChar(QChar::LineSeparator), QLatin1Char('\n'));
  text.replace(QChar(QChar::ParagraphSeparator), QLatin1Char('\n'));
  text.removeIf([](QChar character) {
    return character != QLatin1Char('\n') && character != QLatin1Char('\t') && isUnseen(character);
  });
  return text;
}

/// Cuts to the maximum without splitting a surrogate pair.
QString cut(QString text, qsizetype maximumCharacters) {
  text.truncate(maximumCharacters);
  if (!text.isEmpty() && text.back().isHighSurrogate()) text.chop(1);
  return text;
}

/// Trims lines and keeps at most one empty line in a row.
QString tidyLines(const QString& text) {
  static const QRegularExpression emptyLines(QStringLiteral("\n{3,}"));
  QStringList lines = text.split(QLatin1Char('\n'));
  for (QString& line : lines)
    line = line.simplified();
  return lines.join(QLatin1Char('\n')).replace(emptyLines, QStringLiteral("\n\n")).trimmed();
}

} // namespace

QString plainLine(const QString& text, qsizetype maximumCharacters) {
  return cut(withoutUnseen(text).simplified(), maximumCharacters);
}

QString plainNotes(const QString& description) {
  return cut(tidyLines(withoutUnseen(withCharacters(withoutTags(description)))), kMaximumNotesCharacters);
}

} // namespace sonvel::updater
