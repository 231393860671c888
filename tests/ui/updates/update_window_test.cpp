#include "ui/updates/update_window.h"
#include "ui/updates/update_words.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QDir>
#include <QGuiApplication>
#include <QPointer>
#include <QQuickItem>
#include <QQuickView>
#include <QRegularExpression>
#include <QTest>
#include <set>

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

UpdateState at(UpdateStage stage) {
  return {.stage = stage,
          .isVisible = true,
          .installedVersion = "1.0",
          .offeredVersion = "1.1",
          .notes = "<b>What is new</b>:\n\n\u2022 Applications keep their volume over a restart.\n"
                   "\u2022 The panel opens where the tray icon is, on every screen.",
          .receivedBytes = 5'300'000,
          .totalBytes = 12'400'000,
          .failure = UpdateFailure::feedNotSigned};
}

/// A state, with what the keys do in it and what the buttons are.
struct Shown {
  const char* name;
  UpdateState state;
  QStringList buttons;
  int proceeds = 0; ///< by Return
  int cancels = 0;
};

std::vector<Shown> shownStates() {
  UpdateState unasked = at(UpdateStage::available);
  unasked.isUnasked = true;
  UpdateState longNotes = at(UpdateStage::available);
  for (int line = 1; line <= 40; ++line)
    longNotes.notes += "\n\u2022 Change " + std::to_string(line);
  longNotes.offeredVersion = std::string(64, 'W');
  UpdateState package = at(UpdateStage::ready);
  package.isPackage = true;
  UpdateState undone = at(UpdateStage::failed);
  undone.failure = UpdateFailure::newVersionDied;
  undone.isUnasked = true;
  return {{"checking", at(UpdateStage::checking), {"Cancel"}},
          {"up-to-date", at(UpdateStage::upToDate), {"OK"}, 0, 1},
          {"needs-newer-system", at(UpdateStage::needsNewerSystem), {"OK"}, 0, 1},
          {"available", at(UpdateStage::available), {"Not Now", "Download"}, 1},
          {"available-unasked", unasked, {"Not Now", "Download"}},
          {"available-long", longNotes, {"Not Now", "Download"}, 1},
          {"downloading", at(UpdateStage::downloading), {"Cancel"}},
          {"verifying", at(UpdateStage::verifying), {"Cancel"}},
          {"ready", at(UpdateStage::ready), {"Cancel", "Install and Relaunch"}, 1},
          {"ready-package", package, {"Cancel", "Install"}, 1},
          {"installing", at(UpdateStage::installing), {"Cancel"}},
          {"restarting", at(UpdateStage::restarting), {}},
          {"handed-over", at(UpdateStage::handedOver), {"OK"}, 0, 1},
          {"failed", at(UpdateStage::failed), {"Close", "Try Again"}, 1},
          {"undone", undone, {"Close", "Try Again"}}};
}

void collect(QAccessibleInterface* object, QAccessible::Role role,
             std::vector<QAccessibleInterface*>& found) {
  if (object == nullptr || object->state().invisible) return;
  if (object->role() == role) found.push_back(object);
  for (int child = 0; child < object->childCount(); ++child)
    collect(object->child(child), role, found);
}

class UpdateWindowTest : public testing::Test {
 protected:
  // A closed window is deleted by the event loop, which no longer runs after a test.
  void TearDown() override { QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }

  void show(const UpdateState& state) {
    session_.set(state);
    ASSERT_NE(window_.view(), nullptr);
    ASSERT_TRUE(window_.view()->errors().isEmpty()) << window_.view()->errors()[0].toString().toStdString();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window_.view()));
    session_.proceeded = session_.cancelled = 0;
  }

  void press(Qt::Key key) { QTest::keyClick(window_.view(), key); }

  std::vector<QAccessibleInterface*> objectsOf(QAccessible::Role role) const {
    std::vector<QAccessibleInterface*> found;
    collect(QAccessible::queryAccessibleInterface(window_.view()), role, found);
    return found;
  }

  QStringList namesOf(QAccessible::Role role) const {
    QStringList names;
    for (QAccessibleInterface* object : objectsOf(role))
      names.append(object->text(QAccessible::Name));
    return names;
  }

  /// Nothing is cut off, every text is plain, and the window is as large as what it shows.
  void expectRoom() const {
    for (const QQuickItem* item : window_.view()->rootObject()->findChildren<QQuickItem*>()) {
      if (!item->isVisible() || !item->property("paintedHeight").isValid()) continue;
      EXPECT_LE(item->property("paintedHeight").toDouble(), item->height() + 1);
      EXPECT_LE(item->property("paintedWidth").toDouble(), item->width() + 1);
      const QVariant format = item->property("textFormat");
      EXPECT_TRUE(!format.isValid() || format.toInt() == static_cast<int>(Qt::PlainText));
    }
    EXPECT_EQ(window_.view()->height(), qRound(window_.view()->rootObject()->height()));
  }

  void keepPicture(const QString& name) const {
    const QString folder = qEnvironmentVariable("SONVEL_PICTURES");
    if (folder.isEmpty()) return;
    EXPECT_TRUE(QDir().mkpath(folder));
    EXPECT_TRUE(window_.view()->grabWindow().save(folder + QStringLiteral("/update-%1.png").arg(name)));
  }

  ScriptedSession session_;
  Appearance appearance_{.colorScheme = Appearance::ColorScheme::light, .prefersReducedMotion = true};
  UpdateWindow window_{session_, [this] { return appearance_; }};
};

