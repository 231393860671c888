#include "updater/appcast.h"

#include "updater/feed_text.h"
#include "updater/update_choice.h"

#include <QXmlStreamReader>
#include <algorithm>

namespace sonvel::updater {
namespace {

constexpr qsizetype kMaximumDepth = 32;
constexpr qsizetype kMaximumItems = 1'000;
constexpr qsizetype kMaximumTextCharacters = 64LL * 1024;
constexpr qsizetype kMaximumVersionCharacters = 64;
constexpr qsizetype kHashBytes = 32;

/// Twice the size of the program with all its libraries, and small enough for memory.
constexpr qint64 kMaximumFileBytes = 256LL * 1024 * 1024;

qint64 positiveNumber(QStringView text) {
  bool isNumber = false;
  const qint64 number = text.toLongLong(&isNumber);
  return isNumber && number > 0 ? number : 0;
}

QByteArray hashOf(QStringView text) {
  static constexpr auto isHexDigit = [](QChar character) {
    return QStringView(u"0123456789abcdefABCDEF").contains(character);
  };
  if (text.size() != 2 * kHashBytes || !std::all_of(text.begin(), text.end(), isHexDigit)) return {};
  return QByteArray::fromHex(text.toLatin1());
}

/// None without a time zone: the text must mean the same everywhere.
QDateTime timeOf(const QString& text) {
  const QDateTime time = QDateTime::fromString(text, Qt::ISODate);
  return time.timeSpec() == Qt::LocalTime ? QDateTime() : time.toUTC();
}

/// Reads a feed in one pass.
class Reader {
 public:
  explicit Reader(const QByteArray& feed)
      : xml_(feed) {
    // These feeds use fixed prefixes, whatever namespace they are bound to.
    xml_.setNamespaceProcessing(false);
  }

  std::optional<Appcast> read() {
    while (isGood_ && !xml_.atEnd())
      readToken(xml_.readNext());
    if (!isGood_ || xml_.hasError()) return std::nullopt;
    if (feed_.product.isEmpty() || feed_.counter == 0 || !feed_.expires.isValid()) return std::nullopt;
    return feed_;
  }

 private:
  void readToken(QXmlStreamReader::TokenType token);
  void begin();
  void end();
  void takeFeedText(const QString& name, const QString& text);
  void takeItemText(const QString& name, const QString& text);
  void takeEnclosure(const QXmlStreamAttributes& attributes);

  bool isInFeed() const { return path_ == QStringList{QStringLiteral("rss"), QStringLiteral("channel")}; }

  bool isInItem() const {
    return path_ == QStringList{QStringLiteral("rss"), QStringLiteral("channel"), QStringLiteral("item")};
  }

  QXmlStreamReader xml_;
  QStringList path_; ///< names of the open elements
  QString text_;     ///< text of the innermost open element
  AppcastItem item_;
  Appcast feed_;
  bool isGood_ = true;
};

void Reader::readToken(QXmlStreamReader::TokenType token) {
  switch (token) {
  case QXmlStreamReader::DTD:
  case QXmlStreamReader::EntityReference:
    isGood_ = false;
    return;
  case QXmlStreamReader::StartElement:
    return begin();
  case QXmlStreamReader::EndElement:
    return end();
  case QXmlStreamReader::Characters:
    text_.append(xml_.text());
    if (text_.size() > kMaximumTextCharacters) isGood_ = false;
    return;
  default:
    return;
  }
}

void Reader::begin() {
  const QString name = xml_.qualifiedName().toString();
  text_.clear();
  if (isInFeed() && name == QLatin1String("item")) item_ = {};
  if (isInItem() && name == QLatin1String("enclosure")) takeEnclosure(xml_.attributes());
  path_.append(name);
  if (path_.size() > kMaximumDepth || feed_.items.size() >= kMaximumItems) isGood_ = false;
}

void Reader::end() {
  const QString name = path_.takeLast();
  const QString text = text_.trimmed();
  text_.clear();
  if (isInItem()) takeItemText(name, text);
  if (isInFeed()) takeFeedText(name, text);
}

void Reader::takeFeedText(const QString& name, const QString& text) {
  if (name == QLatin1String("sonvel:product")) feed_.product = text;
  if (name == QLatin1String("sonvel:counter")) feed_.counter = positiveNumber(text);
  if (name == QLatin1String("sonvel:expires")) feed_.expires = timeOf(text);
  if (name != QLatin1String("item")) return;
  if (item_.shortVersion.isEmpty()) item_.shortVersion = plainLine(item_.version, kMaximumVersionCharacters);
  feed_.items.append(item_);
}

void Reader::takeItemText(const QString& name, const QString& text) {
  if (name == QLatin1String("sparkle:version")) item_.version = text;
  if (name == QLatin1String("sparkle:shortVersionString"))
    item_.shortVersion = plainLine(text, kMaximumVersionCharacters);
  if (name == QLatin1String("sparkle:channel")) item_.channel = text;
  if (name == QLatin1String("sparkle:minimumSystemVersion")) item_.minimumSystemVersion = text;
  if (name == QLatin1String("sonvel:architecture")) item_.architecture = text;
  if (name == QLatin1String("sonvel:expires")) {
    item_.expires = timeOf(text);
    if (!item_.expires.isValid()) isGood_ = false; // ignoring it would prolong the offer
  }
  if (name == QLatin1String("description")) item_.notes = plainNotes(text);
}

void Reader::takeEnclosure(const QXmlStreamAttributes& attributes) {
  item_.address = QUrl(attributes.value(QLatin1String("url")).toString().trimmed(), QUrl::StrictMode);
  item_.length = positiveNumber(attributes.value(QLatin1String("length")));
  item_.hash = hashOf(attributes.value(QLatin1String("sonvel:sha256")));
}

} // namespace

AddressPolicy policyOfFeed(const QUrl& feed) {
  return feed.scheme() == QLatin1String("http") ? AddressPolicy::httpsOrLocalhost : AddressPolicy::httpsOnly;
}

bool isAllowed(const QUrl& address, AddressPolicy policy) {
  if (!address.isValid() || address.host().isEmpty()) return false;
  if (address.scheme() == QLatin1String("https")) return true;
  return policy == AddressPolicy::httpsOrLocalhost && address.scheme() == QLatin1String("http") &&
         (address.host() == QLatin1String("localhost") || address.host() == QLatin1String("127.0.0.1"));
}

std::optional<UpdateFailure> faultOf(const AppcastItem& item, AddressPolicy policy) {
  if (!ProgramVersion::parse(item.version) || item.architecture.isEmpty() || item.length <= 0 ||
      item.hash.isEmpty())
    return UpdateFailure::incompleteOffer;
  if (!isAllowed(item.address, policy)) return UpdateFailure::insecureDownload;
  if (item.length > kMaximumFileBytes) return UpdateFailure::downloadTooLarge;
  return std::nullopt;
}

std::optional<Appcast> readAppcast(const QByteArray& feed) {
  return Reader(feed).read();
}

} // namespace sonvel::updater
