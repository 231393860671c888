#include "ui/panel_test.h"

#include "ui/presentation/views.h"
#include "ui/symbols/symbol_image_provider.h"

#include <QGuiApplication>
#include <QQuickImageProvider>
#include <algorithm>

namespace sonvel {
namespace {

/// The application that windows need. What Qt warns of is a failure of the test that brings it about.
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

/// The same icon for every application; writes down which were asked for.
class PlainIcons final : public QQuickImageProvider {
 public:
  explicit PlainIcons(QStringList& askedFor)
      : QQuickImageProvider(QQuickImageProvider::Image)
      , askedFor_(askedFor) {}

  QImage requestImage(const QString& id, QSize* size, const QSize& requestedSize) override {
    askedFor_.append(id);
    QImage image(requestedSize, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::gray);
    *size = requestedSize;
    return image;
  }

 private:
  QStringList& askedFor_;
};

void collectItems(QQuickItem* item, std::vector<QQuickItem*>& items) {
  if (!item->isVisible()) return;
  items.push_back(item);
  for (auto* child : item->childItems())
    collectItems(child, items);
}

void collect(QAccessibleInterface* parent, std::vector<QAccessibleInterface*>& found) {
  for (int i = 0; i < parent->childCount(); ++i) {
    auto* child = parent->child(i);
    if (child == nullptr || child->state().invisible) continue;
    found.push_back(child);
    collect(child, found);
  }
}

} // namespace

void ScriptedAppearance::set(const Appearance& appearance) {
  appearance_ = appearance;
  if (changed_) changed_();
}

PanelTest::PanelTest() {
  registerViews();
  theme_.emplace(appearance_);
  engine_.emplace();
  theme_->install(*engine_);
  engine_->addImageProvider(SymbolImageProvider::kID, std::make_unique<SymbolImageProvider>().release());
  engine_->addImageProvider("app-icon", std::make_unique<PlainIcons>(iconsAskedFor_).release());
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
  layOut();
  view_->resize(QSizeF(root()->implicitWidth(), root()->implicitHeight()).toSize());
  ASSERT_TRUE(pumpUntil([this] { return root()->size().toSize() == view_->size(); }));
}

void PanelTest::openWith(const std::vector<std::string>& names) {
  for (const auto& name : names)
    play(name, "org." + name);
  open();
}

std::vector<QQuickItem*> PanelTest::items() const {
  layOut();
  std::vector<QQuickItem*> items;
  collectItems(view_->contentItem(), items);
  return items;
}

QQuickItem* PanelTest::itemNamed(const QString& objectName) const {
  const auto all = items();
  const auto found = std::ranges::find(all, objectName, &QObject::objectName);
  return found != all.end() ? *found : nullptr;
}

std::vector<QAccessibleInterface*> PanelTest::accessibles() const {
  layOut();
  std::vector<QAccessibleInterface*> found;
  collect(QAccessible::queryAccessibleInterface(view_.get()), found);
  return found;
}

QStringList PanelTest::names(QAccessible::Role role) const {
  QStringList names;
  for (const auto* seen : accessibles())
    if (seen->role() == role) names.append(seen->text(QAccessible::Name));
  return names;
}

QAccessibleInterface* PanelTest::find(QAccessible::Role role, const QString& name) const {
  QAccessibleInterface* found = nullptr;
  int count = 0;
  for (auto* seen : accessibles()) {
    if (seen->role() != role || seen->text(QAccessible::Name) != name) continue;
    found = seen;
    ++count;
  }
  if (count == 1) return found;
  std::string all;
  for (const auto* seen : accessibles())
    all += "\n  " + std::to_string(seen->role()) + " " + seen->text(QAccessible::Name).toStdString();
  ADD_FAILURE() << count << " of role " << role << " are named " << name.toStdString() << "; there are"
                << all;
  return nullptr;
}

QQuickItem* PanelTest::item(QAccessible::Role role, const QString& name) const {
  const auto* found = find(role, name);
  return found != nullptr ? qobject_cast<QQuickItem*>(found->object()) : nullptr;
}

bool PanelTest::shows(const QString& text) const {
  return names(QAccessible::StaticText).contains(text);
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
