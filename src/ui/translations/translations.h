#pragma once

#include <QLocale>
#include <QTranslator>

namespace sonvel {

/// Shows the program's texts in the language of a locale during this object's lifetime; in English without a
/// translation. Sets the layout direction of the locale's script. Main thread, with a QGuiApplication, before
/// anything is shown.
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
