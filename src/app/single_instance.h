#pragma once

#include <QDBusConnection>
#include <QString>
#include <chrono>
#include <functional>
#include <memory>

namespace sonvel {

class SingleInstanceService;

/// A launcher's permission to take the focus; empty where it gave none.
struct LaunchToken {
  QString wayland; ///< of xdg-activation
  QString x11;     ///< the startup notification's ID
};

/// Requests that reach the first instance. Called from the event loop, after SingleInstance::acquire() has
/// returned.
struct InstanceRequests {
  /// False if this process is about to quit: the caller starts in its place.
  std::function<bool(const LaunchToken& token)> showPanel;
  std::function<void()> quit; ///< starts to quit; need not wait for the end
  std::function<bool(const QString& caller)>
      admits; ///< whether the caller with this unique name may send requests
};

/// Allows one Sonvel per session: the first instance owns the bus name `com.quellmarsh.sonvel`; a later one
/// asks it to show its panel. Main thread.
///
/// The first instance serves at /com/quellmarsh/sonvel: ShowPanel() and Quit() of the interface
/// com.quellmarsh.sonvel, and org.freedesktop.Application for launchers.
class SingleInstance {
 public:
  enum class Outcome {
    first,              ///< this process runs
    toldTheFirst,       ///< another one runs and now shows its panel; this one ends
    firstDoesNotAnswer, ///< another one runs but did not answer; this one ends with an error
    noBus,              ///< no session bus; this process runs
  };

  /// Time limit for the first instance's answer.
  static constexpr std::chrono::milliseconds kPatience{2000};

  /// `token` is what this process was started with, for the first instance.
  explicit SingleInstance(InstanceRequests requests, LaunchToken token,
                          QDBusConnection bus = QDBusConnection::sessionBus());
  /// Releases the name.
  ~SingleInstance();
  SingleInstance(const SingleInstance&) = delete;
  SingleInstance& operator=(const SingleInstance&) = delete;

  /// Takes the name, or asks the first instance to show its panel. Needs a QCoreApplication; blocks for
  /// kPatience at most, if the bus itself answers.
  [[nodiscard]] Outcome acquire();

 private:
  enum class Answer { shown, leaving, none };

  [[nodiscard]] bool takeName();
  [[nodiscard]] Answer askFirst(std::chrono::milliseconds within);
  void waitForName(std::chrono::milliseconds within);

  const LaunchToken token_;
  QDBusConnection bus_;
  std::unique_ptr<SingleInstanceService> service_;
  bool isFirst_ = false;
};

} // namespace sonvel
