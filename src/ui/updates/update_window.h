#pragma once

#include "platform/appearance.h"
#include "platform/update_run.h"

#include <QObject>
#include <functional>
#include <memory>

class QQuickView;

namespace sonvel {

class UpdatePresenter;

/// The window of an update, open while the run is visible. It takes the focus only if the user asked for
/// the update. Closing it cancels; if that is too late, it opens again when there is news. Main thread.
class UpdateWindow final : public QObject, public UpdateSurface, private UpdateObserver {
  Q_OBJECT

 public:
  /// `run` outlives this object. `appearance` is called whenever the window opens.
  UpdateWindow(UpdateRun& run, std::function<Appearance()> appearance);
  ~UpdateWindow() override;

  /// The window while it is open; null otherwise.
  QQuickView* view() const noexcept { return view_.get(); }

 private:
  class Theme;

  bool eventFilter(QObject* watched, QEvent* event) override;
  void updateStateChanged() override;
  void updateAttentionWanted() override;
  void open();
  void close();

  UpdateRun& run_;
  std::function<Appearance()> appearance_;
  std::unique_ptr<Theme> theme_;
  std::unique_ptr<UpdatePresenter> presenter_;
  std::unique_ptr<QQuickView> view_; ///< refers to presenter and theme, so destroyed first
};

} // namespace sonvel
