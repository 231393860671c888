// What the panel costs, beside another mixer with the same players: memory, processor time, wake-ups, and the
// time from the click to the first frame. Prints figures and judges none.
#include "panel/desktop_session.h"
#include "panel/process_figures.h"
#include "panel/screen_watch.h"
#include "session/eventually.h"
#include "session/tone_client.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <exception>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace sonvel::testing {

namespace {

using namespace session;
using namespace std::chrono_literals;

constexpr int kPlayers = 10;
constexpr auto kMeasured = 10s;
constexpr auto kSettling = 2s;
constexpr int kOpenings = 20;
constexpr auto kOurName = "Sonvel"; // and its window's title
constexpr auto kOther = "pavucontrol";
constexpr auto kOtherTitle = "Volume Control";
constexpr auto kSyllable = 100ms;

void require(bool holds, const char* otherwise) {
  if (!holds) throw std::runtime_error(otherwise);
}

double mebibytes(std::size_t bytes) {
  return static_cast<double>(bytes) / (1024.0 * 1024.0);
}

void printMemory(const char* what, pid_t process) {
  const auto memory = memoryOf(process);
  std::printf("  %-44s resident %6.1f  proportional %6.1f  private %6.1f MiB\n", what,
              mebibytes(memory.resident), mebibytes(memory.proportional), mebibytes(memory.unshared));
}

double percent(std::chrono::duration<double> busy, std::chrono::duration<double> of) {
  return 100.0 * busy / of;
}

bool isTap(const GraphObject& object) {
  return object.type == "Node" && object.property("node.name").starts_with("sonvel-tap");
}

class PanelBench {
 public:
  void run() {
    startPlayers();
    require(desktop_.awaitTrayIcon(), "no icon in the tray");
    std::printf("%d players play. Sonvel is started and has taken over none\n", kPlayers);
    play(kSettling);
    printMemory("Sonvel, closed, not yet opened", sonvel_.pid());
    measureWakeUps();
    // Later it would meter none of the players: Sonvel plays them then.
    std::printf("%s is opened\n", kOther);
    auto other = openOther();
    measureProcessorTime({{kOther, other.pid()}, soundServerOfOther()});

    std::printf("The panel is opened\n");
    std::printf("  from the click to the first frame, first time %.1f ms\n", inMilliseconds(open()));
    awaitTaps();
    play(kSettling);
    printMemory("Sonvel, open", sonvel_.pid());
    measureProcessorTime({{kOurName, sonvel_.pid()}, {kOther, other.pid()}, soundServerOfOther()});
    std::printf("  (%s meters %d streams of these seconds)\n", kOther, metersOfOther());

    std::printf("The panel is closed, all players stay taken over\n");
    other.end();
    close();
    play(kSettling);
    printMemory("Sonvel, closed", sonvel_.pid());
    measureWakeUps();
    measureOpenings();
  }

 private:
  static double inMilliseconds(std::chrono::duration<double, std::milli> time) { return time.count(); }

  void startPlayers() {
    for (int number = 1; number <= kPlayers; ++number) {
      const std::string name = "player-" + std::to_string(number);
      desktop_.applications().install("org.example." + name, name, desktop_.sound().programPath(name),
                                      "#3465a4");
      players_.push_back(
          std::make_unique<ToneClient>(desktop_.sound(), ToneClientOptions{.binaryName = name}));
      players_.back()->open("tone", {.tone = {.frequency = 300 * number, .amplitude = 0.05}});
    }
  }

  /// Lets them play for so long, as loud and as soft as speech is, so that meters have something to do.
  void play(std::chrono::nanoseconds time) {
    std::uniform_real_distribution<double> decibels(-50.0, -20.0);
    const auto end = std::chrono::steady_clock::now() + time;
    while (std::chrono::steady_clock::now() < end) {
      for (const auto& player : players_)
        player->setAmplitude("tone", std::pow(10.0, decibels(random_) / 20.0));
      std::this_thread::sleep_until(std::min(end, std::chrono::steady_clock::now() + kSyllable));
    }
  }

