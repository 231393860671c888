// Properties and metadata of any content, in any order, into the mirror of the server's graph, while our own
// writes are on their way, and the server does not report everything. When the mirror has read all again, it
// has the server's metadata, and nothing is left to write.
#include "expect.h"
#include "pipewire/graph_plan.h"
#include "pipewire/metadata_mirror.h"
#include "pipewire/object_reading.h"

#include <algorithm>
#include <deque>
#include <fuzzer/FuzzedDataProvider.h>
#include <iterator>
#include <sstream>

namespace sonvel::pipewire {
namespace {

using fuzz::expect;

constexpr GlobalID kIDs = 12;
constexpr auto kTapName = "sonvel-tap-1";

std::vector<std::string> words(const char* text) {
  std::istringstream stream(text);
  return {std::istream_iterator<std::string>(stream), {}};
}

const auto kKeys = words("object.serial client.id node.name media.class node.id port.direction port.monitor "
                         "audio.channel port.id link.output.node link.input.node link.output.port "
                         "link.input.port pipewire.access pipewire.access.portal.app_id client.api "
                         "application.process.id application.process.binary application.name");
const auto kSubjectKeys = words("target.object target.node sonvel.target.object");
const auto kValues = words("0 1 2 3 4 5 -1 default true out FL restricted pipewire-pulse sonvel-tap-1 "
                           "sonvel-tap-2 Audio/Sink Stream/Output/Audio {\"name\":\"1\"} {\"name\":[");

class Server {
 public:
  explicit Server(FuzzedDataProvider& input)
      : input_(input) {
    graph_.nodes[0] = {.name = kTapName};
    graph_.hasMetadata = true;
    addClient(1);
    addStream(2);
  }

  void step() {
    constexpr void (Server::*kSteps[])(GlobalID) = {
        &Server::addClient, &Server::addStream, &Server::addOther, &Server::remove,     &Server::change,
        &Server::clear,     &Server::takeWrite, &Server::write,    &Server::fallSilent, &Server::readAgain};
    const auto id = input_.ConsumeIntegralInRange<GlobalID>(1, kIDs);
    (this->*input_.PickValueInArray(kSteps))(id);
  }

  void settle() {
    readAgain(0);
    for (int round = 0; write(0), !onTheirWay_.empty(); ++round) {
      expect(round < 20, "nothing is left to write");
      while (!onTheirWay_.empty())
        takeWrite(0);
    }
    for (auto* metadata : {&graph_.metadata, &metadata_})
      std::erase_if(*metadata, [](const auto& entries) { return entries.second.empty(); });
    expect(graph_.metadata == metadata_, "the mirror has the server's metadata");
  }

 private:
  using Properties = std::map<std::string, std::string>;

  std::string text(const std::vector<std::string>& known) {
    if (input_.ConsumeProbability<float>() > 0.8F) {
      const std::string any = input_.ConsumeRandomLengthString(40);
      return any.substr(0, any.find('\0')); // properties end there
    }
    return known[input_.ConsumeIntegralInRange<std::size_t>(0, known.size() - 1)];
  }

  /// Calls `read` with these properties and others of any content.
  void withProperties(Properties properties, const std::function<void(const spa_dict*)>& read) {
    for (auto count = input_.ConsumeIntegralInRange(0, 8); count > 0; --count) {
      auto key = text(kKeys);
      properties.try_emplace(std::move(key), text(kValues));
    }
    std::vector<spa_dict_item> items;
    for (const auto& [key, value] : properties)
      items.push_back({key.c_str(), value.c_str()});
    const spa_dict dict{0, static_cast<std::uint32_t>(items.size()), items.data()};
    read(&dict);
  }

  void addClient(GlobalID id) {
    remove(id);
    withProperties({{"pipewire.sec.pid", input_.ConsumeBool() ? "1" : "2"}},
                   [&](const spa_dict* dict) { readClient(dict, graph_.clients[id]); });
  }

  void addStream(GlobalID id) {
    remove(id);
    withProperties({{"media.class", "Stream/Output/Audio"}, {"client.id", "1"}},
                   [&](const spa_dict* dict) { graph_.nodes[id] = readNode(dict); });
    graph_.nodes[id].wasLinked = input_.ConsumeBool();
  }

  void addOther(GlobalID id) {
    remove(id);
    withProperties({}, [&](const spa_dict* dict) {
      const auto kind = input_.ConsumeIntegralInRange(0, 2);
      if (kind == 0) graph_.nodes[id] = readNode(dict);
      if (kind == 1) graph_.ports[id] = readPort(dict);
      if (kind == 2) graph_.links[id] = readLink(dict);
    });
  }

  void remove(GlobalID id) {
    clear(id);
    graph_.clients.erase(id);
    graph_.nodes.erase(id);
    graph_.ports.erase(id);
    graph_.links.erase(id);
  }

  void clear(GlobalID subject) {
    metadata_.erase(subject);
    mirror_.forget(subject);
  }

  /// Another program writes.
  void change(GlobalID subject) {
    const auto key = text(kSubjectKeys);
    set(subject,
        {key, input_.ConsumeBool() ? std::optional(MetadataValue{"", text(kValues)}) : std::nullopt});
  }

  /// The oldest of our writes arrives.
  void takeWrite(GlobalID /*any*/) {
    if (onTheirWay_.empty()) return;
    const auto [subject, write] = onTheirWay_.front();
    onTheirWay_.pop_front();
    set(subject, write);
  }

  /// The server takes a write, and reports it if it changes something.
  void set(GlobalID subject, const MetadataWrite& write) {
    auto& entries = metadata_[subject];
    const auto former = entries.extract(write.key);
    if (write.value) entries.emplace(write.key, *write.value);
    const bool isSame = write.value ? former && former.mapped() == *write.value : former.empty();
    if (!isSame && !isSilent_) mirror_.reported(subject, write.key, write.value);
    (void)nameInJSON(write.value ? write.value->value.c_str() : "");
  }

  /// Another program binds the metadata: changes are not reported to us.
  void fallSilent(GlobalID /*any*/) { isSilent_ = true; }

  /// The server answers after our earlier writes; we write while the answer is on its way.
  void readAgain(GlobalID /*any*/) {
    mirror_.readingBegins();
    while (!onTheirWay_.empty())
      takeWrite(0);
    isSilent_ = false;
    const auto answer = metadata_;
    write(0);
    mirror_.read(answer);
  }

  /// We write what the plan asks for.
  void write(GlobalID /*any*/) {
    const GraphIndex index(graph_);
    DesiredState desired;
    desired.taps[1] = {
        .nodeName = kTapName, .processes = {"process 1", "client 2"}, .isMuted = true, .standsBy = true};
    const OwnedObjects nothing{{}, {}, {}, {}, {}};
    for (const auto& [stream, tapName] : planEdits(index, desired, nothing).routings)
      for (const auto& change :
           tapName.empty() ? writesBack(graph_, stream) : writesInto(index, stream, tapName)) {
        mirror_.wrote(stream, change);
        onTheirWay_.emplace_back(stream, change);
      }
  }

  FuzzedDataProvider& input_;
  std::map<GlobalID, MetadataEntries> metadata_; ///< what the server has
  std::deque<std::pair<GlobalID, MetadataWrite>> onTheirWay_;
  bool isSilent_ = false;
  Graph graph_;
  MetadataMirror mirror_{graph_};
};

} // namespace
} // namespace sonvel::pipewire

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  sonvel::pipewire::Server server(input);
  while (input.remaining_bytes() > 0)
    server.step();
  server.settle();
  return 0;
}
