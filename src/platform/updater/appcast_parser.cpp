#include "platform/updater/appcast_parser.h"

#include "platform/updater/release_notes.h"

namespace sonvel::updater {
namespace {

constexpr qsizetype kMaximumDepth = 32;
constexpr qsizetype kMaximumItems = 1'000;
constexpr qsizetype kMaximumTextCharacters = 64 * 1024;
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

} // namespace

AppcastParser::AppcastParser() {
  // The prefix is what counts in these feeds, whatever it is bound to.
  xml_.setNamespaceProcessing(false);
}

bool AppcastParser::add(const QByteArray& piece) {
  if (failed_) return false;
  xml_.addData(piece);
  return readTokens();
}

std::optional<Appcast> AppcastParser::finish() {
  if (!failed_ && !ended_) fail(Fault::notXml);
  if (failed_) return std::nullopt;
  return items_;
}

bool AppcastParser::readTokens() {
  while (!xml_.atEnd()) {
    const QXmlStreamReader::TokenType token = xml_.readNext();
    if (token == QXmlStreamReader::Invalid) break;
    if (!readToken(token)) return false;
  }
  if (!xml_.hasError() || xml_.error() == QXmlStreamReader::PrematureEndOfDocumentError) return true;
  return fail(Fault::notXml);
}

bool AppcastParser::readToken(QXmlStreamReader::TokenType token) {
  switch (token) {
  case QXmlStreamReader::DTD:
  case QXmlStreamReader::EntityReference:
    return fail(Fault::documentType);
  case QXmlStreamReader::StartElement:
    return begin();
  case QXmlStreamReader::EndElement:
    end();
    return true;
  case QXmlStreamReader::Characters:
    return appendText(xml_.text());
  case QXmlStreamReader::EndDocument:
    ended_ = true;
    return true;
  default:
    return true;
  }
}

bool AppcastParser::begin() {
  path_.append(xml_.qualifiedName().toString());
  text_.clear();
  if (path_.size() > kMaximumDepth || items_.size() >= kMaximumItems) return fail(Fault::tooLarge);
  if (path_.size() == 1 && path_.front() != QLatin1String("rss")) return fail(Fault::notFeed);
  if (path_.size() == kItemDepth) item_ = {};
  if (path_.size() == kItemDepth + 1 && path_.back() == QLatin1String("enclosure"))
    readEnclosure(xml_.attributes());
  return true;
}

void AppcastParser::end() {
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

bool AppcastParser::appendText(QStringView text) {
  if (text_.size() + text.size() > kMaximumTextCharacters) return fail(Fault::tooLarge);
  text_.append(text);
  return true;
}

void AppcastParser::readEnclosure(const QXmlStreamAttributes& attributes) {
  item_.address = QUrl(attributes.value(QLatin1String("url")).toString().trimmed(), QUrl::StrictMode);
  item_.length = decodedLength(attributes.value(QLatin1String("length")).toString());
  item_.signature = decodedSignature(attributes.value(QLatin1String("sparkle:edSignature")).toString());
}

bool AppcastParser::fail(Fault fault) {
  failed_ = true;
  fault_ = fault;
  return false;
}

} // namespace sonvel::updater
