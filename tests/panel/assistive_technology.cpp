#include "panel/assistive_technology.h"

#include "session/eventually.h"

#include <stdexcept>

namespace sonvel::testing {

namespace {

template <class T> std::shared_ptr<T> own(T* object) {
  return std::shared_ptr<T>(object, [](T* owned) {
    if (owned) g_object_unref(owned);
  });
}

std::string ownText(gchar* text) {
  const std::unique_ptr<gchar, decltype(&g_free)> owned(text, g_free);
  return text ? text : "";
}

/// Lets the library hear what has happened on the bus; it keeps what it was told of last.
void hearEvents() {
  while (g_main_context_iteration(nullptr, FALSE) != 0) {
  }
}

void collect(const Control& control, std::vector<Control>& found) {
  for (const auto& child : control.children()) {
    found.push_back(child);
    collect(child, found);
  }
}

} // namespace

std::string Control::name() const {
  return ownText(atspi_accessible_get_name(accessible_.get(), nullptr));
}

std::string Control::description() const {
  return ownText(atspi_accessible_get_description(accessible_.get(), nullptr));
}

std::string Control::role() const {
  return ownText(atspi_accessible_get_role_name(accessible_.get(), nullptr));
}

std::optional<double> Control::value() const {
  const auto value = own(atspi_accessible_get_value_iface(accessible_.get()));
  if (!value) return std::nullopt;
  return atspi_value_get_current_value(value.get(), nullptr);
}

bool Control::is(AtspiStateType state) const {
  const auto states = own(atspi_accessible_get_state_set(accessible_.get()));
  return states && atspi_state_set_contains(states.get(), state) != 0;
}

std::vector<Control> Control::children() const {
  std::vector<Control> children;
  const int count = atspi_accessible_get_child_count(accessible_.get(), nullptr);
  for (int index = 0; index < count; ++index)
    if (auto child = own(atspi_accessible_get_child_at_index(accessible_.get(), index, nullptr)))
      children.emplace_back(std::move(child));
  return children;
}

bool Control::setValue(double value) const {
  const auto values = own(atspi_accessible_get_value_iface(accessible_.get()));
  return values && atspi_value_set_current_value(values.get(), value, nullptr) != 0;
}

bool Control::press() const {
  const auto action = own(atspi_accessible_get_action_iface(accessible_.get()));
  if (!action) return false;
  const int count = atspi_action_get_n_actions(action.get(), nullptr);
  for (int index = 0; index < count; ++index)
    if (ownText(atspi_action_get_action_name(action.get(), index, nullptr)) == "Press")
      return atspi_action_do_action(action.get(), index, nullptr) != 0;
  return false;
}

AssistiveTechnology::AssistiveTechnology() {
  // The library takes a session without a bus for an error of the program, and ends it.
  if (atspi_init() > 1) throw std::runtime_error("no accessibility bus");
  const auto desktop = own(atspi_get_desktop(0));
  if (!desktop) throw std::runtime_error("no accessible desktop");
  atspi_accessible_set_cache_mask(desktop.get(), ATSPI_CACHE_NONE);
}

std::vector<Control> AssistiveTechnology::controls(const std::string& application) const {
  hearEvents();
  std::vector<Control> found;
  for (const auto& program : Control(own(atspi_get_desktop(0))).children())
    if (program.name() == application) collect(program, found);
  std::erase_if(found, [](const Control& control) { return !control.isShown(); });
  return found;
}

std::optional<Control> AssistiveTechnology::find(const std::string& application,
                                                 const std::function<bool(const Control&)>& fits,
                                                 std::chrono::milliseconds within) const {
  std::optional<Control> found;
  (void)session::eventually(
      [&] {
        for (const auto& control : controls(application))
          if (fits(control)) {
            found = control;
            return true;
          }
        return false;
      },
      within);
  return found;
}

std::optional<Control> AssistiveTechnology::find(const std::string& application, const std::string& name,
                                                 std::chrono::milliseconds within) const {
  return find(
      application, [&](const Control& control) { return control.name() == name; }, within);
}

} // namespace sonvel::testing
