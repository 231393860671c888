#include "ui/panel_test.h"

#include "ui/presentation/views.h"
#include "ui/symbols/symbol_image_provider.h"

#include <QGuiApplication>
#include <QQuickImageProvider>
#include <algorithm>

namespace sonvel {
namespace {

/// The application that windows need. A warning of Qt fails the test that causes it.
class GuiEnvironment final : public testing::Environment {
 public:
  void SetUp() override {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QUICK_BACKEND", "software");
    QLocale::setDefault(QLocale("en_US"));
    application_.emplace(argumentCount_, arguments_.data());
    QGuiApplication::setFont(QFont("DejaVu Sans", 10));
    QAccessible::setActive(true);
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& message) {
      if (type != QtDebugMsg && type != QtInfoMsg) ADD_FAILURE() << message.toStdString();
    });
  }

  void TearDown() override {
    qInstallMessageHandler(nullptr);
    application_.reset();
  }

 private:
  std::string name_ = "ui_test";
  std::array<char*, 2> arguments_{name_.data(), nullptr};
  int argumentCount_ = 1;
  std::optional<QGuiApplication> application_;
};

const auto* const kGuiEnvironment =
    testing::AddGlobalTestEnvironment(std::make_unique<GuiEnvironment>().release());

/// The same icon for every application.
class PlainIcons final : public QQuickImageProvider {
 public:
  PlainIcons()
      : QQuickImageProvider(QQuickImageProvider::Image) {}

  QImage requestImage(const QString&, QSize* size, const QSize& requestedSize) override {
    QImage image(requestedSize, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::gray);
    *size = requestedSize;
    return image;
  }
};

void collectVisible(QQuickItem* item, std::vector<QQuickItem*>& items) {
  if (!item->isVisible()) return;
  items.push_back(item);
  for (auto* child : item->childItems())
    collectVisible(child, items);
}

} // namespace

PanelTest::PanelTest() {
  registerViews();
  theme_.emplace(appearance_);
  engine_.emplace();
  theme_->install(*engine_);
  engine_->addImageProvider(SymbolImageProvider::kID, std::make_unique<SymbolImageProvider>().release());
  engine_->addImageProvider("app-icon", std::make_unique<PlainIcons>().release());
}

PanelTest::~PanelTest() {
  close();
}

void PanelTest::open() {
  view_ = std::make_unique<QQuickView>(&*engine_, nullptr);
  view_->setInitialProperties({{"model", QVariant::fromValue(model_.get())}, {"serverNotice", QString()}});
  view_->setSource(rootPanelURL());
  ASSERT_NE(root(), nullptr);
  view_->show();
  view_->requestActivate();
  ASSERT_TRUE(QTest::qWaitForWindowActive(view_.get()));
  ASSERT_TRUE(settle());
  view_->setResizeMode(QQuickView::SizeRootObjectToView);
  (void)view_->grabWindow();
  view_->resize(QSizeF(root()->implicitWidth(), root()->implicitHeight()).toSize());
  ASSERT_TRUE(pumpUntil([this] { return root()->size().toSize() == view_->size(); }));
}

void PanelTest::openWith(const std::vector<std::string>& names) {
  for (const auto& name : names)
    play(name, "org." + name);
  open();
}

void PanelTest::stopPlaying(AudioObjectID process) {
  audio_.removeProcess(process);
  passReconciliation();
  passReconciliation();
}

std::vector<QQuickItem*> PanelTest::items() const {
  (void)view_->grabWindow(); // lays out
  std::vector<QQuickItem*> items;
  collectVisible(view_->contentItem(), items);
  return items;
}

QQuickItem* PanelTest::itemNamed(const QString& objectName) const {
  const auto all = items();
  const auto found = std::ranges::find(all, objectName, &QObject::objectName);
  return found != all.end() ? *found : nullptr;
}

