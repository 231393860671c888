#include "updater/appcast_parser.h"

#include "updater/release_notes.h"

#include <QXmlStreamReader>
#include <optional>

namespace sonvel::updater {
namespace {

constexpr qsizetype kMaximumDepth = 32;
constexpr qsizetype kMaximumItems = 1'000;
constexpr qsizetype kMaximumTextCharacters = 64LL * 1024;
constexpr qsizetype kItemDepth = 3; // rss, channel, item
constexpr qsizetype kSignatureBytes = 64;

QByteArray decodedSignature(const QString& text) {
  const auto signature =
      QByteArray::fromBase64Encoding(text.trimmed().toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
  return signature && signature.decoded.size() == kSignatureBytes ? signature.decoded : QByteArray();
}

qint64 decodedLength(const QString& text) {
  bool isNumber = false;
  const qint64 length = text.toLongLong(&isNumber);
  return isNumber && length > 0 ? length : 0;
}

/// Goes through a feed once.
class Reader {
 public:
  explicit Reader(const QByteArray& feed)
      : xml_(feed) {
    // The prefix is what counts in these feeds, whatever it is bound to.
    xml_.setNamespaceProcessing(false);
  }

  std::variant<Appcast, AppcastFault> read() {
    while (!fault_ && !xml_.atEnd())
      readToken(xml_.readNext());
    if (!fault_ && xml_.hasError()) fault_ = AppcastFault::notXml;
    if (fault_) return *fault_;
    return items_;
  }

 private:
  void readToken(QXmlStreamReader::TokenType token);
  void begin();
  void end();
  void appendText(QStringView text);
  void readEnclosure(const QXmlStreamAttributes& attributes);

  QXmlStreamReader xml_;
  QList<QString> path_; ///< the names of the open elements
  QString text_;        ///< of the innermost open element
  AppcastItem item_;
  Appcast items_;
  std::optional<AppcastFault> fault_;
};

void Reader::readToken(QXmlStreamReader::TokenType token) {
  switch (token) {
  case QXmlStreamReader::DTD:
  case QXmlStreamReader::EntityReference:
    fault_ = AppcastFault::documentType;
    return;
  case QXmlStreamReader::StartElement:
    return begin();
  case QXmlStreamReader::EndElement:
    return end();
  case QXmlStreamReader::Characters:
    return appendText(xml_.text());
  default:
    return;
  }
}

void Reader::begin() {
  path_.append(xml_.qualifiedName().toString());
  text_.clear();
  if (path_.size() > kMaximumDepth || items_.size() >= kMaximumItems) fault_ = AppcastFault::tooLarge;
  if (path_.size() == 1 && path_.front() != QLatin1String("rss")) fault_ = AppcastFault::notFeed;
  if (path_.size() == kItemDepth) item_ = {};
  if (path_.size() == kItemDepth + 1 && path_.back() == QLatin1String("enclosure"))
    readEnclosure(xml_.attributes());
}

void Reader::end() {
  const QString name = path_.takeLast();
  const QString text = text_.trimmed();
  text_.clear();
  if (path_.size() == kItemDepth - 1 && name == QLatin1String("item")) {
    if (item_.shortVersion.isEmpty()) item_.shortVersion = item_.version;
    items_.append(item_);
  }
  if (path_.size() != kItemDepth) return;
  if (name == QLatin1String("sparkle:version")) item_.version = text;
  if (name == QLatin1String("sparkle:shortVersionString")) item_.shortVersion = text;
  if (name == QLatin1String("sparkle:channel")) item_.channel = text;
  if (name == QLatin1String("sparkle:minimumSystemVersion")) item_.minimumSystemVersion = text;
  if (name == QLatin1String("description")) item_.notes = plainNotes(text);
}

void Reader::appendText(QStringView text) {
  if (text_.size() + text.size() > kMaximumTextCharacters) fault_ = AppcastFault::tooLarge;
  text_.append(text);
}

void Reader::readEnclosure(const QXmlStreamAttributes& attributes) {
  item_.address = QUrl(attributes.value(QLatin1String("url")).toString().trimmed(), QUrl::StrictMode);
  item_.length = decodedLength(attributes.value(QLatin1String("length")).toString());
  item_.signature = decodedSignature(attributes.value(QLatin1String("sparkle:edSignature")).toString());
  if (item_.version.isEmpty()) item_.version = attributes.value(QLatin1String("sparkle:version")).toString();
  if (item_.shortVersion.isEmpty())
    item_.shortVersion = attributes.value(QLatin1String("sparkle:shortVersionString")).toString();
}

} // namespace

std::variant<Appcast, AppcastFault> readAppcast(const QByteArray& feed) {
  return Reader(feed).read();
}

} // namespace sonvel::updater
