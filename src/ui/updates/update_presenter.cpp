#include "ui/updates/update_presenter.h"

namespace sonvel {

UpdatePresenter::UpdatePresenter(UpdateRun& run)
    : run_(run)
    , words_(wordsOf(run.state(), QLocale())) {}

void UpdatePresenter::refresh() {
  words_ = wordsOf(run_.state(), QLocale());
  Q_EMIT changed();
}

void UpdatePresenter::accept() {
  if (words_.acceptLabel.isEmpty()) return;
  switch (run_.state().stage) {
  case UpdateStage::available:
  case UpdateStage::ready:
  case UpdateStage::failed:
    return run_.proceed();
  default:
    return run_.cancel();
  }
}

void UpdatePresenter::acceptByDefault() {
  if (hasDefault()) accept();
}

void UpdatePresenter::dismiss() {
  run_.cancel();
}

QString UpdatePresenter::notes() const {
  const UpdateState& state = run_.state();
  return state.stage == UpdateStage::available ? QString::fromStdString(state.notes) : QString();
}

bool UpdatePresenter::isCounted() const {
  return fractionOf(run_.state()).has_value();
}

double UpdatePresenter::fraction() const {
  return fractionOf(run_.state()).value_or(0);
}

} // namespace sonvel
