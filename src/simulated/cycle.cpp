#include "simulated/simulated_hardware.h"

#include <span>

#include <algorithm>

namespace sonvel::simulated {

namespace {

constexpr std::uint32_t kChannels = 2;
constexpr double kNanosecondsPerSecond = 1e9;

using Samples = std::vector<float>; ///< interleaved stereo

AudioBuffer bufferOf(Samples& samples) {
  return {.channelCount = kChannels,
          .sizeBytes = static_cast<std::uint32_t>(samples.size() * sizeof(float)),
          .data = samples.data()};
}

void mix(std::vector<Frame>& into, const Samples& samples) {
  for (std::size_t i = 0; i < into.size(); ++i) {
    into[i].left += samples[kChannels * i];
    into[i].right += samples[kChannels * i + 1];
  }
}

/// Adds the samples of the streams from frame `start` on.
void addSignals(const std::vector<Signal>& streams, std::uint64_t start, Samples& samples) {
  for (const Signal& signal : streams)
    for (std::size_t i = 0; i < samples.size() / kChannels; ++i) {
      const Frame frame = signal(start + i);
      samples[kChannels * i] += frame.left;
      samples[kChannels * i + 1] += frame.right;
    }
}

bool isTapOf(const Tap& tap, AudioObjectID process, const ProcessScript& script) {
  const auto has = [](const auto& list, const auto& item) {
    return std::find(list.begin(), list.end(), item) != list.end();
  };
  return has(tap.description.processes, process) ||
         (script.bundleID && has(tap.description.bundleIDs, *script.bundleID));
}

} // namespace

struct SimulatedHardware::Cycle {
  AudioTimeStamp start;
  std::size_t frames;
  std::map<std::string, std::vector<Frame>> heard;
};

void SimulatedHardware::runCycle(std::uint32_t frames) {
  const std::lock_guard oneAtATime(cycleMutex_);
  const double hostTime = static_cast<double>(frame_) * kNanosecondsPerSecond / kSampleRateHz;
  Cycle cycle{{static_cast<std::uint64_t>(hostTime), frame_}, frames, {}};

  std::unique_lock lock(mutex_);
  for (const Device& device : devices_)
    if (device.isPresent) cycle.heard.emplace(device.script.uid, std::vector<Frame>(frames));
  playProcesses(cycle);
  std::vector<IOProcID> due;
  for (const auto& ioProc : playingGraph().ioProcs)
    due.push_back(ioProc.what.id);
  for (const IOProcID id : due)
    playIOProc(cycle, id, lock);
  heard_ = std::move(cycle.heard);
  frame_ += frames;
}

const SimulatedHardware::Graph& SimulatedHardware::playingGraph() const {
  return graphBefore_ ? *graphBefore_ : graph_;
}

bool SimulatedHardware::isSilenced(const Process& process) const {
  const auto& all = playingGraph().taps;
  return std::any_of(all.begin(), all.end(), [&](const Tap& tap) {
    return tap.isMuted() && isTapOf(tap, process.id, process.script);
  });
}

bool SimulatedHardware::isPartial(const Tap& tap) const {
  return std::any_of(processes_.begin(), processes_.end(), [&](const Process& process) {
    return !process.script.fixedStreams.empty() && isTapOf(tap, process.id, process.script);
  });
}

void SimulatedHardware::playProcesses(Cycle& cycle) const {
  for (const Process& process : processes_) {
    const auto& chosen = process.script.outputUID;
    const auto& uid = chosen && presentDevice(*chosen) != nullptr ? chosen : defaultDeviceUID_;
    const auto device = uid ? cycle.heard.find(*uid) : cycle.heard.end();
    if (device == cycle.heard.end() || !process.script.isPlaying) continue;
    Samples samples(cycle.frames * kChannels);
    addSignals(process.script.fixedStreams, cycle.start.sampleTimeFrames, samples);
    if (!isSilenced(process)) addSignals(process.script.streams, cycle.start.sampleTimeFrames, samples);
    mix(device->second, samples);
  }
}

std::vector<float> SimulatedHardware::tapSamples(const Cycle& cycle, const std::string& tapUID) const {
  Samples samples(cycle.frames * kChannels);
  for (const Tap& tap : playingGraph().taps) {
    if (tap.uid != tapUID) continue;
    for (const Process& process : processes_)
      if (process.script.isPlaying && isTapOf(tap, process.id, process.script))
        addSignals(process.script.streams, cycle.start.sampleTimeFrames, samples);
  }
  return samples;
}

void SimulatedHardware::playIOProc(Cycle& cycle, IOProcID id, std::unique_lock<std::mutex>& lock) {
  const Graph& graph = playingGraph();
  const auto ioProc = std::find_if(graph.ioProcs.begin(), graph.ioProcs.end(),
                                   [id](const auto& other) { return other.what.id == id; });
  if (ioProc == graph.ioProcs.end() || !ioProc->what.isStarted) return;
  const auto aggregate =
      std::find_if(graph.aggregates.begin(), graph.aggregates.end(),
                   [&](const Aggregate& other) { return other.id == ioProc->what.device; });
  if (aggregate == graph.aggregates.end()) return;
  const auto device = cycle.heard.find(aggregate->description.subDevices.front().uid);
  if (device == cycle.heard.end() || presentDevice(device->first) == nullptr) return;

  std::vector<Samples> inputs;
  for (const SubTap& subTap : aggregate->description.taps)
    inputs.push_back(tapSamples(cycle, subTap.uid));
  Samples output(cycle.frames * kChannels, 1.0F); // what was in a device's memory before
  callBlock(InstalledIOProc(*ioProc), cycle.start, inputs, output, lock);
  mix(device->second, output);
}

void SimulatedHardware::callBlock(InstalledIOProc ioProc, const AudioTimeStamp& start,
                                  std::vector<std::vector<float>>& inputs, std::vector<float>& output,
                                  std::unique_lock<std::mutex>& lock) {
  std::vector<AudioBuffer> inputBuffers;
  std::transform(inputs.begin(), inputs.end(), std::back_inserter(inputBuffers), bufferOf);
  AudioBuffer outputBuffer = bufferOf(output);
  AudioBufferList outputList{std::span(&outputBuffer, 1)};

  runningIOProc_ = ioProc.what.id;
  lock.unlock();
  (*ioProc.block)(start, AudioBufferList{inputBuffers}, start, outputList, start);
  std::ranges::fill(std::span(output).subspan(outputBuffer.writtenBytes / sizeof(float)), 0.0F);
  ioProc.block.reset(); // before waitForBlock() returns
  lock.lock();
  runningIOProc_ = 0;
  blockReturned_.notify_all();
}

std::vector<Frame> SimulatedHardware::heard(const std::string& deviceUID) const {
  const std::lock_guard lock(mutex_);
  const auto found = heard_.find(deviceUID);
  return found != heard_.end() ? found->second : std::vector<Frame>{};
}

} // namespace sonvel::simulated
