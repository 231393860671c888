// Prints the appearance from the desktop's settings at each change; ends when its input ends.
#include "desktop/portal_appearance.h"

#include <QCoreApplication>
#include <QSocketNotifier>
#include <cstdio>
#include <unistd.h>

int main(int argc, char** argv) {
  using sonvel::Appearance;
  const QCoreApplication application(argc, argv);
  sonvel::desktop::PortalAppearance appearance;
  const auto say = [&appearance] {
    const Appearance now = appearance.current();
    const bool isDark = now.colorScheme == Appearance::ColorScheme::dark;
    const bool isLight = now.colorScheme == Appearance::ColorScheme::light;
    std::printf("%s", isDark ? "dark" : isLight ? "light" : "any");
    if (now.accentColor) std::printf(" %06x", *now.accentColor);
    std::printf("%s%s\n", now.prefersHighContrast ? " stark" : "", now.prefersReducedMotion ? " calm" : "");
    std::fflush(stdout);
  };
  say();
  appearance.onChange(say);
  QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
  QObject::connect(&input, &QSocketNotifier::activated, &application, &QCoreApplication::quit);
  return QCoreApplication::exec();
}
