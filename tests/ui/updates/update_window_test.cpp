#include "ui/updates/update_states.h"
#include "ui/updates/update_window.h"
#include "ui/updates/update_words.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QDir>
#include <QGuiApplication>
#include <QPointer>
#include <QQuickItem>
#include <QQuickView>
#include <QTest>

namespace sonvel {
namespace {

/// A session that says what it is told to.
class ScriptedSession final : public UpdateSession {
 public:
  const UpdateState& state() const noexcept override { return state_; }

  void proceed() override { ++proceeded; }

  void cancel() override { ++cancelled; }

  void setObserver(UpdateObserver* observer) noexcept override { observer_ = observer; }

  void set(const UpdateState& state) {
    state_ = state;
    if (observer_ != nullptr) observer_->updateStateChanged();
  }

  int proceeded = 0;
  int cancelled = 0;

 private:
  UpdateState state_;
  UpdateObserver* observer_ = nullptr;
};

/// All objects of an accessible tree that are seen, with their roles.
void collect(QAccessibleInterface* object, std::vector<QAccessibleInterface*>& found) {
  if (object == nullptr || object->state().invisible) return;
  found.push_back(object);
  for (int child = 0; child < object->childCount(); ++child)
    collect(object->child(child), found);
}

class UpdateWindowTest : public testing::Test {
 protected:
  // A closed window goes with the next turn of the loop, which a test that has ended doesn't have.
  void TearDown() override { QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }

  void show(const UpdateState& state) {
    session_.set(state);
    ASSERT_NE(window_.view(), nullptr);
    ASSERT_TRUE(window_.view()->errors().isEmpty())
        << window_.view()->errors().first().toString().toStdString();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window_.view()));
  }

  void press(Qt::Key key) { QTest::keyClick(window_.view(), key); }

  std::vector<QAccessibleInterface*> objectsOf(QAccessible::Role role) const {
    std::vector<QAccessibleInterface*> found;
    collect(QAccessible::queryAccessibleInterface(window_.view()), found);
    std::erase_if(found, [=](QAccessibleInterface* object) { return object->role() != role; });
    return found;
  }

  QStringList namesOf(QAccessible::Role role) const {
    QStringList names;
    for (QAccessibleInterface* object : objectsOf(role))
      names.append(object->text(QAccessible::Name));
    return names;
  }

  ScriptedSession session_;
  Appearance appearance_{.colorScheme = Appearance::ColorScheme::light, .prefersReducedMotion = true};
  UpdateWindow window_{session_, [this] { return appearance_; }};
};

UpdateState stateNamed(const std::string& name) {
  for (const NamedState& one : visibleStates())
    if (one.name == name) return one.state;
  ADD_FAILURE() << name;
  return {};
}

TEST_F(UpdateWindowTest, isThereWhileThereIsSomethingToSee) {
  EXPECT_EQ(window_.view(), nullptr);
  UpdateState state = stateNamed("available");
  show(state);
  const QPointer<QQuickView> view = window_.view();
  session_.set(stateNamed("downloading"));
  EXPECT_EQ(window_.view(), view) << "one window for the whole way";
  state.isVisible = false;
  session_.set(state);
  EXPECT_EQ(window_.view(), nullptr);
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_TRUE(view.isNull());
  show(stateNamed("checking"));
}

TEST_F(UpdateWindowTest, obeysKeysAndItsCloseButton) {
  struct Case {
    const char* name;
    int proceeds; ///< by Return
    int cancels;
  };

  const Case cases[] = {{"available", 1, 0}, {"ready", 1, 0},       {"failed", 1, 0},    {"up-to-date", 0, 1},
                        {"checking", 0, 0},  {"handed-over", 0, 1}, {"installing", 0, 0}};
  for (const Case& one : cases) {
    show(stateNamed(one.name));
    session_.proceeded = session_.cancelled = 0;
    press(Qt::Key_Return);
    EXPECT_EQ(session_.proceeded, one.proceeds) << one.name;
    EXPECT_EQ(session_.cancelled, one.cancels) << one.name;
    session_.cancelled = 0;
    press(Qt::Key_Escape);
    EXPECT_EQ(session_.cancelled, 1) << one.name;
    window_.view()->close();
    EXPECT_EQ(session_.cancelled, 2) << one.name;
    EXPECT_EQ(window_.view(), nullptr) << "a window that refuses to close keeps the program from quitting";
  }
}

