#pragma once

#include "pipewire/handles.h"

#include <cstring>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace sonvel::pipewire {

using ObjectProperties = std::vector<std::pair<std::string, std::string>>;

/// An object that this program made in the server, which vanishes with it. Belongs to the loop thread.
class RemoteObject {
 public:
  enum class State {
    asked,  ///< the server has not answered yet
    bound,  ///< it is there
    failed, ///< the server would not make it
    lost,   ///< the server has removed it
  };

  /// Asks a factory of the server for an object. `changed` runs on the loop thread whenever the state
  /// changes.
  RemoteObject(pw_core* core, const char* factory, const char* type, std::uint32_t version,
               const ObjectProperties& properties, std::function<void()> changed);
  virtual ~RemoteObject() = default;
  RemoteObject(const RemoteObject&) = delete;
  RemoteObject& operator=(const RemoteObject&) = delete;

  State state() const noexcept { return state_; }

  bool isGone() const noexcept { return state_ == State::failed || state_ == State::lost; }

 protected:
  void setState(State state);

  ProxyHandle proxy_; // NOLINT(misc-non-private-member-variables-in-classes): listened to by what derives
  std::function<void()> changed_; // NOLINT(misc-non-private-member-variables-in-classes): as above

 private:
  State state_ = State::asked;
  Hook hook_;
};

/// What a link is for.
enum class LinkKind {
  passing, ///< hands on what plays anyway: it does not keep its nodes from sleeping
  feeding, ///< lets a stream play
  lasting, ///< lets a stream play, also when this program has ended
};

/// A link between two ports of any nodes.
class RemoteLink : public RemoteObject {
 public:
  RemoteLink(pw_core* core, std::uint32_t outputPort, std::uint32_t inputPort, LinkKind kind,
             std::function<void()> changed);

  /// Both ends have agreed on a format and buffers, so that samples flow as soon as their nodes run.
  bool isNegotiated() const noexcept { return isNegotiated_ && !isGone(); }

 private:
  void told(const pw_link_info* info);

  bool isNegotiated_ = false;
  Hook linkHook_;
};

} // namespace sonvel::pipewire
