#include "pipewire/io_spa_node.h"
#include "pipewire/node_params.h"

#include <gtest/gtest.h>
#include <spa/param/port-config.h>
#include <spa/pod/builder.h>

#include <atomic>
#include <chrono>
#include <numeric>
#include <thread>
#include <vector>

namespace sonvel::pipewire {

namespace {

constexpr std::uint32_t kFrames = 64;

/// The memory that the library gives to a port.
struct PortMemory {
  explicit PortMemory(std::size_t count)
      : samples(count, std::vector<float>(kFrames)) {
    for (std::size_t i = 0; i < count; ++i) {
      data.at(i) = {.type = SPA_DATA_MemPtr,
                    .maxsize = kFrames * sizeof(float),
                    .data = samples[i].data(),
                    .chunk = &chunks.at(i)};
      buffers.at(i) = {.n_datas = 1, .datas = &data.at(i)};
      pointers.push_back(&buffers.at(i));
    }
  }

  void offer(const std::vector<float>& played) {
    samples.front() = played;
    chunks.front() = {.size = kFrames * sizeof(float)};
    io = {.status = SPA_STATUS_HAVE_DATA, .buffer_id = 0};
  }

  const std::vector<float>& heard() const { return samples.at(io.buffer_id); }

  std::vector<std::vector<float>> samples;
  std::array<spa_chunk, 2> chunks{};
  std::array<spa_data, 2> data{};
  std::array<spa_buffer, 2> buffers{};
  std::vector<spa_buffer*> pointers;
  spa_io_buffers io{};
};

IOProcBlock playingTimes(float gain) {
  return
      [gain](const auto&, const AudioBufferList& input, const auto&, AudioBufferList& output, const auto&) {
        for (std::size_t i = 0; i < output.buffers.size(); ++i) {
          const auto* in = static_cast<const float*>(input.buffers[i].data);
          auto* out = static_cast<float*>(output.buffers[i].data);
          if (in == nullptr || out == nullptr) continue;
          for (std::uint32_t k = 0; k < kFrames; ++k)
            out[k] = in[k] * gain;
          output.buffers[i].writtenBytes = kFrames * sizeof(float);
        }
      };
}

class IOSpaNodeTest : public testing::Test {
 protected:
  explicit IOSpaNodeTest() {
    std::iota(played_.begin(), played_.end(), 1.0F);
    position_.clock.duration = kFrames;
    spa_node_set_io(node(), SPA_IO_Position, &position_, sizeof position_);
    EXPECT_EQ(link(SPA_DIRECTION_INPUT, 0, in_), 0);
    EXPECT_EQ(link(SPA_DIRECTION_OUTPUT, 0, out_), 0);
  }

  spa_node* node() { return node_.get(); }

  int link(spa_direction direction, std::uint32_t port, PortMemory& memory) {
    const int result = spa_node_port_use_buffers(node(), direction, port, 0, memory.pointers.data(),
                                                 static_cast<std::uint32_t>(memory.pointers.size()));
    if (result < 0) return result;
    return spa_node_port_set_io(node(), direction, port, SPA_IO_Buffers, &memory.io, sizeof memory.io);
  }

  std::vector<float> playedTimes(float gain) const {
    std::vector<float> samples = played_;
    for (float& sample : samples)
      sample *= gain;
    return samples;
  }

  void run(float gain) { node_.run(std::make_shared<const IOProcBlock>(playingTimes(gain))); }

  std::vector<float> cycle() {
    in_.offer(played_);
    spa_node_process(node());
    return out_.heard();
  }

