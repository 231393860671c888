#pragma once

#include <QDBusConnection>
#include <chrono>
#include <functional>
#include <memory>

namespace sonvel {

class SingleInstanceService;

/// Requests that reach the first instance. Called from the event loop, after SingleInstance::acquire() has
/// returned.
struct InstanceRequests {
  /// False if this process is about to quit: the caller starts in its place. The token, which may be empty,
  /// is the desktop's permission to take the focus.
  std::function<bool(const QString& activationToken)> showPanel;
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

  explicit SingleInstance(InstanceRequests requests, QDBusConnection bus = QDBusConnection::sessionBus());
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

  QDBusConnection bus_;
  std::unique_ptr<SingleInstanceService> service_;
  bool isFirst_ = false;
};

} // namespace sonvel