  void awaitTaps() {
    const auto areThere = [](const Graph& graph) {
      return std::ranges::count_if(graph.objects, isTap) >= kPlayers;
    };
    require(desktop_.sound().waitForGraph(areThere), "not every player is taken over");
  }

  /// The time from telling the tray to click to seeing the panel drawn on the display, which is looked at as
  /// often as its server answers.
  std::chrono::steady_clock::duration open() {
    const auto start = std::chrono::steady_clock::now();
    desktop_.clickTrayIcon();
    while (!screen_.isPainted(kOurName))
      require(std::chrono::steady_clock::now() - start < 20s, "the panel does not open");
    return std::chrono::steady_clock::now() - start;
  }

  void close() {
    desktop_.clickTrayIcon();
    require(eventually([&] { return !screen_.hasWindow(kOurName); }), "the panel does not close");
  }

  struct Busy {
    const char* name;
    pid_t process;
    std::chrono::duration<double> before{};
  };

  struct Mixer {
    const char* name;
    pid_t process;
  };

  /// What sends it the sound of its meters.
  Mixer soundServerOfOther() { return {"pipewire-pulse", desktop_.sound().pid(Daemon::pulse)}; }

  /// Of all of these over the same seconds.
  void measureProcessorTime(const std::vector<Mixer>& mixers) {
    std::vector<std::chrono::nanoseconds> before;
    before.reserve(mixers.size());
    for (const auto& mixer : mixers)
      before.push_back(processorTimeOf(mixer.process));
    const auto start = std::chrono::steady_clock::now();
    play(kMeasured);
    const auto measured = std::chrono::steady_clock::now() - start;
    for (std::size_t i = 0; i < mixers.size(); ++i)
      std::printf("  processor time of %-14s %6.2f %%\n", mixers[i].name,
                  percent(processorTimeOf(mixers[i].process) - before[i], measured));
  }

  ChildProcess openOther() {
    auto other = desktop_.start(kOther);
    require(eventually([&] { return screen_.isPainted(kOtherTitle); }), "the other mixer does not open");
    play(kSettling);
    printMemory(kOther, other.pid());
    std::printf("  it meters %d streams\n", metersOfOther());
    return other;
  }

  int metersOfOther() {
    const auto graph = desktop_.sound().graph();
    return static_cast<int>(std::ranges::count_if(graph.objects, [](const GraphObject& object) {
      return object.type == "Node" && object.property("media.class") == "Stream/Input/Audio";
    }));
  }

  void measureWakeUps() {
    const auto before = wakeUpsOf(sonvel_.pid());
    const auto busyBefore = processorTimeOf(sonvel_.pid());
    play(kMeasured);
    const std::chrono::duration<double> seconds = kMeasured;
    std::printf("  processor time of Sonvel, closed, %.2f %%; wake-ups per second of its threads:\n",
                percent(processorTimeOf(sonvel_.pid()) - busyBefore, seconds));
    for (const auto& [thread, count] : wakeUpsOf(sonvel_.pid())) {
      const auto earlier = before.find(thread);
      const auto woken = count - (earlier == before.end() ? 0 : earlier->second);
      if (woken > 0)
        std::printf("    %-16s %6.1f\n", thread.c_str(), static_cast<double>(woken) / seconds.count());
    }
  }

  void measureOpenings() {
    std::vector<double> times;
    for (int opening = 0; opening < kOpenings; ++opening) {
      times.push_back(inMilliseconds(open()));
      close();
    }
    std::ranges::sort(times);
    std::printf("  from the click to the first frame, %d times: median %.1f ms, at most %.1f ms\n", kOpenings,
                times[times.size() / 2], times.back());
  }

  // No screen reader: without one, programs don't do what they do for it.
  DesktopSession desktop_{{.hasScreenReader = false}};
  ScreenWatch screen_{desktop_.displayName()};
  std::vector<std::unique_ptr<ToneClient>> players_;
  std::mt19937 random_{1}; // the same in every run
  ChildProcess sonvel_ = desktop_.startSonvel();
};

} // namespace

} // namespace sonvel::testing

int main() {
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  try {
    sonvel::testing::PanelBench().run();
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "bench_panel: %s\n", error.what());
    return 1;
  }
}
