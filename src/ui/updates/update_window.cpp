#include "ui/updates/update_window.h"

#include "ui/symbols/symbol_image_provider.h"
#include "ui/updates/update_presenter.h"

#include <QEvent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickView>

/// Made by the build from the types and files of the module.
void qml_register_types_SonvelUpdates(); // NOLINT(readability-identifier-naming)

namespace sonvel {

UpdateWindow::UpdateWindow(UpdateSession& session, std::function<Appearance()> appearance)
    : session_(session)
    , appearance_(std::move(appearance)) {
  session_.setObserver(this);
  updateStateChanged();
}

UpdateWindow::~UpdateWindow() {
  session_.setObserver(nullptr);
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

/// Closing cancels. It is never refused, not even where there is nothing to cancel any more: a window that
/// doesn't close keeps the whole program from quitting.
bool UpdateWindow::eventFilter(QObject* watched, QEvent* event) {
  if (watched != view_.get() || event->type() != QEvent::Close) return false;
  presenter_->dismiss();
  close();
  return false;
}

void UpdateWindow::open() {
  qml_register_types_SonvelUpdates();
  presenter_ = std::make_unique<UpdatePresenter>(session_, appearance_());
  view_ = std::make_unique<QQuickView>();
  view_->engine()->addImageProvider(SymbolImageProvider::kID,
                                    std::make_unique<SymbolImageProvider>().release());
  view_->setTitle(QStringLiteral("Sonvel Update"));
  view_->setFlags(Qt::Dialog);
  view_->setColor(presenter_->windowColor());
  view_->setResizeMode(QQuickView::SizeViewToRootObject);
  view_->setInitialProperties({{QStringLiteral("presenter"), QVariant::fromValue(presenter_.get())}});
  view_->setSource(QUrl(QStringLiteral("qrc:/qt-project.org/imports/SonvelUpdates/UpdateView.qml")));
  view_->installEventFilter(this);
  view_->show();
  view_->requestActivate();
}

void UpdateWindow::close() {
  if (!view_) return;
  view_->removeEventFilter(this);
  view_->hide();
  // It may be in the middle of a click.
  view_.release()->deleteLater();
  presenter_.release()->deleteLater();
}

} // namespace sonvel
