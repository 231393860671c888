#include "ui/updates/update_presenter.h"

namespace sonvel {

UpdatePresenter::UpdatePresenter(UpdateSession& session)
    : session_(session)
    , words_(wordsOf(session.state(), QLocale())) {}

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

void UpdatePresenter::acceptByDefault() {
  if (hasDefault()) accept();
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

} // namespace sonvel
