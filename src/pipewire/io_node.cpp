#include "pipewire/io_node.h"

#include "pipewire/server_quirks.h"

namespace sonvel::pipewire {

namespace {

pw_proxy* exportNode(pw_core* core, const ObjectProperties& properties, spa_node* node) {
  const auto made = toProperties(properties);
  pw_properties_set(made.get(), PW_KEY_NODE_VIRTUAL, "true");
  pw_properties_set(made.get(), PW_KEY_NODE_WANT_DRIVER, "true");
  pw_properties_set(made.get(), PW_KEY_OBJECT_REGISTER, "false");
  // The device shall be able to sleep while nothing plays into the node.
  if (quirks::nodesCanBePassive()) pw_properties_set(made.get(), PW_KEY_NODE_PASSIVE, "out");
  return pw_core_export(core, SPA_TYPE_INTERFACE_Node, &made->dict, node, 0);
}

ObjectProperties filterProperties(const DesiredFilter& filter) {
  return {{PW_KEY_NODE_NAME, filter.nodeName}, {PW_KEY_NODE_DESCRIPTION, filter.description}};
}

} // namespace

/// An IOProc that runs in a node until it is destroyed.
class IONode::Running : public OwnObject {
 public:
  Running(std::shared_ptr<Shared> shared, const IOProcBlock& block)
      : shared_(std::move(shared)) {
    shared_->node.run(std::make_shared<const IOProcBlock>(block));
  }

  ~Running() override { shared_->node.run(nullptr); }

  State state() const override { return shared_->state(); }

 private:
  std::shared_ptr<Shared> shared_;
};

IONode::IONode(pw_core* core, IOSpaNode::Kind kind, std::size_t channelCount,
               const ObjectProperties& properties, std::function<void()> changed)
    : shared_(std::make_shared<Shared>(kind, channelCount)) {
  shared_->proxy.emplace(exportNode(core, properties, shared_->node.get()), "node", std::move(changed));
}

IONode::~IONode() {
  shared_->proxy.reset(); // waits for the real-time thread
}

std::unique_ptr<OwnObject> IONode::run(const IOProcBlock& block) {
  return std::make_unique<Running>(shared_, block);
}

IOFilter::IOFilter(pw_core* core, const DesiredFilter& filter, const IOProcBlock& block,
                   std::function<void()> changed)
    : node_(core, IOSpaNode::Kind::filter, kStereo, filterProperties(filter), std::move(changed))
    , ioProc_(node_.run(block)) {}

} // namespace sonvel::pipewire
