#include "updater/release_notes.h"

#include <QRegularExpression>
#include <QStringList>
#include <array>

namespace sonvel::updater {
namespace {

constexpr qsizetype kMaximumCharacters = 16'384;

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

/// The named characters, `&amp;` last so that nothing is decoded twice.
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

/// Lines trimmed, control characters gone, no more than one empty line in a row.
QString tidyLines(const QString& text) {
  static const QRegularExpression controls(QStringLiteral("[\\x00-\\x08\\x0b-\\x1f\\x7f]"));
  static const QRegularExpression blanks(QStringLiteral("[ \\t]+"));
  static const QRegularExpression emptyLines(QStringLiteral("\\n{3,}"));
  QStringList lines =
      QString(text).remove(controls).replace(blanks, QStringLiteral(" ")).split(QLatin1Char('\n'));
  for (QString& line : lines)
    line = line.trimmed();
  return lines.join(QLatin1Char('\n')).replace(emptyLines, QStringLiteral("\n\n")).trimmed();
}

} // namespace

QString plainNotes(const QString& description) {
  return tidyLines(withCharacters(withoutTags(description))).left(kMaximumCharacters);
}

} // namespace sonvel::updater
