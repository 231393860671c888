#include "desktop/portal_appearance.h"
#include "panel/private_bus.h"
#include "session/event_wait.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <limits>

namespace sonvel::desktop {
namespace {

using session::waitUntil;
using Scheme = Appearance::ColorScheme;
using SettingGroups = QMap<QString, QVariantMap>;

constexpr auto kService = "org.freedesktop.portal.Desktop";
constexpr auto kPath = "/org/freedesktop/portal/desktop";
constexpr auto kInterface = "org.freedesktop.portal.Settings";
constexpr auto kAppearance = "org.freedesktop.appearance";
constexpr auto kGnome = "org.gnome.desktop.interface";

QVariant color(double red, double green, double blue) {
  QDBusArgument argument;
  argument.beginStructure();
  argument << red << green << blue;
  argument.endStructure();
  return QVariant::fromValue(argument);
}

/// Answers for the desktop as long as it lives.
class FakePortal final : public QDBusVirtualObject {
 public:
  enum class Behavior { answers, isSilent, givesError, givesNonsense, givesNothing };

  FakePortal(const QDBusConnection& bus, SettingGroups settings, Behavior behavior = Behavior::answers)
      : bus_(bus)
      , settings_(std::move(settings))
      , behavior_(behavior) {
    EXPECT_TRUE(bus_.registerVirtualObject(kPath, this));
    EXPECT_TRUE(bus_.registerService(kService));
  }

  ~FakePortal() override {
    bus_.unregisterService(kService);
    bus_.unregisterObject(kPath);
  }

  FakePortal(const FakePortal&) = delete;
  FakePortal& operator=(const FakePortal&) = delete;

  void change(const char* group, const char* key, const QVariant& value) {
    auto news = QDBusMessage::createSignal(kPath, kInterface, "SettingChanged");
    news << group << key << QVariant::fromValue(QDBusVariant(value));
    EXPECT_TRUE(bus_.send(news));
  }

  int timesAsked() const { return timesAsked_; }

  QString introspect(const QString&) const override { return {}; }

  bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
    if (message.interface() != kInterface || message.member() != "ReadAll") return false;
    ++timesAsked_;
    if (behavior_ == Behavior::isSilent) message.setDelayedReply(true);
    if (behavior_ == Behavior::givesError)
      return connection.send(message.createErrorReply("org.example.Error", "no"));
    if (behavior_ == Behavior::givesNothing) return connection.send(message.createReply());
    if (behavior_ == Behavior::givesNonsense) return connection.send(message.createReply("nonsense"));
    if (behavior_ == Behavior::answers) return connection.send(message.createReply(answer(message)));
    return true;
  }

 private:
  QVariant answer(const QDBusMessage& question) const {
    const auto asked = question.arguments().constFirst().toStringList();
    QDBusArgument answer;
    answer.beginMap(QMetaType::fromType<QString>(), QMetaType::fromType<QVariantMap>());
    for (auto group = settings_.begin(); group != settings_.end(); ++group) {
      if (!asked.contains(group.key())) continue;
      answer.beginMapEntry();
      answer << group.key() << group.value();
      answer.endMapEntry();
    }
    answer.endMap();
    return QVariant::fromValue(answer);
  }

