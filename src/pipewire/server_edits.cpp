#include "pipewire/server_edits.h"

#include "pipewire/graph_log.h"
#include "pipewire/io_node.h"
#include "pipewire/remote_link.h"

namespace sonvel::pipewire {

namespace {

ObjectProperties tapNodeProperties(const DesiredTap& tap) {
  return {{PW_KEY_MEDIA_CLASS, "Audio/Sink/Internal"}, // not listed by mixers, never the default
          {PW_KEY_NODE_NAME, tap.nodeName},
          {PW_KEY_NODE_DESCRIPTION, tap.description},
          {PW_KEY_APP_NAME, "Sonvel"},
          {PW_KEY_PRIORITY_SESSION, "-1"},
          {PW_KEY_PRIORITY_DRIVER, "0"},
          {"state.restore-props", "false"},
          {"state.restore-target", "false"}};
}

} // namespace

ServerEdits::ServerEdits(ServerConnection& server, std::function<void()> changed)
    : server_(server)
    , changed_(std::move(changed)) {}

std::unique_ptr<OwnTapNode> ServerEdits::makeTapNode(const DesiredTap& tap) {
  return std::make_unique<IONode>(server_.nodeCore(), IOSpaNode::Kind::sink, tap.isMono ? 1 : kStereo,
                                  tapNodeProperties(tap), changed_);
}

std::unique_ptr<OwnObject> ServerEdits::makeFilter(const DesiredFilter& filter, const IOProcBlock& block) {
  return std::make_unique<IOFilter>(server_.nodeCore(), filter, block, changed_);
}

std::unique_ptr<OwnObject> ServerEdits::makeLink(const PortPair& ports, LinkKind kind) {
  return std::make_unique<RemoteLink>(server_.core(), ports.output, ports.input, kind, changed_);
}

void ServerEdits::cutLink(GlobalID link) {
  server_.monitor()->destroy(link);
}

void ServerEdits::write(GlobalID stream, const MetadataWrite& write) {
  logEdit("metadata of %u: %s = %s", stream, write.key.c_str(),
          write.value ? write.value->value.c_str() : "(removed)");
  server_.monitor()->write(stream, write);
}

LoopAlarm::LoopAlarm(pw_loop* loop, std::function<void()> look)
    : look_(std::move(look))
    , soon_(loop, [this] { look_(); })
    , later_(loop, [this] {
      due_.reset();
      look_();
    }) {}

void LoopAlarm::lookAgainIn(std::chrono::milliseconds delay) {
  if (delay.count() == 0) {
    soon_.signal();
    return;
  }
  const Time due = now() + delay;
  if (due_ && *due_ <= due) return;
  due_ = due;
  later_.arm(delay);
}

} // namespace sonvel::pipewire
