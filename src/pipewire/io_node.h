#pragma once

#include "pipewire/graph_edits.h"
#include "pipewire/io_spa_node.h"
#include "pipewire/owned_proxy.h"

#include <functional>
#include <memory>
#include <optional>

namespace sonvel::pipewire {

/// A node in this process that runs an IOProc, or several in turn. Loop thread; after destruction no block of
/// it is called any more.
class IONode : public OwnTapNode {
 public:
  /// `changed` runs on the loop thread when the state changes.
  IONode(pw_core* core, IOSpaNode::Kind kind, std::size_t channelCount, const ObjectProperties& properties,
         std::function<void()> changed);

  ~IONode() override;

  State state() const override { return shared_->state(); }

  std::uint32_t cycles() const override { return shared_->node.cycles(); }

  std::unique_ptr<OwnObject> run(const IOProcBlock& block) override;

 private:
  /// Lives as long as the node or one of its IOProcs.
  struct Shared {
    Shared(IOSpaNode::Kind kind, std::size_t channelCount)
        : node(kind, channelCount) {}

    State state() const { return proxy ? proxy->state() : State::lost; }

    IOSpaNode node;
    std::optional<OwnedProxy> proxy; ///< none after the node's end
  };

  class Running;

  std::shared_ptr<Shared> shared_;
};

/// A node with an IOProc of its own, which reads the streams that are linked to it.
class IOFilter : public OwnObject {
 public:
  IOFilter(pw_core* core, const DesiredFilter& filter, const IOProcBlock& block,
           std::function<void()> changed);

  State state() const override { return node_.state(); }

  std::uint32_t cycles() const override { return node_.cycles(); }

 private:
  IONode node_;
  std::unique_ptr<OwnObject> ioProc_;
};

} // namespace sonvel::pipewire
