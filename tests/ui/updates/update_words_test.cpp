#include "ui/updates/update_states.h"
#include "ui/updates/update_words.h"

#include <gtest/gtest.h>

#include <QRegularExpression>
#include <set>

namespace sonvel {
namespace {

TEST(UpdateWords, sayOneSentenceForEachFailure) {
  const QRegularExpression oneSentence(QStringLiteral("^[A-Z][^.!?]{20,110}\\.$"));
  std::set<QString> sentences;
  for (int failure = 0; failure <= static_cast<int>(kLastFailure); ++failure) {
    const QString sentence = sentenceOf(static_cast<UpdateFailure>(failure));
    EXPECT_TRUE(oneSentence.match(sentence).hasMatch()) << sentence.toStdString();
    EXPECT_TRUE(sentences.insert(sentence).second) << sentence.toStdString();
  }
}

TEST(UpdateWords, areThereInEveryStage) {
  for (const auto& [name, state] : visibleStates()) {
    const UpdateWords words = wordsOf(state, QLocale::c());
    EXPECT_FALSE(words.heading.isEmpty() || words.detail.isEmpty()) << name;
    EXPECT_TRUE(words.detail.endsWith(QLatin1Char('.'))) << name;
    EXPECT_FALSE((words.heading + words.detail + words.progressText).contains(QLatin1Char('%'))) << name;
    const bool isLeaving = state.stage == UpdateStage::restarting;
    EXPECT_EQ(words.acceptLabel.isEmpty() && words.dismissLabel.isEmpty(), isLeaving) << name;
  }
}

TEST(UpdateWords, countADownload) {
  UpdateState state{.stage = UpdateStage::downloading, .receivedBytes = 5'300'000, .totalBytes = 12'400'000};
  EXPECT_EQ(wordsOf(state, QLocale::c()).progressText, QStringLiteral("5.3 MB of 12.4 MB"));
  EXPECT_DOUBLE_EQ(fractionOf(state).value_or(-1), 5.3 / 12.4);
  state.stage = UpdateStage::verifying;
  EXPECT_EQ(fractionOf(state), std::nullopt);
}

} // namespace
} // namespace sonvel
