#include "session/tone_file.h"

#include "session/analysis.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <numbers>
#include <stdexcept>
#include <vector>

namespace sonvel::session {

namespace {

constexpr std::uint32_t kChannels = 2;
constexpr std::uint32_t kFrameBytes = kChannels * sizeof(float);

struct WavHeader {
  std::array<char, 4> riff = {'R', 'I', 'F', 'F'};
  std::uint32_t riffBytes;
  std::array<char, 8> waveFormat = {'W', 'A', 'V', 'E', 'f', 'm', 't', ' '};
  std::uint32_t formatBytes = 16;
  std::uint16_t format = 3; // IEEE float
  std::uint16_t channels = kChannels;
  std::uint32_t rate = kSampleRate;
  std::uint32_t bytesPerSecond = kSampleRate * kFrameBytes;
  std::uint16_t frameBytes = kFrameBytes;
  std::uint16_t bitsPerSample = 32;
  std::array<char, 4> data = {'d', 'a', 't', 'a'};
  std::uint32_t dataBytes;

  explicit WavHeader(std::uint32_t bytes)
      : riffBytes(static_cast<std::uint32_t>(sizeof(WavHeader)) - 8 + bytes)
      , dataBytes(bytes) {}
};

static_assert(sizeof(WavHeader) == 44);

// A whole number of periods of any whole frequency.
std::vector<float> oneSecond(Tone tone) {
  std::vector<float> samples;
  samples.reserve(std::size_t{kSampleRate} * kChannels);
  for (int frame = 0; frame < kSampleRate; ++frame) {
    const double turns = static_cast<double>(tone.frequency) * frame / kSampleRate;
    const auto sample = static_cast<float>(tone.amplitude * std::sin(2.0 * std::numbers::pi * turns));
    samples.insert(samples.end(), kChannels, sample);
  }
  return samples;
}

template <typename T> void writeBytes(std::ofstream& file, const T* data, std::size_t count) {
  const void* bytes = data;
  file.write(static_cast<const char*>(bytes), static_cast<std::streamsize>(count * sizeof(T)));
}

} // namespace

std::filesystem::path toneFile(const std::filesystem::path& folder, Tone tone, int seconds) {
  std::filesystem::path path =
      folder / (std::to_string(tone.frequency) + "-" + std::to_string(tone.amplitude) + "-" +
                std::to_string(seconds) + ".wav");
  if (std::filesystem::exists(path)) return path;

  std::ofstream file(path, std::ios::binary);
  const WavHeader header(static_cast<std::uint32_t>(seconds) * kSampleRate * kFrameBytes);
  writeBytes(file, &header, 1);
  const std::vector<float> second = oneSecond(tone);
  for (int written = 0; written < seconds; ++written)
    writeBytes(file, second.data(), second.size());
  file.close();
  if (!file) throw std::runtime_error("can't write " + path.string());
  return path;
}

} // namespace sonvel::session
