#include "ui/updates/update_window.h"

#include "ui/presentation/panel_theme.h"
#include "ui/presentation/views.h"
#include "ui/symbols/symbol_image_provider.h"
#include "ui/updates/update_presenter.h"

#include <QEvent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickView>

/// Made by the build from the types and files of the module.
void qml_register_types_SonvelUpdates(); // NOLINT(readability-identifier-naming)

namespace sonvel {
namespace {

/// The desktop's appearance as it was when the window opened.
class StillAppearance final : public DesktopAppearance {
 public:
  explicit StillAppearance(const Appearance& appearance)
      : appearance_(appearance) {}

  Appearance current() const override { return appearance_; }

  void onChange(std::function<void()>) override {}

 private:
  Appearance appearance_;
};

} // namespace

/// The panel's theme in an appearance that stays.
class UpdateWindow::Theme final : public QObject {
 public:
  explicit Theme(const Appearance& appearance)
      : appearance_(appearance)
      , theme_(appearance_) {}

  PanelTheme& panelTheme() { return theme_; }

 private:
  StillAppearance appearance_;
  PanelTheme theme_;
};

UpdateWindow::UpdateWindow(UpdateSession& session, std::function<Appearance()> appearance)
    : session_(session)
    , appearance_(std::move(appearance)) {
  session_.setObserver(this);
  updateStateChanged();
}

UpdateWindow::~UpdateWindow() {
  session_.setObserver(nullptr);
  view_.reset();
}

void UpdateWindow::updateStateChanged() {
  if (!session_.state().isVisible) return close();
  if (!view_) return open();
  presenter_->refresh();
}

void UpdateWindow::updateAttentionWanted() {
  if (!view_) return;
  view_->raise();
  view_->requestActivate();
}

/// Closing cancels. It is never refused, even where nothing can be cancelled any more: Qt doesn't quit while
/// a window refuses to close.
bool UpdateWindow::eventFilter(QObject* watched, QEvent* event) {
  if (watched != view_.get() || event->type() != QEvent::Close) return false;
  presenter_->dismiss();
  close();
  return false;
}

void UpdateWindow::open() {
  registerViews();
  qml_register_types_SonvelUpdates();
  presenter_ = std::make_unique<UpdatePresenter>(session_);
  theme_ = std::make_unique<Theme>(appearance_());
  view_ = std::make_unique<QQuickView>();
  theme_->panelTheme().install(*view_->engine());
  view_->engine()->addImageProvider(SymbolImageProvider::kID,
                                    std::make_unique<SymbolImageProvider>().release());
  view_->setTitle(QStringLiteral("Sonvel Update"));
  view_->setFlags(Qt::Dialog);
  view_->setColor(theme_->panelTheme().window());
  view_->setResizeMode(QQuickView::SizeViewToRootObject);
  view_->setInitialProperties({{QStringLiteral("presenter"), QVariant::fromValue(presenter_.get())}});
  view_->setSource(QUrl(QStringLiteral("qrc:/qt-project.org/imports/SonvelUpdates/UpdateView.qml")));
  view_->installEventFilter(this);
  const bool isUnasked = session_.state().isUnasked;
  view_->setProperty("_q_showWithoutActivating", isUnasked); // QWidget tells Qt's platforms by it
  view_->show();
  if (!isUnasked) view_->requestActivate();
}

void UpdateWindow::close() {
  if (!view_) return;
  view_->removeEventFilter(this);
  view_->hide();
  // This may be called from a click in it.
  QQuickView* view = view_.release();
  presenter_.release()->setParent(view);
  theme_.release()->setParent(view);
  view->deleteLater();
}

} // namespace sonvel