  std::vector<float> played_ = std::vector<float>(kFrames);
  spa_io_position position_{};
  PortMemory in_{1};
  PortMemory out_{2};
  IOSpaNode node_{IOSpaNode::Kind::sink, 2};
};

struct Announced {
  std::array<std::uint32_t, 2> ports{}; ///< by direction
  std::array<std::uint32_t, 2> latencyChanges{};
  std::uint32_t removed = 0;
  std::uint64_t flags = 0; ///< of any port
};

} // namespace

TEST_F(IOSpaNodeTest, PlaysWhatItsBlockMakesOfItsInputAndSilenceWithoutOne) {
  EXPECT_EQ(cycle(), playedTimes(0.0F));
  run(0.5F);
  for (int i = 0; i < 3; ++i)
    EXPECT_EQ(cycle(), playedTimes(0.5F));
  EXPECT_EQ(in_.io.status, SPA_STATUS_NEED_DATA);
  EXPECT_EQ(out_.io.status, SPA_STATUS_HAVE_DATA);
  spa_node_process(node()); // nothing has arrived
  EXPECT_EQ(out_.heard(), playedTimes(0.0F));

  position_.clock.duration = 10 * kFrames; // longer than the memory
  EXPECT_EQ(cycle(), playedTimes(0.5F));
  position_.clock.duration = kFrames;
  spa_node_port_set_param(node(), SPA_DIRECTION_OUTPUT, 0, SPA_PARAM_Format, 0, nullptr); // its buffers go
  const auto before = out_.samples;
  in_.offer(playedTimes(3.0F));
  spa_node_process(node());
  EXPECT_EQ(out_.samples, before);
  PortMemory unmapped{1};
  unmapped.data.front().data = nullptr;
  EXPECT_EQ(link(SPA_DIRECTION_INPUT, 1, unmapped), -EINVAL);
  PortMemory unallocated{1};
  unallocated.data.front().maxsize = 0;
  EXPECT_EQ(link(SPA_DIRECTION_OUTPUT, 1, unallocated), -EINVAL);
  EXPECT_EQ(link(SPA_DIRECTION_INPUT, 2, in_), -EINVAL);
}

TEST_F(IOSpaNodeTest, ABlockIsNotCalledAfterItHasBeenReplaced) {
  std::atomic<bool> isOver = false;
  std::thread realTime([&] {
    while (!isOver)
      cycle();
  });
  const auto isCalled = std::make_shared<std::atomic<bool>>(false);
  for (int i = 0; i < 200; ++i) {
    const auto calls = std::make_shared<std::atomic<int>>(0);
    node_.run(std::make_shared<const IOProcBlock>([calls, isCalled](auto&&...) {
      *isCalled = true;
      ++*calls;
      std::this_thread::sleep_for(std::chrono::microseconds(100)); // still called when it is replaced
      *isCalled = false;
    }));
    while (*calls == 0)
      std::this_thread::yield();
    node_.run(nullptr);
    EXPECT_FALSE(*isCalled);
    EXPECT_EQ(calls.use_count(), 1);
  }
  isOver = true;
  realTime.join();
}

TEST_F(IOSpaNodeTest, GetsItsPortsWhenItIsConfiguredAndPassesLatencyOn) {
  Announced announced;
  const spa_node_events events{
      .version = SPA_VERSION_NODE_EVENTS,
      .port_info = [](void* data, spa_direction direction, std::uint32_t, const spa_port_info* info) {
        auto& seen = *static_cast<Announced*>(data);
        if (info == nullptr) {
          ++seen.removed;
          return;
        }
        ++seen.ports.at(direction);
        seen.flags |= info->flags;
        for (std::uint32_t i = 0; i < info->n_params; ++i)
          if (info->params[i].id == SPA_PARAM_Latency && (info->params[i].flags & SPA_PARAM_INFO_SERIAL) != 0)
            ++seen.latencyChanges.at(direction);
      }};
  spa_hook hook{};
  spa_node_add_listener(node(), &hook, &events, &announced);
  EXPECT_EQ(announced.ports, (std::array{0U, 0U}));
  EXPECT_EQ(spa_node_set_param(node(), SPA_PARAM_PortConfig, 0, nullptr), 0);
  EXPECT_EQ(announced.ports, (std::array{2U, 2U}));

  PodBuilder builder;
  spa_latency_info beyond{};
  beyond.direction = SPA_DIRECTION_INPUT;
  beyond.min_ns = beyond.max_ns = 7'000'000;
  const spa_pod* told = spa_latency_build(builder.get(), SPA_PARAM_Latency, &beyond);
  EXPECT_EQ(spa_node_port_set_param(node(), SPA_DIRECTION_OUTPUT, 0, SPA_PARAM_Latency, 0, told), 0);
  EXPECT_EQ(announced.latencyChanges, (std::array{2U, 0U}));

  const auto before = out_.samples;
  spa_node_set_param(node(), SPA_PARAM_PortConfig, 0, nullptr); // by a new session manager
  EXPECT_EQ(announced.removed, 4U);
  EXPECT_EQ(announced.flags, 0U) << "the server allocates the buffers";
  run(0.5F);
  cycle(); // does not touch the memory of the former ports
  EXPECT_EQ(out_.samples, before);
  spa_hook_remove(&hook);
}

} // namespace sonvel::pipewire
