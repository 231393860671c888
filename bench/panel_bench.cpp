// What the panel costs, beside another mixer with the same players: memory, processor time, wake-ups, and the
// time from the click to the first frame. Prints figures and judges none.
#include "panel/desktop_session.h"
#include "panel/process_figures.h"
#include "panel/screen_watch.h"
#include "session/eventually.h"
#include "session/tone_client.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <memory>
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
constexpr auto kOurTitle = "Sonvel";
constexpr auto kOtherTitle = "Volume Control";
constexpr auto kOther = "pavucontrol";

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
    play();
    require(desktop_.awaitTrayIcon(), "no icon in the tray");
    std::printf("Sonvel is started, %d players play, none is taken over yet\n", kPlayers);
    std::this_thread::sleep_for(kSettling);
    printMemory("closed, not yet opened", sonvel_.pid());
    measureWakeUps();

    std::printf("The panel is opened: every player has its row\n");
    std::printf("  from the click to the first frame, first time %6.1f ms\n", inMilliseconds(open()));
    awaitTaps();
    std::this_thread::sleep_for(kSettling);
    printMemory("open", sonvel_.pid());
    measureProcessorTime({{kOurTitle, sonvel_.pid()}});

    std::printf("%s is opened beside it\n", kOther);
    measureBesideTheOther();

    std::printf("The panel is closed, every player stays taken over\n");
    close();
    std::this_thread::sleep_for(kSettling);
    printMemory("closed", sonvel_.pid());
    measureWakeUps();
    measureOpenings();
  }

 private:
  static double inMilliseconds(std::chrono::duration<double, std::milli> time) { return time.count(); }

  void play() {
    for (int number = 1; number <= kPlayers; ++number) {
      const std::string name = "player-" + std::to_string(number);
      desktop_.applications().install("org.example." + name, name, desktop_.sound().programPath(name),
                                      "#3465a4");
      players_.push_back(
          std::make_unique<ToneClient>(desktop_.sound(), ToneClientOptions{.binaryName = name}));
      players_.back()->open("tone", {.tone = {.frequency = 300 * number, .amplitude = 0.05}});
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
    while (!screen_.isPainted(kOurTitle))
      require(std::chrono::steady_clock::now() - start < 20s, "the panel does not open");
    return std::chrono::steady_clock::now() - start;
  }

  void close() {
    desktop_.clickTrayIcon();
    require(eventually([&] { return !screen_.hasWindow(kOurTitle); }), "the panel does not close");
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

  /// Of all of these over the same seconds.
  static void measureProcessorTime(const std::vector<Mixer>& mixers) {
    std::vector<std::chrono::duration<double>> before;
    for (const auto& mixer : mixers)
      before.push_back(processorTimeOf(mixer.process));
    const auto start = std::chrono::steady_clock::now();
    std::this_thread::sleep_for(kMeasured);
    const auto measured = std::chrono::steady_clock::now() - start;
    for (std::size_t i = 0; i < mixers.size(); ++i)
      std::printf("  processor time of %-12s while %d rows meter %6.2f %%\n", mixers[i].name, kPlayers,
                  percent(processorTimeOf(mixers[i].process) - before[i], measured));
  }

  void measureBesideTheOther() {
    const ChildProcess other = desktop_.start(kOther);
    require(eventually([&] { return screen_.isPainted(kOtherTitle); }), "the other mixer does not open");
    std::this_thread::sleep_for(kSettling);
    const auto graph = desktop_.sound().graph();
    const auto isMeter = [](const GraphObject& object) {
      return object.type == "Node" && object.property("media.class") == "Stream/Input/Audio";
    };
    std::printf("  it meters %d streams\n", static_cast<int>(std::ranges::count_if(graph.objects, isMeter)));
    printMemory(kOther, other.pid());
    measureProcessorTime({{kOurTitle, sonvel_.pid()}, {kOther, other.pid()}});
  }

  void measureWakeUps() const {
    const auto before = wakeUpsOf(sonvel_.pid());
    const auto busyBefore = processorTimeOf(sonvel_.pid());
    std::this_thread::sleep_for(kMeasured);
    const std::chrono::duration<double> seconds = kMeasured;
    std::printf("  processor time, closed %5.2f %%; wake-ups per second, closed:\n",
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
