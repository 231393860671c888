#include "ui/updates/update_presenter.h"

#include "ui/colors/contrast.h"

#include <QGuiApplication>

namespace sonvel {

UpdatePresenter::UpdatePresenter(UpdateSession& session, const Appearance& appearance)
    : session_(session)
    , colors_(panelColors(appearance, QGuiApplication::palette()))
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

QUrl UpdatePresenter::symbol() const {
  const auto url = [](const char* name) {
    return QUrl(QStringLiteral("image://symbol/%1/ffffff").arg(name));
  };
  switch (words_.symbol) {
  case UpdateSymbol::upToDate:
  case UpdateSymbol::installed:
    return url("checkmark");
  case UpdateSymbol::failed:
    return url("exclamationmark");
  case UpdateSymbol::busy:
  case UpdateSymbol::offer:
    break;
  }
  return url("arrow.down");
}

QColor UpdatePresenter::symbolColor() const {
  const auto behindWhite = [](const QColor& color) {
    return contrast::towards(color, Qt::black, [](const QColor& darker) {
      return contrast::ratio(darker, Qt::white) >= PanelColors::symbolRatio;
    });
  };
  switch (words_.symbol) {
  case UpdateSymbol::upToDate:
  case UpdateSymbol::installed:
    return behindWhite(colors_.green);
  case UpdateSymbol::failed:
    return behindWhite(colors_.red);
  case UpdateSymbol::busy:
  case UpdateSymbol::offer:
    break;
  }
  return colors_.prominent;
}

} // namespace sonvel
