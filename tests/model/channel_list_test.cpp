#include "model/channel_list.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QMetaProperty>
#include <QSignalSpy>
#include <algorithm>
#include <random>

namespace sonvel {
namespace {

ChannelList::Row row(const std::string& name, const std::string& bundleID) {
  return std::make_shared<ChannelState>(
      AudioApp{.objectID = 1, .pid = 1, .bundleID = bundleID, .name = name, .parentBundleID = std::nullopt});
}

/// A view that follows the list by what it is told alone.
class Follower {
 public:
  explicit Follower(const ChannelList& list) {
    for (int i = 0; i < list.rowCount(); ++i)
      rows_.push_back(at(list, i));
    QObject::connect(&list, &ChannelList::rowsInserted, [this, &list](const QModelIndex&, int first, int) {
      rows_.insert(rows_.begin() + first, at(list, first));
    });
    QObject::connect(&list, &ChannelList::rowsRemoved, [this](const QModelIndex&, int first, int last) {
      rows_.erase(rows_.begin() + first, rows_.begin() + last + 1);
    });
    QObject::connect(&list, &ChannelList::rowsMoved,
                     [this](const QModelIndex&, int from, int, const QModelIndex&, int before) {
                       const auto moved = rows_.at(static_cast<std::size_t>(from));
                       rows_.insert(rows_.begin() + before, moved);
                       rows_.erase(rows_.begin() + (from < before ? from : from + 1));
                       ++moves_;
                     });
    QObject::connect(&list, &ChannelList::modelReset, [] { ADD_FAILURE() << "the list was reset"; });
  }

  static ChannelState* at(const ChannelList& list, int index) {
    return list.data(list.index(index), ChannelList::ChannelRole).value<ChannelState*>();
  }

  const std::vector<ChannelState*>& rows() const { return rows_; }

  int takeMoves() { return std::exchange(moves_, 0); }

 private:
  std::vector<ChannelState*> rows_;
  int moves_ = 0;
};

std::vector<ChannelState*> pointers(const ChannelList& list) {
  std::vector<ChannelState*> pointers;
  for (const auto& row : list.rows())
    pointers.push_back(row.get());
  return pointers;
}

bool byName(const ChannelState& a, const ChannelState& b) {
  return a.app().name < b.app().name;
}

TEST(ChannelList, AViewFollowsItWithoutAReset) {
  std::mt19937 random(7);
  for (int round = 0; round < 300; ++round) {
    ChannelList list;
    Follower follower(list);
    const int count = static_cast<int>(random() % 9);
    for (int i = 0; i < count; ++i)
      list.append(row(std::string(1, static_cast<char>('a' + random() % 5)), std::to_string(random() % 6)));
    auto sorted = list.rows();
    std::ranges::stable_sort(sorted, [](const auto& a, const auto& b) { return byName(*a, *b); });
    const QPersistentModelIndex held = count > 0 ? list.index(0) : QModelIndex();
    const auto* const heldRow = count > 0 ? list.rows().front().get() : nullptr;

    list.sort(byName);
    EXPECT_EQ(list.rows(), sorted);
    EXPECT_EQ(follower.rows(), pointers(list));
    EXPECT_TRUE(count == 0 || Follower::at(list, held.row()) == heldRow);
    follower.takeMoves();
    list.sort(byName);
    EXPECT_EQ(follower.takeMoves(), 0) << "what is sorted stays";

    list.removeRowsWithKey("3");
    std::erase_if(sorted, [](const auto& row) { return row->stableKey() == "3"; });
    EXPECT_EQ(list.rows(), sorted);
    EXPECT_EQ(follower.rows(), pointers(list));
  }
}

TEST(ChannelList, OneRowOutOfPlaceIsOneMove) {
  for (const std::string start : {"bcdea", "eabcd", "acdbe", "adbce"}) {
    ChannelList list;
    for (const char name : start)
      list.append(row({name}, {name}));
    Follower follower(list);
    list.sort(byName);
    EXPECT_EQ(follower.takeMoves(), 1) << start;
  }
}

TEST(ChannelState, AnnouncesEveryWriteAlsoOfTheSameValueAndShowsWhatIsAbsentAsUndefined) {
  const auto state = row("Player", "com.example.player");
  const auto& type = ChannelState::staticMetaObject;
  int written = 0;
  for (int i = type.propertyOffset(); i < type.propertyCount(); ++i) {
    const auto property = type.property(i);
    if (!property.isWritable()) continue;
    QSignalSpy announced(state.get(), property.notifySignal());
    ASSERT_TRUE(property.write(state.get(), property.read(state.get())));
    EXPECT_EQ(announced.count(), 1) << property.name();
    ++written;
  }
  EXPECT_EQ(written, 8);
  QSignalSpy routed(state.get(), &ChannelState::outputUIDChanged);
  QSignalSpy failed(state.get(), &ChannelState::lastErrorChanged);
  EXPECT_FALSE(state->property("outputUID").isValid() || state->property("lastError").isValid());
  state->setOutputUID("headset");
  state->setLastError(CallFailure{"failed", -50});
  EXPECT_EQ(state->property("outputUID"), "headset");
  EXPECT_EQ(state->property("lastError"), "failed");
  EXPECT_EQ(state->property("lastErrorStatus"), -50);
  EXPECT_EQ(routed.count() + failed.count(), 2);
}

} // namespace
} // namespace sonvel
