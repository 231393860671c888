#pragma once

#include <QDBusConnection>
#include <chrono>
#include <functional>
#include <memory>

namespace sonvel {

class SingleInstanceService;

/// What others ask of the first. Called from the event loop, after SingleInstance::acquire() has returned.
struct InstanceRequests {
  std::function<bool()> showPanel; ///< false when this process is about to end: the other takes its place
  std::function<void()> quit;      ///< starts to quit; needn't wait until all is done
  std::function<bool(const QString& caller)>
      admits; ///< whether the caller of this unique name may ask at all
};

/// Sees to it that one Sonvel runs in a session: the first holds the name `com.quellmarsh.sonvel` on the
/// session's bus, and a later one asks it to show its panel. The main thread alone.
///
/// What the first serves at /com/quellmarsh/sonvel: ShowPanel() and Quit() of the interface
/// com.quellmarsh.sonvel, and org.freedesktop.Application, by which launchers start and show it.
class SingleInstance {
 public:
  enum class Outcome {
    first,              ///< this process is to run
    toldTheFirst,       ///< another one runs and shows its panel now; this one is to end
    firstDoesNotAnswer, ///< another one runs, but was silent; this one is to end and say so
    noBus,              ///< nobody can tell; this process is to run
  };

  /// How long acquire() waits for an answer of the first.
  static constexpr std::chrono::milliseconds kPatience{2000};

  explicit SingleInstance(InstanceRequests requests, QDBusConnection bus = QDBusConnection::sessionBus());
  /// Gives the name back.
  ~SingleInstance();
  SingleInstance(const SingleInstance&) = delete;
  SingleInstance& operator=(const SingleInstance&) = delete;

  /// Becomes the first or tells the first. Needs a QCoreApplication; blocks for kPatience at most, as long as
  /// the bus itself answers.
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
