#pragma once

#include <atspi/atspi.h>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace sonvel::testing {

/// One thing on the screen as a screen reader knows it. What it stands for may go at any time: then it
/// answers with nothing, and does nothing.
class Control {
 public:
  explicit Control(std::shared_ptr<AtspiAccessible> accessible)
      : accessible_(std::move(accessible)) {}

  [[nodiscard]] std::string name() const;
  [[nodiscard]] std::string description() const;
  [[nodiscard]] std::string role() const; ///< as "push button", "slider"
  [[nodiscard]] std::optional<double> value() const;
  [[nodiscard]] bool is(AtspiStateType state) const;

  [[nodiscard]] bool isShown() const { return is(ATSPI_STATE_SHOWING) && is(ATSPI_STATE_VISIBLE); }

  [[nodiscard]] std::vector<Control> children() const;

  bool setValue(double value) const;
  /// False as well when it can't be pressed.
  bool press() const;

 private:
  std::shared_ptr<AtspiAccessible> accessible_;
};

/// Sees and works the programs of a session through its accessibility bus, as a screen reader does. One for
/// the life of a process, whose environment names the session before it is made.
class AssistiveTechnology {
 public:
  /// Throws std::runtime_error when there is no accessibility bus.
  AssistiveTechnology();

  /// Everything of an application that is shown, in the order of reading; empty while it has no window.
  [[nodiscard]] std::vector<Control> controls(const std::string& application) const;
  /// The first that is shown and fits; none after the time given.
  [[nodiscard]] std::optional<Control>
  find(const std::string& application, const std::function<bool(const Control&)>& fits,
       std::chrono::milliseconds within = std::chrono::seconds{20}) const;
  [[nodiscard]] std::optional<Control> find(const std::string& application, const std::string& name,
                                            std::chrono::milliseconds within = std::chrono::seconds{
                                                20}) const;
};

} // namespace sonvel::testing
