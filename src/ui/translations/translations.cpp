#include "ui/translations/translations.h"

#include <QGuiApplication>

namespace sonvel {

Translations::Translations(const QLocale& locale) {
  for (const auto& language : locale.uiLanguages()) {
    const QLocale wanted(language);
    // the sources are in English, so there is no file for it
    if (wanted.language() == QLocale::English) break;
    if (!translator_.load(QStringLiteral("sonvel_") + wanted.name(), QStringLiteral(":/sonvel/translations")))
      continue;
    QCoreApplication::installTranslator(&translator_);
    break;
  }
  QGuiApplication::setLayoutDirection(locale.textDirection());
}

Translations::~Translations() {
  QCoreApplication::removeTranslator(&translator_);
}

} // namespace sonvel
