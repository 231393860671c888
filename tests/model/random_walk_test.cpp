// The model in a world in which anything may happen at random, and what must hold whatever has happened.

#include "audio/mixer_math.h"
#include "model/model_test.h"

#include <QCollator>
#include <algorithm>
#include <cstdlib>
#include <deque>
#include <random>

namespace sonvel {
namespace {

using simulated::Call;
using simulated::Frame;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr unsigned kSanitizerFactor = 10;
#else
constexpr unsigned kSanitizerFactor = 1;
#endif

/// Steps of each walk; a sanitizer takes so many times as long. SONVEL_WALK_STEPS asks for another number.
constexpr unsigned kSteps = 100'000 / kSanitizerFactor;

/// A walk repeats the one before unless SONVEL_WALK_SEED says otherwise.
constexpr std::uint64_t kSeed = 20'260'101;

constexpr std::size_t kHistoryLength = 40;

// Building and taking down never fail at the same time: a session that can be neither built nor undone is
// left as it is, and this walk does not judge it.
constexpr std::array kBuilding{Call::createProcessTap, Call::createAggregateDevice, Call::createIOProcID,
                               Call::deviceStart};
constexpr std::array kTearingDown{Call::deviceStop, Call::destroyIOProcID, Call::destroyAggregateDevice};

/// What the preflight says; mostly that we may. None: it can't be asked.
constexpr std::array<std::optional<int>, 7> kPreflightCodes{0, 0, 0, 0, 1, 2, std::nullopt};

constexpr std::array kDevices{"speakers", "headset", "usb"};

/// "" follows the default device.
constexpr std::array kRoutes{"", "", "", "speakers", "speakers", "headset", "headset", "usb", "unknown"};

std::uint64_t fromEnvironment(const char* name, std::uint64_t otherwise) {
  const char* const text = std::getenv(name);
  return text != nullptr ? std::stoull(text) : otherwise;
}

/// A process that comes and goes. Those of one application share a key.
struct Player {
  std::string name;
  std::string bundleID;
  float sample;                                ///< no sum of some players' samples is that of others
  AudioObjectID process = kAudioObjectUnknown; ///< 0 while it does not run
  bool isPlaying = false;
  bool isSilent = false;
};

class RandomWalkTest : public MixerTest {
 protected:
  RandomWalkTest();

  /// Takes the walk with `finishStep` after each step, and leaves the program at its end.
  void walk(const std::function<void()>& finishStep);

  /// Makes one thing happen, without waiting for what follows from it.
  void step();

  /// Checks what must hold once everything has followed.
  void check() {
    checkRows();
    checkSessions();
    checkSound();
  }

  unsigned pick(unsigned count) { return static_cast<unsigned>(random_() % count); }

 private:
  /// Something that may happen in one step.
  struct Action {
    const char* name;
    unsigned weight; ///< how often it happens, compared with the others
    void (*act)(RandomWalkTest& walk);
  };

  static const std::vector<Action>& actions();

  /// One of `values`, by chance.
  template <class Values> const auto& anyOf(const Values& values) {
    return values.at(pick(static_cast<unsigned>(values.size())));
  }

  /// Adds to the history of this step.
  void note(const std::string& text) { history_.back() += " " + text; }

  Player& anyPlayer() {
    auto& player = players_[pick(static_cast<unsigned>(players_.size()))];
    note(player.name);
    return player;
  }

  ChannelState* anyRow() {
    const auto& rows = model_->channels()->rows();
    auto* const row = rows.empty() ? nullptr : anyOf(rows).get();
    note(row != nullptr ? row->stableKey() : "none");
    return row;
  }

  std::optional<std::string> anyRoute() {
    const std::string route = anyOf(kRoutes);
    note(route);
    return route.empty() ? std::nullopt : std::optional(route);
  }

  void start(Player& player) {
    end(player);
    player.process = play(player.name, player.bundleID, player.sample);
    player.isPlaying = true;
    note("as " + std::to_string(player.process));
  }

  void end(Player& player) {
    if (player.process != kAudioObjectUnknown) audio_.removeProcess(player.process);
    player.process = kAudioObjectUnknown;
    player.isPlaying = player.isSilent = false;
  }

  void failTearingDown();

  /// Those of sessions; a probe's are left out.
  std::vector<simulated::Tap> taps() const {
    auto taps = audio_.taps();
    std::erase_if(taps, [](const auto& tap) { return tap.description.name == "SonvelProbe"; });
    return taps;
  }

  void checkRows() const;
  void checkSessions();
  void checkSound();

