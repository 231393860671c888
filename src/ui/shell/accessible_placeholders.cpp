#include "ui/shell/accessible_placeholders.h"

#include <QAccessible>
#include <QAccessibleObject>
#include <QSet>

namespace sonvel::ui {

namespace {

class Placeholder;

/// Whether anybody reads the program, and the placeholders that exist.
class Placeholders final : public QAccessible::ActivationObserver {
 public:
  static Placeholders& instance() {
    static Placeholders placeholders;
    return placeholders;
  }

  void install();

  void accessibilityActiveChanged(bool active) override;

  bool isActive = false;
  QSet<Placeholder*> existing;
};

class Placeholder final : public QAccessibleObject {
 public:
  explicit Placeholder(QObject* object)
      : QAccessibleObject(object) {
    Placeholders::instance().existing.insert(this);
  }

  ~Placeholder() override { Placeholders::instance().existing.remove(this); }

  Placeholder(const Placeholder&) = delete;
  Placeholder& operator=(const Placeholder&) = delete;

  QAccessibleInterface* parent() const override { return nullptr; }

  QAccessibleInterface* child(int /*index*/) const override { return nullptr; }

  int childCount() const override { return 0; }

  int indexOfChild(const QAccessibleInterface* /*child*/) const override { return -1; }

  QString text(QAccessible::Text /*what*/) const override { return {}; }

  QAccessible::Role role() const override { return QAccessible::NoRole; }

  QAccessible::State state() const override { return {}; }
};

/// Qt asks for each class of the object, the most derived one first. Qt Quick's own classes have the names
/// of their C++ classes.
QAccessibleInterface* makePlaceholder(const QString& className, QObject* object) {
  const bool isOfQmlFile = className.contains(QLatin1String("_QML"));
  return isOfQmlFile && !Placeholders::instance().isActive ? new Placeholder(object) : nullptr;
}

void Placeholders::install() {
  isActive = QAccessible::isActive();
  QAccessible::installFactory(makePlaceholder);
  QAccessible::installActivationObserver(this);
}

/// Whoever reads from now on gets the real interfaces.
void Placeholders::accessibilityActiveChanged(bool active) {
  isActive = active;
  if (!isActive) return;
  const auto former = existing;
  for (auto* placeholder : former)
    QAccessible::deleteAccessibleInterface(QAccessible::uniqueId(placeholder));
}

} // namespace

void installAccessiblePlaceholders() {
  Placeholders::instance().install();
}

} // namespace sonvel::ui
