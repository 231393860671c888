#pragma once

#include "pipewire/graph_edits.h"
#include "pipewire/handles.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace sonvel::pipewire {

using ObjectProperties = std::vector<std::pair<std::string, std::string>>;

/// An object created by a factory of the server.
class RemoteObject : public OwnObject {
 public:
  /// Requests an object from a factory. `changed` runs on the loop thread whenever the state changes.
  RemoteObject(pw_core* core, const char* factory, const char* type, std::uint32_t version,
               const ObjectProperties& properties, std::function<void()> changed);

  State state() const override { return state_; }

 protected:
  bool isGone() const noexcept { return state_ == State::failed || state_ == State::lost; }

  void setState(State state);

  ProxyHandle proxy_; // NOLINT(misc-non-private-member-variables-in-classes): derived classes listen to it
  std::function<void()> changed_; // NOLINT(misc-non-private-member-variables-in-classes): as above

 private:
  std::string factory_; ///< for the log
  State state_ = State::asked;
  Hook hook_;
};

/// A link between two ports of any nodes.
class RemoteLink : public RemoteObject {
 public:
  RemoteLink(pw_core* core, std::uint32_t outputPort, std::uint32_t inputPort, LinkKind kind,
             std::function<void()> changed);

  /// Ready when both ends have negotiated format and buffers, so that samples flow as soon as they run.
  State state() const override;

 private:
  void onInfo(const pw_link_info* info);

  bool isNegotiated_ = false;
  Hook linkHook_;
};

} // namespace sonvel::pipewire
