#include "pipewire/io_node.h"

#include "pipewire/graph_log.h"
#include "pipewire/server_quirks.h"

#include <cerrno>
#include <cstring>

namespace sonvel::pipewire {

namespace {

pw_proxy* exportNode(pw_core* core, const ObjectProperties& properties, spa_node* node) {
  const PropertiesHandle made(pw_properties_new(PW_KEY_NODE_VIRTUAL, "true", PW_KEY_NODE_WANT_DRIVER, "true",
                                                PW_KEY_OBJECT_REGISTER, "false", nullptr));
  for (const auto& [key, value] : properties)
    pw_properties_set(made.get(), key.c_str(), value.c_str());
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

  State state() const override { return shared_->state; }

 private:
  std::shared_ptr<Shared> shared_;
};

IONode::IONode(pw_core* core, IOSpaNode::Kind kind, std::size_t channelCount,
               const ObjectProperties& properties, std::function<void()> changed)
    : shared_(std::make_shared<Shared>(kind, channelCount))
    , changed_(std::move(changed))
    , proxy_(exportNode(core, properties, shared_->node.get())) {
  if (!proxy_) {
    logRefusal("node: %s", std::strerror(errno));
    shared_->state = State::failed;
    return;
  }
  static const pw_proxy_events events = [] {
    pw_proxy_events made{};
    made.version = PW_VERSION_PROXY_EVENTS;
    made.bound = [](void* self, std::uint32_t) { static_cast<IONode*>(self)->setState(State::ready); };
    made.removed = [](void* self) { static_cast<IONode*>(self)->setState(State::lost); };
    made.error = [](void* self, int, int result, const char* message) {
      logRefusal("node refused: %s (%s)", message, std::strerror(-result));
      static_cast<IONode*>(self)->setState(State::failed);
    };
    return made;
  }();
  pw_proxy_add_listener(proxy_.get(), hook_.get(), &events, this);
}

IONode::~IONode() {
  hook_.remove();
  proxy_.reset(); // waits for the real-time thread
  shared_->state = State::lost;
}

void IONode::setState(State state) {
  if (shared_->state == State::failed || shared_->state == State::lost) return;
  shared_->state = state;
  changed_();
}

std::unique_ptr<OwnObject> IONode::run(const IOProcBlock& block) {
  return std::make_unique<Running>(shared_, block);
}

IOFilter::IOFilter(pw_core* core, const DesiredFilter& filter, const IOProcBlock& block,
                   std::function<void()> changed)
    : node_(core, IOSpaNode::Kind::filter, kStereo, filterProperties(filter), std::move(changed))
    , ioProc_(node_.run(block)) {}

} // namespace sonvel::pipewire
