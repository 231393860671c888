#pragma once

#include "pipewire/owned_proxy.h"

#include <cstdint>
#include <functional>

namespace sonvel::pipewire {

/// A link of ours between two ports of any nodes. Loop thread.
class RemoteLink : public OwnObject {
 public:
  /// Requests it. `changed` runs whenever the state changes.
  RemoteLink(pw_core* core, std::uint32_t outputPort, std::uint32_t inputPort, LinkKind kind,
             std::function<void()> changed);

  /// Ready when both ends have negotiated format and buffers, so that samples flow as soon as they run.
  State state() const override;

 private:
  void onInfo(const pw_link_info* info);

  OwnedProxy proxy_;
  std::function<void()> changed_;
  bool isNegotiated_ = false;
  Hook hook_;
};

} // namespace sonvel::pipewire