QQuickItem* PanelTest::item(QAccessible::Role role, const QString& name) const {
  std::vector<QQuickItem*> found;
  for (auto* item : items()) {
    const auto* seen = accessible(item);
    if (seen != nullptr && seen->role() == role && seen->text(QAccessible::Name) == name)
      found.push_back(item);
  }
  if (found.size() == 1) return found.front();
  ADD_FAILURE() << found.size() << " are named " << name.toStdString() << " in\n"
                << shown().join('\n').toStdString();
  return nullptr;
}

QStringList PanelTest::names(QAccessible::Role role) const {
  QStringList names;
  for (auto* item : items())
    if (const auto* seen = accessible(item); seen != nullptr && seen->role() == role)
      names.append(seen->text(QAccessible::Name));
  return names;
}

QStringList PanelTest::shown() const {
  QStringList lines;
  for (auto* item : items())
    if (const auto line = describe(item); !line.isEmpty())
      lines.append(line + (item->opacity() < 1 ? QString(" at %1").arg(item->opacity()) : QString()) +
                   (item->isEnabled() ? "" : " disabled"));
  return lines;
}

QString PanelTest::describe(QQuickItem* item) const {
  if (item->objectName() == "meter") return "meter " + item->property("shown").toString();
  if (item->inherits("QQuickImage")) {
    const auto source = item->property("source").toUrl();
    if (source.host() == "app-icon") return "icon" + source.path();
    return source.isEmpty() ? "" : source.path().section('/', 1, 1) + colorName(item->parentItem());
  }
  const auto* seen = accessible(item);
  const auto name = seen != nullptr ? seen->text(QAccessible::Name) : QString();
  switch (seen != nullptr ? seen->role() : QAccessible::NoRole) {
  case QAccessible::StaticText:
    return "text " + name + colorName(item);
  case QAccessible::Button:
    return "button " + name + (" | " + seen->text(QAccessible::Description));
  case QAccessible::Slider:
    return "slider " + name + " | " + item->property("value").toString() + " | " +
           seen->text(QAccessible::Description);
  case QAccessible::ListItem:
    return "row " + name;
  case QAccessible::MenuItem:
    return "item " + name;
  default:
    return {};
  }
}

/// Nothing for what has the primary colour.
QString PanelTest::colorName(const QQuickItem* item) const {
  const auto color = item->property("color").value<QColor>();
  for (const auto* name : {"secondary", "tertiary", "accent", "orange", "red"})
    if (theme_->property(name).value<QColor>() == color) return QString(" in ") + name;
  return {};
}

QRectF PanelTest::place(const QQuickItem* item) {
  return item->mapRectToScene(QRectF(0, 0, item->width(), item->height()));
}

QPoint PanelTest::handlePlace(const QQuickItem* slider, double value) {
  const auto* handle = slider->property("handle").value<QQuickItem*>();
  const double from = slider->property("from").toDouble();
  const double to = slider->property("to").toDouble();
  const double x = handle->width() / 2 + (value - from) / (to - from) * (slider->width() - handle->width());
  return slider->mapToScene({x, slider->height() / 2}).toPoint();
}

void PanelTest::click(QQuickItem* item) {
  ASSERT_NE(item, nullptr);
  QTest::mouseClick(view_.get(), Qt::LeftButton, {}, place(item).center().toPoint());
}

void PanelTest::clickAt(QQuickItem* slider, double value) {
  QTest::mouseClick(view_.get(), Qt::LeftButton, {}, handlePlace(slider, value));
}

void PanelTest::press(Qt::Key key, Qt::KeyboardModifiers modifiers) {
  QTest::keyClick(view_.get(), key, modifiers);
}

bool PanelTest::tabTo(const QQuickItem* item) {
  constexpr int kMoreThanThereAre = 400;
  for (int i = 0; i < kMoreThanThereAre && view_->activeFocusItem() != item; ++i)
    press(Qt::Key_Tab);
  return view_->activeFocusItem() == item;
}

} // namespace sonvel
