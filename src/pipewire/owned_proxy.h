#pragma once

#include "pipewire/graph_edits.h"
#include "pipewire/handles.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace sonvel::pipewire {

using ObjectProperties = std::vector<std::pair<std::string, std::string>>;

PropertiesHandle toProperties(const ObjectProperties& properties);

/// The proxy of an object that this program creates in the server, and its state. Destroying it removes the
/// object. Loop thread.
class OwnedProxy {
 public:
  /// `proxy`: null if it could not be made; `errno` tells why. `name`: for the log. `changed` runs whenever
  /// the state changes.
  OwnedProxy(pw_proxy* proxy, std::string name, std::function<void()> changed);

  OwnObject::State state() const noexcept { return state_; }

  bool isGone() const noexcept {
    return state_ == OwnObject::State::failed || state_ == OwnObject::State::lost;
  }

  /// What is gone stays so.
  void setState(OwnObject::State state);

  const ProxyHandle& handle() const noexcept { return proxy_; }

 private:
  ProxyHandle proxy_;
  std::string name_;
  std::function<void()> changed_;
  OwnObject::State state_ = OwnObject::State::asked;
  Hook hook_;
};

} // namespace sonvel::pipewire