  /// The row that the session of a process obeys for sure; null if there is none.
  const ChannelState* tunedRowOf(AudioObjectID process) const {
    for (const auto& row : model_->channels()->rows())
      if (row->active() && row->objectID() == process && !turned_.contains(row.get())) return row.get();
    return nullptr;
  }

  void expect(const Player& player, std::map<std::string, std::optional<float>>& sound);

  std::mt19937_64 random_;
  std::deque<std::string> history_;
  std::vector<Player> players_;
  std::optional<std::string> defaultDevice_ = "speakers";
  std::vector<ChannelState*> shown_; ///< the rows, as a view knows them that is told of changes alone

  /// Rows that came to stand for another process while they were active. Until they have been inactive,
  /// what is set in them may reach another session than the one that is heard.
  std::set<const QObject*> turned_;

  // How often a device was checked by ear and how often it could not be, and how often an application was
  // heard through a session at the gain of its row.
  int heardChecks_ = 0;
  int skippedHeardChecks_ = 0;
  int heardAtItsGain_ = 0;
};

RandomWalkTest::RandomWalkTest() {
  audio_.addDevice({.uid = "usb", .name = "USB", .volumes = {{kElementLeft, {}}, {kElementRight, {}}}});
  // Two applications with one process, two with several that their users take for one.
  players_ = {{"Alpha", "com.example.alpha", 0.1F},
              {"beta", "com.example.beta", 0.0313F},
              {"Gamma", "com.example.gamma", 0.0517F},
              {"Browser", "com.example.browser", 0.0737F},
              {"Browser Helper", "com.example.browser.helper", 0.0193F},
              {"Browser Helper (GPU)", "com.example.browser.helper.gpu", 0.0111F},
              {"Delta", "com.example.delta", 0.0023F},
              {"Delta Helper", "com.example.delta.helper", 0.0431F}};
  const auto* const list = model_->channels();
  QObject::connect(list, &ChannelList::rowsInserted, [this, list](const QModelIndex&, int index, int) {
    auto* const row = list->data(list->index(index), ChannelList::ChannelRole).value<ChannelState*>();
    shown_.insert(shown_.begin() + index, row);
    QObject::connect(row, &ChannelState::appChanged, [this, row] {
      if (row->active()) turned_.insert(row);
    });
    QObject::connect(row, &ChannelState::activeChanged, [this, row] {
      if (!row->active()) turned_.erase(row);
    });
  });
  QObject::connect(list, &ChannelList::rowsRemoved, [this](const QModelIndex&, int index, int) {
    turned_.erase(shown_.at(static_cast<std::size_t>(index)));
    shown_.erase(shown_.begin() + index);
  });
  QObject::connect(list, &ChannelList::rowsMoved,
                   [this](const QModelIndex&, int from, int, const QModelIndex&, int before) {
                     auto* const moved = shown_.at(static_cast<std::size_t>(from));
                     shown_.insert(shown_.begin() + before, moved);
                     shown_.erase(shown_.begin() + (from < before ? from : from + 1));
                   });
  QObject::connect(list, &ChannelList::modelReset, [] { ADD_FAILURE() << "the list was reset"; });
}

const std::vector<RandomWalkTest::Action>& RandomWalkTest::actions() {
  using Walk = RandomWalkTest;
  static const std::vector<Action> actions{
      {"gain is set", 10, [](Walk& w) { w.model_->setGain(static_cast<int>(w.pick(201)), w.anyRow()); }},
      {"mute is toggled", 6, [](Walk& w) { w.model_->toggleMute(w.anyRow()); }},
      {"row is dismissed", 3, [](Walk& w) { w.model_->dismissChannel(w.anyRow()); }},
      {"output is chosen", 4, [](Walk& w) { w.model_->setOutput(w.anyRoute(), w.anyRow()); }},
      {"master is set", 1, [](Walk& w) { w.model_->setMaster(w.pick(101) / 100.0); }},
      {"volumes are reset", 1,
       [](Walk& w) {
         w.model_->resetAllVolumes();
         for (const auto& row : w.model_->channels()->rows())
           EXPECT_EQ(std::pair(row->gainPercent(), row->muted()), std::pair(100, false));
       }},
      {"everything to system", 1,
       [](Walk& w) {
         w.model_->everythingToSystemOutput();
         EXPECT_TRUE(w.settle());
         for (const auto& row : w.model_->channels()->rows())
           EXPECT_EQ(row->outputUID(), std::nullopt);
       }},
      {"panel appears", 3, [](Walk& w) { w.model_->onAppear(); }},
      {"panel disappears", 1, [](Walk& w) { w.model_->onDisappear(); }},
      {"process (re)starts", 8, [](Walk& w) { w.start(w.anyPlayer()); }},
      {"process ends", 2, [](Walk& w) { w.end(w.anyPlayer()); }},
      {"playing changes", 5,
       [](Walk& w) {
         auto& player = w.anyPlayer();
         if (player.process == kAudioObjectUnknown) return;
         player.isPlaying = !player.isPlaying || w.pick(2) == 0;
         w.audio_.setPlaying(player.process, player.isPlaying);
       }},
      {"silence changes", 2,
       [](Walk& w) {
         auto& player = w.anyPlayer();
         if (player.process == kAudioObjectUnknown) return;
         player.isSilent = !player.isSilent;
         const float sample = player.isSilent ? 0.0F : player.sample;
         w.audio_.setSignal(player.process, simulated::constantSignal(sample, sample));
       }},
      {"device comes or goes", 3,
       [](Walk& w) {
         const std::string uid = w.anyOf(kDevices);
         w.note(uid);
         if (w.audio_.deviceWithUID(uid) == kAudioObjectUnknown)
           (void)w.audio_.returnDevice(uid);
         else if (w.pick(3) == 0) // mostly they are there
           w.audio_.removeDevice(uid);
       }},
      {"default changes", 2,
       [](Walk& w) {
         w.defaultDevice_ = w.anyRoute();
         if (w.defaultDevice_ == "unknown") w.defaultDevice_ = std::nullopt;
         w.audio_.setDefaultDevice(w.defaultDevice_);
       }},
      {"permission changes", 1, [](Walk& w) { w.consent_.setPreflight(w.anyOf(kPreflightCodes)); }},
      {"permission is requested", 1,
       [](Walk& w) {
         w.consent_.setRequestable(w.pick(2) == 0); // otherwise it is probed
         w.model_->requestPermission();
       }},
      {"request is answered", 2,
       [](Walk& w) {
         if (w.consent_.openRequests() > 0) w.consent_.answer(w.pick(2) == 0);
       }},
      {"building fails", 2,
       [](Walk& w) {
         w.audio_.clearFailures();
         w.audio_.fail({.call = w.anyOf(kBuilding), .after = w.pick(3), .times = 1 + w.pick(3)});
       }},
      {"tearing down fails", 1, [](Walk& w) { w.failTearingDown(); }},
      {"failures end", 5, [](Walk& w) { w.audio_.clearFailures(); }},
      {"tick passes", 50, [](Walk& w) { w.clock_.advance(kTick); }},
      {"time passes", 6, [](Walk& w) { w.clock_.advance(w.pick(2) == 0 ? 2s : 5s); }},
  };
  return actions;
}

void RandomWalkTest::walk(const std::function<void()>& finishStep) {
  const auto seed = fromEnvironment("SONVEL_WALK_SEED", kSeed);
  const auto steps = fromEnvironment("SONVEL_WALK_STEPS", kSteps);
  random_.seed(seed);
  for (std::uint64_t i = 0; i < steps; ++i) {
    step();
    finishStep();
    if (HasFailure()) {
      FAIL() << "at step " << i << " with SONVEL_WALK_SEED=" << seed << "; before it:\n"
             << testing::PrintToString(history_);
    }
  }
  audio_.clearFailures();
  pass(1s); // for a probe to end
  (void)startTask(mainThread_, [this] { return model_->teardownForQuit(); });
  ASSERT_TRUE(settle());
  EXPECT_TRUE(audio_.isClean());
  check();
  EXPECT_LT(skippedHeardChecks_, heardChecks_ / 10) << "too much was not checked by ear";
  EXPECT_GT(heardAtItsGain_, heardChecks_ / 20) << "too little was controlled";
}

void RandomWalkTest::step() {
  unsigned left = 0;
  for (const auto& action : actions())
    left += action.weight;
  left = pick(left);
  const auto* action = actions().data();
  for (; left >= action->weight; ++action)
    left -= action->weight;
  history_.emplace_back(action->name);
  if (history_.size() > kHistoryLength) history_.pop_front();
  audio_.clearLog();
  action->act(*this);
}

/// Of a session that is there now: neither the undoing of one that is being built nor a probe's is to fail.
void RandomWalkTest::failTearingDown() {
  audio_.clearFailures();
  EXPECT_TRUE(settle());
  const auto taps = this->taps();
  if (taps.empty()) return;
  const auto& tap = anyOf(taps);
  audio_.fail({.call = Call::destroyProcessTap, .object = tap.id, .times = 1 + pick(3)});
  for (const auto& aggregate : audio_.aggregates())
    if (aggregate.description.taps.front().uid == tap.uid)
      audio_.fail({.call = anyOf(kTearingDown), .object = aggregate.id, .times = 1 + pick(3)});
}

void RandomWalkTest::checkRows() const {
  QCollator order;
  order.setCaseSensitivity(Qt::CaseInsensitive);
  const auto& rows = model_->channels()->rows();
  EXPECT_TRUE(std::ranges::equal(rows, shown_, {}, &ChannelList::Row::get));
  EXPECT_TRUE(std::ranges::is_sorted(rows, [&](const auto& a, const auto& b) {
    if (a->isPlaying() != b->isPlaying()) return a->isPlaying();
    return order.compare(a->name(), b->name()) < 0;
  })) << testing::PrintToString(rowNames());
  auto remembered = this->remembered();
  std::set<std::string> keys;
  for (const auto& row : rows) {
    EXPECT_TRUE(keys.insert(row->stableKey()).second) << "two rows of " << row->stableKey();
    EXPECT_EQ(row->stableKey(), stableKey(row->app()));
    EXPECT_TRUE(row->isPlaying() || row->level() == 0.0F) << row->stableKey();
    const auto settings = remembered.extract(row->stableKey());
    EXPECT_TRUE(settings.empty() || settings.mapped() == std::pair(row->gainPercent(), row->muted()));
  }
  EXPECT_TRUE(remembered.empty()) << "settings of a row that has gone";
}

void RandomWalkTest::checkSessions() {
  actor_
      ->call([this](HardwareController& controller) {
        if (controller.restorationFailure()) return; // something of a session could not be undone yet
        std::vector<AudioObjectID> tapped;
        for (const auto& tap : taps())
          tapped.push_back(tap.description.processes.front());
        EXPECT_THAT(tapped, testing::UnorderedElementsAreArray(controller.controlledAppIDs()));
        for (const auto process : tapped)
          if (const auto* const row = tunedRowOf(process); row != nullptr) {
            EXPECT_EQ(controller.outputUID(process), row->outputUID()) << process;
          }
      })
      .get();
}

void RandomWalkTest::checkSound() {
  audio_.runCycle(16);
  std::map<std::string, std::optional<float>> expected; // by device; none if it can't be told
  for (const std::string uid : kDevices)
    if (audio_.deviceWithUID(uid) != kAudioObjectUnknown) expected[uid] = 0.0F;
  for (const auto& player : players_)
    if (player.isPlaying && !player.isSilent) expect(player, expected);
  for (const auto& [uid, sample] : expected) {
    ++heardChecks_;
    if (!sample) ++skippedHeardChecks_;
    const float heard = audio_.heard(uid).back().left;
    EXPECT_NEAR(heard, sample.value_or(heard), 1e-5F) << uid;
  }
}

/// Unaltered where no tap is on it; otherwise wherever an IOProc plays its tap, at the gain of its row.
void RandomWalkTest::expect(const Player& player, std::map<std::string, std::optional<float>>& sound) {
  const auto add = [&](const std::string& uid, std::optional<float> gain) {
    const auto device = sound.find(uid);
    if (device == sound.end() || !device->second) return;
    device->second = gain ? std::optional(*device->second + player.sample * *gain) : std::nullopt;
  };

  const auto taps = this->taps();
  const auto tap = std::ranges::find(taps, player.process,
                                     [](const auto& other) { return other.description.processes.front(); });
  if (tap == taps.end()) return add(defaultDevice_.value_or(""), 1.0F);
  std::optional<float> gain;
  if (const auto* const row = tunedRowOf(player.process))
    gain = row->muted() ? 0.0F : MixerMath::percentToGain(row->gainPercent());
  for (const auto& aggregate : audio_.aggregates()) {
    if (aggregate.description.taps.front().uid != tap->uid) continue;
    for (const auto& ioProc : audio_.ioProcs())
      if (ioProc.device == aggregate.id && ioProc.isStarted) {
        add(aggregate.description.subDevices.front().uid, gain);
        if (gain) ++heardAtItsGain_;
      }
  }
}

TEST_F(RandomWalkTest, EverythingHoldsAfterEachStep) {
  walk([this] {
    ASSERT_TRUE(settle());
    check();
  });
}

/// Several things happen while what follows from the first is still under way. What happens is repeated by
/// the seed, how the threads meet is not.
TEST_F(RandomWalkTest, EverythingHoldsAfterStepsThatOvertakeEachOther) {
  walk([this] {
    switch (pick(4)) {
    case 0:
      ASSERT_TRUE(settle());
      return check();
    case 1:
      return pump();
    case 2:
      return audio_.runCycle(16);
    default:
      return;
    }
  });
}

} // namespace
} // namespace sonvel
