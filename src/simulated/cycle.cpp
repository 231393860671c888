#include "simulated/simulated_audio.h"

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

/// Adds what the process plays from `start` on.
void addSignals(const ProcessScript& process, std::uint64_t start, Samples& samples) {
  if (!process.isPlaying) return;
  for (const Signal& signal : process.streams)
    for (std::size_t i = 0; i < samples.size() / kChannels; ++i) {
      const Frame frame = signal(start + i);
      samples[kChannels * i] += frame.left;
      samples[kChannels * i + 1] += frame.right;
    }
}

} // namespace

struct SimulatedAudio::Cycle {
  AudioTimeStamp start;
  std::size_t frames;
  std::map<std::string, std::vector<Frame>> heard;
};

void SimulatedAudio::runCycle(std::uint32_t frames) {
  const std::lock_guard oneAtATime(cycleMutex_);
  const double hostTime = static_cast<double>(frame_) * kNanosecondsPerSecond / kSampleRateHz;
  Cycle cycle{{static_cast<std::uint64_t>(hostTime), frame_}, frames, {}};

  std::unique_lock lock(mutex_);
  for (const Device& device : devices_)
    if (device.isPresent) cycle.heard.emplace(device.script.uid, std::vector<Frame>(frames));
  playProcesses(cycle);
  std::vector<IOProcID> due;
  due.reserve(ioProcs_.size());
  for (const auto& ioProc : ioProcs_)
    due.push_back(ioProc->what.id);
  for (const IOProcID id : due)
    playIOProc(cycle, id, lock);
  heard_ = std::move(cycle.heard);
  frame_ += frames;
}

bool SimulatedAudio::isSilenced(AudioObjectID process) const {
  return std::any_of(taps_.begin(), taps_.end(), [process](const Tap& tap) {
    const auto& tapped = tap.description.processes;
    return tap.description.muteBehavior == TapMuteBehavior::muted &&
           std::find(tapped.begin(), tapped.end(), process) != tapped.end();
  });
}

void SimulatedAudio::playProcesses(Cycle& cycle) const {
  for (const Process& process : processes_) {
    const auto& uid = process.script.outputUID ? process.script.outputUID : defaultDeviceUID_;
    const auto device = uid ? cycle.heard.find(*uid) : cycle.heard.end();
    if (device == cycle.heard.end() || isSilenced(process.id)) continue;
    Samples samples(cycle.frames * kChannels);
    addSignals(process.script, cycle.start.sampleTimeFrames, samples);
    mix(device->second, samples);
  }
}

std::vector<float> SimulatedAudio::tapSamples(const Cycle& cycle, const std::string& tapUID) const {
  Samples samples(cycle.frames * kChannels);
  for (const Tap& tap : taps_)
    for (const Process& process : processes_) {
      const auto& tapped = tap.description.processes;
      if (tap.uid == tapUID && std::find(tapped.begin(), tapped.end(), process.id) != tapped.end())
        addSignals(process.script, cycle.start.sampleTimeFrames, samples);
    }
  return samples;
}

void SimulatedAudio::playIOProc(Cycle& cycle, IOProcID id, std::unique_lock<std::mutex>& lock) {
  const auto ioProc = std::find_if(ioProcs_.begin(), ioProcs_.end(),
                                   [id](const auto& other) { return other->what.id == id; });
  if (ioProc == ioProcs_.end() || !(*ioProc)->what.isStarted) return;
  const auto aggregate = std::find_if(aggregates_.begin(), aggregates_.end(), [&](const Aggregate& other) {
    return other.id == (*ioProc)->what.device;
  });
  if (aggregate == aggregates_.end()) return;
  const auto device = cycle.heard.find(aggregate->description.subDevices.front().uid);
  if (device == cycle.heard.end() || presentDevice(device->first) == nullptr) return;

  std::vector<Samples> inputs;
  for (const SubTap& subTap : aggregate->description.taps)
    inputs.push_back(tapSamples(cycle, subTap.uid));
  Samples output(cycle.frames * kChannels);
  callBlock(**ioProc, cycle.start, inputs, output, lock);
  mix(device->second, output);
}

void SimulatedAudio::callBlock(const InstalledIOProc& ioProc, const AudioTimeStamp& start,
                               std::vector<std::vector<float>>& inputs, std::vector<float>& output,
                               std::unique_lock<std::mutex>& lock) {
  std::vector<AudioBuffer> inputBuffers;
  std::transform(inputs.begin(), inputs.end(), std::back_inserter(inputBuffers), bufferOf);
  AudioBuffer outputBuffer = bufferOf(output);
  AudioBufferList outputList{std::span(&outputBuffer, 1)};

  runningIOProc_ = &ioProc;
  lock.unlock();
  ioProc.block(start, AudioBufferList{inputBuffers}, start, outputList, start);
  lock.lock();
  runningIOProc_ = nullptr;
  blockReturned_.notify_all();
}

std::vector<Frame> SimulatedAudio::heard(const std::string& deviceUID) const {
  const std::lock_guard lock(mutex_);
  const auto found = heard_.find(deviceUID);
  return found != heard_.end() ? found->second : std::vector<Frame>{};
}

} // namespace sonvel::simulated