TEST_F(UpdateWindowTest, letsTabReachEveryButton) {
  show(stateNamed("available"));
  press(Qt::Key_Tab);
  press(Qt::Key_Return);
  EXPECT_EQ(session_.cancelled, 1) << "Return presses the button that has the focus";
  press(Qt::Key_Tab);
  press(Qt::Key_Space);
  EXPECT_EQ(session_.proceeded, 1);
}

TEST_F(UpdateWindowTest, letsAssistiveTechnologyPressEveryButton) {
  show(stateNamed("available"));
  for (QAccessibleInterface* button : objectsOf(QAccessible::Button))
    button->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
  EXPECT_EQ(session_.cancelled, 1);
  EXPECT_EQ(session_.proceeded, 1);
}

TEST_F(UpdateWindowTest, tellsAssistiveTechnologyWhatItShows) {
  show(stateNamed("available"));
  EXPECT_EQ(namesOf(QAccessible::Button), QStringList({"Not Now", "Download"}));
  EXPECT_EQ(namesOf(QAccessible::Heading), QStringList({"Sonvel 1.1 is available"}));
  EXPECT_EQ(namesOf(QAccessible::Paragraph), QStringList({"Release notes"}));
  EXPECT_TRUE(namesOf(QAccessible::ProgressBar).isEmpty());
  show(stateNamed("downloading"));
  EXPECT_EQ(namesOf(QAccessible::Button), QStringList({"Cancel"}));
  EXPECT_EQ(namesOf(QAccessible::ProgressBar), QStringList({"Downloading Sonvel 1.1"}));
}

TEST_F(UpdateWindowTest, scrollsLongNotesByKey) {
  show(stateNamed("available-long-notes"));
  const auto* notes = window_.view()->rootObject()->findChild<QQuickItem*>(QStringLiteral("notesFlickable"));
  ASSERT_NE(notes, nullptr);
  press(Qt::Key_Tab);
  press(Qt::Key_Down);
  EXPECT_GT(notes->property("contentY").toDouble(), 0);
  press(Qt::Key_Up);
  EXPECT_EQ(notes->property("contentY").toDouble(), 0);
}

TEST_F(UpdateWindowTest, showsMarkupAsItIsWritten) {
  UpdateState state = stateNamed("available");
  state.notes = "<img src='https://updates.example/x.png'> <b>bold</b>";
  show(state);
  for (const QQuickItem* item : window_.view()->rootObject()->findChildren<QQuickItem*>()) {
    const QVariant format = item->property("textFormat");
    if (format.isValid()) {
      EXPECT_EQ(format.toInt(), static_cast<int>(Qt::PlainText));
    }
  }
}

/// Nothing is cut off: every text has the room that it wants.
void expectRoom(const QQuickView& view, const std::string& name) {
  for (const QQuickItem* item : view.rootObject()->findChildren<QQuickItem*>()) {
    if (!item->isVisible() || !item->property("paintedHeight").isValid()) continue;
    EXPECT_LE(item->property("paintedHeight").toDouble(), item->height() + 1) << name;
    EXPECT_LE(item->property("paintedWidth").toDouble(), item->width() + 1) << name;
  }
  EXPECT_EQ(view.height(), qRound(view.rootObject()->height())) << name;
}

TEST_F(UpdateWindowTest, hasRoomForItsWordsInEveryState) {
  const QString pictures = qEnvironmentVariable("SONVEL_PICTURES");
  for (const auto scheme : {Appearance::ColorScheme::light, Appearance::ColorScheme::dark}) {
    appearance_.colorScheme = scheme;
    session_.set({});
    for (const auto& [name, state] : visibleStates()) {
      show(state);
      QTest::qWait(50); // for the layout, and a frame
      expectRoom(*window_.view(), name);
      const UpdateWords words = wordsOf(state, QLocale());
      QStringList labels{words.dismissLabel, words.acceptLabel};
      labels.removeAll(QString());
      EXPECT_EQ(namesOf(QAccessible::Button), labels) << name;
      const QImage picture = window_.view()->grabWindow();
      EXPECT_FALSE(picture.isNull());
      if (pictures.isEmpty()) continue;
      const char* suffix = scheme == Appearance::ColorScheme::dark ? "-dark.png" : "-light.png";
      EXPECT_TRUE(QDir().mkpath(pictures));
      EXPECT_TRUE(picture.save(pictures + QStringLiteral("/update-") + QString::fromStdString(name) +
                               QString::fromLatin1(suffix)));
    }
  }
}

} // namespace
} // namespace sonvel
