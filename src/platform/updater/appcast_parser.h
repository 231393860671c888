#pragma once

#include "platform/updater/appcast.h"

#include <QByteArray>
#include <QXmlStreamReader>
#include <optional>

namespace sonvel::updater {

/// Reads a feed: RSS whose items carry `sparkle:version`, `sparkle:shortVersionString`, `sparkle:channel`,
/// `sparkle:minimumSystemVersion`, a description and an enclosure with url, length and `sparkle:edSignature`.
/// Takes the feed piece by piece, so that a bad one is given up before it is all there. A feed with a
/// document type is refused, and with it every entity but XML's own five. Any one thread.
class AppcastParser {
 public:
  enum class Fault { notXml, notFeed, documentType, tooLarge };

  AppcastParser();

  /// False once the feed has a fault, which is final.
  bool add(const QByteArray& piece);

  /// To be called once, when no more pieces come. What was read, if the feed ended where it should.
  std::optional<Appcast> finish();

  /// Why add or finish failed.
  Fault fault() const noexcept { return fault_; }

 private:
  bool readTokens();
  bool readToken(QXmlStreamReader::TokenType token);
  bool begin();
  void end();
  bool appendText(QStringView text);
  void readEnclosure(const QXmlStreamAttributes& attributes);
  bool fail(Fault fault);

  QXmlStreamReader xml_;
  QList<QString> path_; ///< the names of the open elements
  QString text_;        ///< of the innermost open element
  AppcastItem item_;
  Appcast items_;
  bool failed_ = false;
  bool ended_ = false;
  Fault fault_ = Fault::notXml;
};

} // namespace sonvel::updater
