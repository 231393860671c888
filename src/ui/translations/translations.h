#pragma once

#include <QLocale>
#include <QTranslator>

namespace sonvel {

/// Has every text of the program in the language of a locale, as long as this object lives; in English where
/// there is no translation. The layout is from right to left where the locale's script is. Main thread, with
/// a QGuiApplication, before anything is shown.
class Translations {
 public:
  explicit Translations(const QLocale& locale = QLocale());
  ~Translations();
  Translations(const Translations&) = delete;
  Translations& operator=(const Translations&) = delete;

 private:
  QTranslator translator_;
};

} // namespace sonvel
