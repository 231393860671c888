#include "ui/presentation/channel_column.h"

#include <QAccessible>
#include <QQmlComponent>
#include <QQmlContext>
#include <QScopedValueRollback>
#include <QTimerEvent>
#include <algorithm>
#include <utility>

namespace sonvel {

ChannelColumn::ChannelColumn(QQuickItem* parent)
    : QQuickItem(parent) {}

ChannelColumn::~ChannelColumn() {
  for (const auto& row : rows_)
    if (row.item != nullptr) row.item->disconnect(this); // they lose the focus as they go
}

void ChannelColumn::setChannels(ChannelList* channels) {
  if (channels == channels_) return;
  if (channels_ != nullptr) {
    channels_->disconnect(this);
    if (!rows_.empty()) remove(0, count() - 1);
  }
  channels_ = channels;
  if (channels_ != nullptr) {
    using List = QAbstractItemModel;
    connect(channels_, &List::rowsInserted, this,
            [this](const QModelIndex&, int first, int last) { insert(first, last); });
    connect(channels_, &List::rowsRemoved, this,
            [this](const QModelIndex&, int first, int last) { remove(first, last); });
    connect(channels_, &List::rowsMoved, this,
            [this](const QModelIndex&, int first, int last, const QModelIndex&, int destination) {
              move(first, last, destination);
            });
    if (channels_->rowCount() > 0) insert(0, channels_->rowCount() - 1);
  }
  Q_EMIT channelsChanged();
}

void ChannelColumn::setViewTop(double y) {
  if (y == viewTop_) return;
  viewTop_ = y;
  isViewMoved_ = true;
  polish();
  Q_EMIT viewChanged();
}

void ChannelColumn::setViewBottom(double y) {
  if (y == viewBottom_) return;
  viewBottom_ = y;
  isViewMoved_ = true;
  polish();
  Q_EMIT viewChanged();
}

// At once, so that the window has its size before it is shown.
void ChannelColumn::componentComplete() {
  QQuickItem::componentComplete();
  arrange(kAll);
}

// May run several times for one frame, but after changes of the list it creates one row at most: the timer
// runs then.
void ChannelColumn::updatePolish() {
  if (std::exchange(isViewMoved_, false)) return arrange(kAll);
  arrange(awaited_.isActive() ? 0 : 1);
}

void ChannelColumn::timerEvent(QTimerEvent* event) {
  if (event->timerId() == awaited_.timerId()) createAwaited();
}

void ChannelColumn::insert(int first, int last) {
  const auto& channels = channels_->rows();
  std::vector<Row> added;
  for (int i = first; i <= last; ++i)
    added.push_back({.channel = channels[static_cast<std::size_t>(i)]});
  rows_.insert(rows_.begin() + first, added.begin(), added.end());
  polish();
  Q_EMIT countChanged();
}

void ChannelColumn::remove(int first, int last) {
  std::vector<Row> removed(rows_.begin() + first, rows_.begin() + last + 1);
  rows_.erase(rows_.begin() + first, rows_.begin() + last + 1);
  if (std::ranges::any_of(removed, hasFocus) && !rows_.empty()) {
    const auto next = static_cast<std::size_t>(std::min(first, count() - 1));
    if (rows_[next].item == nullptr) create(next);
    if (rows_[next].item != nullptr) Q_EMIT focusedRowRemoved(rows_[next].item);
  }
  for (auto& row : removed)
    discard(row);
  polish();
  Q_EMIT countChanged();
}

void ChannelColumn::move(int first, int last, int destination) {
  const auto begin = rows_.begin();
  if (destination > last)
    std::rotate(begin + first, begin + last + 1, begin + destination);
  else
    std::rotate(begin + destination, begin + first, begin + last + 1);
  const int start = destination > last ? destination - (last - first) - 1 : destination;
  for (int i = start; i <= start + last - first; ++i)
    putInOrder(static_cast<std::size_t>(i));
  polish();
}

/// Places all rows, and creates those that are needed: at most this many now, the others in the next turns of
/// the event loop.
void ChannelColumn::arrange(std::size_t atOnce) {
  if (!isComponentComplete()) return;
  if (isArranging_) return polish();
  const QScopedValueRollback<bool> guard(isArranging_, true);
  double usual = usualHeight();
  double y = 0.0;
  for (std::size_t i = 0; i < rows_.size(); ++i) {
    auto& row = rows_[i];
    const double height = row.item != nullptr ? row.item->height() : usual;
    if (hasFocus(row) || (y < viewBottom_ && y + height > viewTop_)) row.isInUse = true;
    if (!isNeeded(i)) {
      discard(row);
    } else if (row.item == nullptr && atOnce > 0) {
      --atOnce;
      create(i);
      awaited_.start(0, this);
      if (!(usual > 0.0)) usual = usualHeight();
    }
    row.isAwaited = row.item == nullptr && (isNeeded(i) || QAccessible::isActive());
    if (row.item != nullptr) row.item->setY(y);
    y += (row.item != nullptr ? row.item->height() : usual) + spacing_;
  }
  setImplicitHeight(std::max(0.0, y - spacing_));
  if (std::ranges::any_of(rows_, &Row::isAwaited)) awaited_.start(0, this);
}

bool ChannelColumn::isNeeded(std::size_t index) const {
  const auto& row = rows_[index];
  if (row.isInUse || index == 0 || index + 1 == rows_.size()) return true;
  const bool isRead = row.item != nullptr && QAccessible::isActive();
  return isRead || hasFocus(rows_[index - 1]) || hasFocus(rows_[index + 1]);
}

bool ChannelColumn::hasFocus(const Row& row) {
  return row.item != nullptr && row.item->hasActiveFocus();
}

/// The median height of the rows that exist, so that a long error in one of them does not count; 0 if there
/// are none.
double ChannelColumn::usualHeight() const {
  std::vector<double> heights;
  for (const auto& row : rows_)
    if (row.item != nullptr) heights.push_back(row.item->height());
  if (heights.empty()) return 0.0;
  const auto middle = heights.begin() + static_cast<std::ptrdiff_t>((heights.size() - 1) / 2);
  std::ranges::nth_element(heights, middle);
  return *middle;
}

void ChannelColumn::create(std::size_t index) {
  auto& row = rows_[index];
  row.isAwaited = false;
  std::unique_ptr<QObject> object(row_->beginCreate(row_->creationContext()));
  auto* const item = qobject_cast<QQuickItem*>(object.get());
  if (item == nullptr) {
    qWarning("A row could not be created: %s", qPrintable(row_->errorString()));
    return;
  }
  row_->setInitialProperties(item, {{QStringLiteral("ch"), QVariant::fromValue(row.channel.get())}});
  item->setParent(this);
  item->setParentItem(this);
  static_cast<void>(object.release()); // now owned by this item
  row.item = item;
  putInOrder(index);
  row_->completeCreate();
  connect(item, &QQuickItem::heightChanged, this, &QQuickItem::polish);
  // At once: the next press of the Tab key may follow before a frame.
  connect(item, &QQuickItem::activeFocusChanged, this, [this] { arrange(kAll); });
}

void ChannelColumn::discard(Row& row) {
  if (row.item == nullptr) return;
  row.item->disconnect(this);
  row.item->setParentItem(nullptr);
  // Later, because the item may have caused this. It needs its channel until then.
  connect(row.item, &QObject::destroyed, [channel = row.channel] {});
  std::exchange(row.item, nullptr)->deleteLater();
}

/// Puts the row's item after that of the row before it; the order decides where the Tab key goes, and in
/// which order a screen reader reads.
void ChannelColumn::putInOrder(std::size_t index) {
  auto* const item = rows_[index].item;
  if (item == nullptr) return;
  const auto exists = [](const Row& row) { return row.item != nullptr; };
  const auto at = [this](std::size_t i) { return rows_.begin() + static_cast<std::ptrdiff_t>(i); };
  const auto before = std::find_if(std::make_reverse_iterator(at(index)), rows_.rend(), exists);
  if (before != rows_.rend()) return item->stackAfter(before->item);
  if (const auto after = std::find_if(at(index + 1), rows_.end(), exists); after != rows_.end())
    item->stackBefore(after->item);
}

// One in each turn, because a row takes longer than everything else that a turn does.
void ChannelColumn::createAwaited() {
  const auto next = std::ranges::find(rows_, true, &Row::isAwaited);
  if (next == rows_.end()) return awaited_.stop();
  create(static_cast<std::size_t>(next - rows_.begin()));
  polish();
}

} // namespace sonvel