  QDBusConnection bus_;
  SettingGroups settings_;
  Behavior behavior_;
  int timesAsked_ = 0;
};

class PortalAppearanceTest : public ::testing::Test {
 protected:
  int count_ = 0;
  char* arguments_[1] = {nullptr};
  const QCoreApplication application_{count_, arguments_};
  testing::PrivateBus bus_;
  const QDBusConnection portalBus_ = bus_.connect("portal");
  const QDBusConnection programBus_ = bus_.connect("program");
};

const SettingGroups kDarkAndCalm = {
    {kAppearance, {{"color-scheme", 1U}, {"accent-color", color(0.2, 0.4, 1)}, {"reduced-motion", 0U}}},
    {kGnome, {{"enable-animations", false}, {"color-scheme", "prefer-light"}}}};
const Appearance kDarkAndCalmAppearance{
    .colorScheme = Scheme::dark, .accentColor = 0x3366ff, .prefersReducedMotion = true};

TEST_F(PortalAppearanceTest, IsReadAndThenFollowed) {
  FakePortal portal(portalBus_, kDarkAndCalm);
  PortalAppearance appearance(programBus_);
  EXPECT_EQ(appearance.current(), Appearance()) << "nothing is waited for";
  std::vector<Appearance> heard;
  appearance.onChange([&] { heard.push_back(appearance.current()); });
  ASSERT_TRUE(waitUntil([&] { return !heard.empty(); }));
  ASSERT_EQ(heard.back(), kDarkAndCalmAppearance);

  const struct {
    const char* group;
    const char* key;
    QVariant value;
    std::optional<Appearance> expected; ///< none: no change
  } changes[] = {
      {kAppearance, "color-scheme", 2U, Appearance{Scheme::light, 0x3366ff, true}},
      {kAppearance, "color-scheme", 7U, Appearance{Scheme::noPreference, 0x3366ff, true}},
      {kAppearance, "color-scheme", "dark", {}},
      {kAppearance, "color-scheme", QVariant::fromValue(QDBusVariant(1U)),
       Appearance{Scheme::dark, 0x3366ff, true}},
      {kAppearance, "accent-color", color(0, 1, 0.5), Appearance{Scheme::dark, 0x00ff80, true}},
      {kAppearance, "accent-color", color(0, 1.1, 0.5), Appearance{Scheme::dark, {}, true}},
      {kAppearance, "accent-color", color(-1, -1, -1), {}},
      {kAppearance, "accent-color", color(std::numeric_limits<double>::quiet_NaN(), 0, 0), {}},
      {kAppearance, "accent-color", color(0, 0, 0), Appearance{Scheme::dark, 0, true}},
      {kAppearance, "accent-color", "#ff0000", Appearance{Scheme::dark, {}, true}},
      {kAppearance, "reduced-motion", 1U, {}},
      {kGnome, "enable-animations", true, {}},
      {kAppearance, "reduced-motion", 0U, Appearance{Scheme::dark, {}, false}},
      {kAppearance, "reduced-motion", 1U, Appearance{Scheme::dark, {}, true}},
      {kAppearance, "reduced-motion", 0U, Appearance{Scheme::dark, {}, false}},
      {kGnome, "enable-animations", "no", {}},
      {kGnome, "color-scheme", 2U, {}},
      {kAppearance, "contrast", 1U, {}},
      {kGnome, "enable-animations", false, Appearance{Scheme::dark, {}, true}},
  };

  heard.clear();
  std::vector<Appearance> expected;
  for (const auto& change : changes) {
    portal.change(change.group, change.key, change.value);
    if (change.expected) expected.push_back(*change.expected);
  }
  EXPECT_TRUE(waitUntil([&] { return heard.size() >= expected.size(); }));
  EXPECT_EQ(heard, expected);
}

TEST_F(PortalAppearanceTest, IsReadWhenThePortalComesAndComesBack) {
  PortalAppearance appearance(programBus_);
  {
    const FakePortal portal(portalBus_, kDarkAndCalm);
    EXPECT_TRUE(waitUntil([&] { return appearance.current() == kDarkAndCalmAppearance; }));
  }
  FakePortal portal(portalBus_, {{kAppearance, {{"color-scheme", 2U}}}});
  EXPECT_TRUE(waitUntil([&] { return appearance.current() == Appearance{.colorScheme = Scheme::light}; }));
  portal.change(kAppearance, "color-scheme", 1U);
  EXPECT_TRUE(waitUntil([&] { return appearance.current() == Appearance{.colorScheme = Scheme::dark}; }));
}

TEST_F(PortalAppearanceTest, IsTheDefaultsWhereThePortalSaysNothingOfUseAndFollowsItAllTheSame) {
  for (const auto behavior : {FakePortal::Behavior::isSilent, FakePortal::Behavior::givesError,
                              FakePortal::Behavior::givesNonsense, FakePortal::Behavior::givesNothing}) {
    SCOPED_TRACE(static_cast<int>(behavior));
    FakePortal portal(portalBus_, kDarkAndCalm, behavior);
    PortalAppearance appearance(programBus_);
    std::vector<Appearance> heard;
    appearance.onChange([&] { heard.push_back(appearance.current()); });
    ASSERT_TRUE(waitUntil([&] { return portal.timesAsked() > 0; }));
    portal.change(kAppearance, "color-scheme", 1U); // comes after the answer
    EXPECT_TRUE(waitUntil([&] { return !heard.empty(); }));
    EXPECT_EQ(heard, std::vector{Appearance{.colorScheme = Scheme::dark}});
  }
}

TEST_F(PortalAppearanceTest, IsTheDefaultsWithoutABus) {
  const PortalAppearance appearance(QDBusConnection("no such bus"));
  QCoreApplication::processEvents();
  EXPECT_EQ(appearance.current(), Appearance());
}

} // namespace
} // namespace sonvel::desktop
