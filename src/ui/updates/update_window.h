#pragma once

#include "platform/appearance.h"
#include "platform/update_session.h"

#include <QObject>
#include <functional>
#include <memory>

class QQuickView;

namespace sonvel {

class UpdatePresenter;

/// The small window in which the user sees an update, open while the session is visible. It takes the
/// keyboard only if the user asked for the update. Closing it cancels; where that is too late, it opens again
/// when there is something new to see. Main thread.
class UpdateWindow final : public QObject, public UpdateSurface, private UpdateObserver {
  Q_OBJECT

 public:
  /// `session` lives longer. `appearance` is asked each time that the window opens.
  UpdateWindow(UpdateSession& session, std::function<Appearance()> appearance);
  ~UpdateWindow() override;

  /// The window, for as long as it is open; null otherwise.
  QQuickView* view() const noexcept { return view_.get(); }

 private:
  class Theme;

  bool eventFilter(QObject* watched, QEvent* event) override;
  void updateStateChanged() override;
  void updateAttentionWanted() override;
  void open();
  void close();

  UpdateSession& session_;
  std::function<Appearance()> appearance_;
  std::unique_ptr<Theme> theme_;
  std::unique_ptr<UpdatePresenter> presenter_;
  std::unique_ptr<QQuickView> view_; ///< refers to presenter and theme
};

} // namespace sonvel