TEST_F(UpdateWindowTest, showsEveryStateInFullAndObeysItsKeys) {
  for (const auto scheme : {Appearance::ColorScheme::light, Appearance::ColorScheme::dark}) {
    appearance_.colorScheme = scheme;
    for (const Shown& one : shownStates()) {
      SCOPED_TRACE(one.name);
      session_.set({});
      show(one.state);
      QTest::qWait(50); // for the layout, and a frame
      expectRoom();
      keepPicture(QLatin1String(one.name) +
                  QLatin1String(scheme == Appearance::ColorScheme::dark ? "-dark" : "-light"));
      EXPECT_EQ(namesOf(QAccessible::Button), one.buttons);
      EXPECT_EQ(window_.view()->property("_q_showWithoutActivating").toBool(), one.state.isUnasked);
      press(Qt::Key_Return);
      press(Qt::Key_Space);
      EXPECT_EQ(session_.proceeded, one.proceeds);
      EXPECT_EQ(session_.cancelled, one.cancels);
      press(Qt::Key_Escape);
      EXPECT_EQ(session_.cancelled, one.cancels + 1);
      window_.view()->close();
      EXPECT_EQ(session_.cancelled, one.cancels + 2);
      EXPECT_EQ(window_.view(), nullptr) << "a window that refuses to close keeps the program from quitting";
    }
  }
}

TEST_F(UpdateWindowTest, isThereWhileThereIsSomethingToSee) {
  EXPECT_EQ(window_.view(), nullptr);
  show(at(UpdateStage::available));
  const QPointer<QQuickView> view = window_.view();
  session_.set(at(UpdateStage::downloading));
  EXPECT_EQ(window_.view(), view) << "one window for the whole way";
  session_.set({});
  EXPECT_EQ(window_.view(), nullptr);
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_TRUE(view.isNull());
}

TEST_F(UpdateWindowTest, givesEveryButtonToKeyboardAndAssistiveTechnology) {
  show(at(UpdateStage::available));
  press(Qt::Key_Tab);
  press(Qt::Key_Return);
  EXPECT_EQ(session_.cancelled, 1) << "Return presses the button that has the focus";
  press(Qt::Key_Tab);
  press(Qt::Key_Space);
  EXPECT_EQ(session_.proceeded, 1);
  for (QAccessibleInterface* button : objectsOf(QAccessible::Button))
    button->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
  EXPECT_EQ(session_.cancelled, 2);
  EXPECT_EQ(session_.proceeded, 2);
  EXPECT_EQ(namesOf(QAccessible::Heading), QStringList({"Sonvel 1.1 is available"}));
  EXPECT_EQ(namesOf(QAccessible::Paragraph), QStringList({"Release notes"}));
  session_.set(at(UpdateStage::downloading));
  EXPECT_EQ(namesOf(QAccessible::ProgressBar), QStringList({"Downloading Sonvel 1.1"}));
}

TEST_F(UpdateWindowTest, scrollsLongNotesByKey) {
  show(shownStates()[5].state);
  const auto* notes = window_.view()->rootObject()->findChild<QQuickItem*>(QStringLiteral("notesArea"));
  ASSERT_NE(notes, nullptr);
  press(Qt::Key_Tab);
  press(Qt::Key_Down);
  EXPECT_GT(notes->property("contentY").toDouble(), 0);
  press(Qt::Key_Up);
  EXPECT_EQ(notes->property("contentY").toDouble(), 0);
}

TEST(UpdateWords, sayOneSentenceForEachFailureAndCountADownload) {
  const QRegularExpression oneSentence(QStringLiteral("^[A-Z][^.!?]{20,110}\\.$"));
  std::set<QString> sentences;
  constexpr int kLast = static_cast<int>(UpdateFailure::newVersionDied);
  for (int failure = 0; failure <= kLast; ++failure) {
    const QString sentence = sentenceOf(static_cast<UpdateFailure>(failure));
    EXPECT_TRUE(oneSentence.match(sentence).hasMatch()) << sentence.toStdString();
    sentences.insert(sentence);
  }
  EXPECT_EQ(sentences.size(), kLast + 1U);
  const UpdateState half = at(UpdateStage::downloading);
  EXPECT_EQ(wordsOf(half, QLocale::c()).progressText, QStringLiteral("5.3 MB of 12.4 MB"));
  EXPECT_DOUBLE_EQ(fractionOf(half).value_or(-1), 5.3 / 12.4);
}

} // namespace
} // namespace sonvel

/// The application is no static: it has to be gone before Qt's own statics are.
int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const QGuiApplication application(argc, argv);
  return RUN_ALL_TESTS();
}
