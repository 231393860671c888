#include "ui/panel_test.h"
#include "ui/updates/update_window.h"
#include "ui/updates/update_words.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <set>

namespace sonvel {
namespace {

/// A run with a scripted state.
class ScriptedRun final : public UpdateRun {
 public:
  const UpdateState& state() const noexcept override { return state_; }

  void proceed() override { ++proceeded; }

  void cancel() override { ++cancelled; }

  void setObserver(UpdateObserver* observer) noexcept override { observer_ = observer; }

  void set(const UpdateState& state) {
    state_ = state;
    proceeded = cancelled = 0;
    if (observer_ != nullptr) observer_->updateStateChanged();
  }

  int proceeded = 0;
  int cancelled = 0;

 private:
  UpdateState state_;
  UpdateObserver* observer_ = nullptr;
};

UpdateState at(UpdateStage stage, bool isUnasked = false, bool isPackage = false) {
  return {.stage = stage,
          .isVisible = true,
          .isUnasked = isUnasked,
          .isPackage = isPackage,
          .installedVersion = "1.0",
          .offeredVersion = std::string(64, 'W'),
          .notes = QString("<b>What is new</b>:\n\n\u2022 more").repeated(40).toStdString(),
          .receivedBytes = 5'300'000,
          .totalBytes = 12'400'000,
          .failure = UpdateFailure::feedNotSigned};
}

/// For scripts/pictures: where to save pictures, the beginning of their names; usually empty.
const QString kPictures = qEnvironmentVariable("SONVEL_PICTURES");

class UpdateWindowTest : public testing::Test, protected WindowUser {
 protected:
  // Closed windows are deleted by the event loop, which does not run after the test.
  void TearDown() override { QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }

  QQuickWindow* window() const override { return window_.view(); }

  /// Also where its texts are.
  void savePicture(const QString& name) const {
    window()->grabWindow().save(name + ".png");
    QJsonArray places;
    for (const auto role : {QAccessible::StaticText, QAccessible::Heading, QAccessible::Button})
      for (auto* item : itemsOf(role)) {
        const QRect rect = place(item).toAlignedRect();
        const auto text = accessible(item)->text(QAccessible::Name);
        if (text != "") places << QJsonArray{text, rect.x(), rect.y(), rect.width(), rect.height()};
      }
    QFile file(name + ".json");
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QJsonDocument(places).toJson());
  }

  ScriptedRun run_;
  UpdateWindow window_{run_, [] {
                         using enum Appearance::ColorScheme;
                         return Appearance{.colorScheme = kPictures.contains("dark") ? dark : light,
                                           .prefersReducedMotion = true};
                       }};
};

TEST_F(UpdateWindowTest, showsEveryStateInFullAndObeysItsKeys) {
  using enum UpdateStage;

  const struct {
    UpdateState state;
    QStringList buttons;
    int proceeds = 0; ///< counts presses of Return
    int cancels = 0;
  } cases[] = {{at(checking), {"Cancel"}},
               {at(upToDate), {"OK"}, 0, 1},
               {at(needsNewerSystem), {"OK"}, 0, 1},
               {at(available), {"Not Now", "Download"}, 1},
               {at(available, true), {"Not Now", "Download"}},
               {at(downloading), {"Cancel"}},
               {at(ready), {"Cancel", "Install and Relaunch"}, 1},
               {at(ready, false, true), {"Cancel", "Install"}, 1},
               {at(verifying), {"Cancel"}},
               {at(installing), {"Cancel"}},
               {at(restarting), {}},
               {at(handedOver), {"OK"}, 0, 1},
               {at(failed), {"Close", "Try Again"}, 1}};

  int pictures = 0;
  for (const auto& [state, buttons, proceeds, cancels] : cases) {
    SCOPED_TRACE(static_cast<int>(state.stage));
    run_.set(state);
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window()));
    EXPECT_EQ(names(QAccessible::Button), buttons);
    EXPECT_TRUE(QTest::qWaitFor(
        [&] { return window()->height() == qRound(window_.view()->rootObject()->height()); }));
    for (const QQuickItem* item : items()) {
      EXPECT_LE(item->property("paintedHeight").toDouble(), item->height() + 1) << "it is cut off";
      EXPECT_LE(item->property("paintedWidth").toDouble(), item->width() + 1) << "it is cut off";
      EXPECT_EQ(item->property("textFormat").toInt(), static_cast<int>(Qt::PlainText));
    }
    if (!kPictures.isEmpty()) savePicture(kPictures + QString::number(++pictures));
    press(Qt::Key_Return);
    press(Qt::Key_Space);
    EXPECT_EQ(run_.proceeded, proceeds);
    EXPECT_EQ(run_.cancelled, cancels);
    press(Qt::Key_Escape);
    EXPECT_EQ(run_.cancelled, cancels + 1);
    window()->close();
    EXPECT_EQ(run_.cancelled, cancels + 2);
    run_.set({});
  }
}

TEST_F(UpdateWindowTest, isOneWindowForTheWholeWayWithKeysForEachOfItsParts) {
  run_.set(at(UpdateStage::available));
  ASSERT_TRUE(QTest::qWaitForWindowExposed(window()));
  const auto* const notes = window_.view()->rootObject()->findChild<QQuickItem*>("notesArea");
  press(Qt::Key_Tab);
  press(Qt::Key_Down);
  EXPECT_GT(notes->property("contentY").toDouble(), 0);
  press(Qt::Key_Tab);
  press(Qt::Key_Return);
  EXPECT_EQ(run_.cancelled, 1) << "Return presses the button that has the focus";

  const QPointer<QQuickWindow> same = window();
  run_.set(at(UpdateStage::downloading));
  EXPECT_EQ(window(), same);
}

TEST(UpdateWords, haveASentenceForEachFailureAndCountADownload) {
  std::set<QString> sentences;
  constexpr int kLast = static_cast<int>(UpdateFailure::newVersionDied);
  for (int failure = 0; failure <= kLast; ++failure)
    sentences.insert(sentenceOf(static_cast<UpdateFailure>(failure)));
  EXPECT_EQ(sentences.size(), kLast + 1U);
  const UpdateState half = at(UpdateStage::downloading);
  EXPECT_EQ(wordsOf(half, QLocale::c()).progressText, QStringLiteral("5.3 MB of 12.4 MB"));
  EXPECT_DOUBLE_EQ(fractionOf(half).value_or(-1), 5.3 / 12.4);
  EXPECT_EQ(fractionOf({.stage = UpdateStage::downloading}), std::nullopt) << "of an unknown size";
}

} // namespace
} // namespace sonvel
