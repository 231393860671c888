#include "ui/updates/update_presenter.h"

#include <QGuiApplication>

namespace sonvel {

UpdatePresenter::UpdatePresenter(UpdateSession& session, const Appearance& appearance)
    : session_(session)
    , colors_(updateColors(appearance, QGuiApplication::palette()))
    , words_(wordsOf(session.state(), QLocale()))
    , animates_(!appearance.prefersReducedMotion) {}

void UpdatePresenter::refresh() {
  words_ = wordsOf(session_.state(), QLocale());
  Q_EMIT changed();
}

void UpdatePresenter::accept() {
  if (words_.acceptLabel.isEmpty()) return;
  switch (session_.state().stage) {
  case UpdateStage::available:
  case UpdateStage::ready:
  case UpdateStage::failed:
    return session_.proceed();
  default:
    return session_.cancel();
  }
}

void UpdatePresenter::dismiss() {
  session_.cancel();
}

QString UpdatePresenter::notes() const {
  const UpdateState& state = session_.state();
  return state.stage == UpdateStage::available ? QString::fromStdString(state.notes) : QString();
}

bool UpdatePresenter::isCounted() const {
  return fractionOf(session_.state()).has_value();
}

double UpdatePresenter::fraction() const {
  return fractionOf(session_.state()).value_or(0);
}

QString UpdatePresenter::symbol() const {
  switch (words_.symbol) {
  case UpdateSymbol::upToDate:
  case UpdateSymbol::installed:
    return QStringLiteral("check");
  case UpdateSymbol::failed:
    return QStringLiteral("exclamation");
  case UpdateSymbol::busy:
  case UpdateSymbol::offer:
    break;
  }
  return QStringLiteral("arrow");
}

QColor UpdatePresenter::symbolColor() const {
  switch (words_.symbol) {
  case UpdateSymbol::upToDate:
  case UpdateSymbol::installed:
    return colors_.good;
  case UpdateSymbol::failed:
    return colors_.bad;
  case UpdateSymbol::busy:
  case UpdateSymbol::offer:
    break;
  }
  return colors_.accent;
}

} // namespace sonvel
