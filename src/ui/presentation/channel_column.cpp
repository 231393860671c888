#include "ui/presentation/channel_column.h"

#include <QAccessible>
#include <QQmlComponent>
#include <QQmlContext>
#include <QQmlIncubator>
#include <QScopedValueRollback>
#include <QTimerEvent>
#include <algorithm>
#include <utility>

namespace sonvel {
namespace {

/// The list counts as unchanged after this time.
constexpr int kQuietMilliseconds = 100;

} // namespace

/// A row's item while it is created. Asynchronous ones are hidden until they are complete.
class ChannelColumn::NewItem final : public QQmlIncubator {
 public:
  NewItem(ChannelColumn& column, std::shared_ptr<ChannelState> channel, IncubationMode mode)
      : QQmlIncubator(mode)
      , column_(column)
      , channel_(std::move(channel)) {
    setInitialProperties({{QStringLiteral("ch"), QVariant::fromValue(channel_.get())}});
  }

  [[nodiscard]] const std::shared_ptr<ChannelState>& channel() const noexcept { return channel_; }

 private:
  void setInitialState(QObject* object) override {
    auto* const item = qobject_cast<QQuickItem*>(object);
    if (item == nullptr) return;
    QObject::connect(item, &QObject::destroyed, [channel = channel_] {}); // it needs its channel until then
    item->setParent(&column_);
    item->setParentItem(&column_);
    if (incubationMode() == Asynchronous) item->setVisible(false);
  }

  void statusChanged(Status status) override {
    const bool isDone = status == Ready || status == Error;
    if (isDone && incubationMode() == Asynchronous) column_.awaited_.start(0, &column_);
  }

  ChannelColumn& column_;
  const std::shared_ptr<ChannelState> channel_;
};

ChannelColumn::ChannelColumn(QQuickItem* parent)
    : QQuickItem(parent) {}

ChannelColumn::~ChannelColumn() {
  if (new_) new_->forceCompletion(); // an engine counts those that are not complete
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
  polish();
  Q_EMIT viewChanged();
}

void ChannelColumn::setViewBottom(double y) {
  if (y == viewBottom_) return;
  viewBottom_ = y;
  polish();
  Q_EMIT viewChanged();
}

bool ChannelColumn::isSettled() const noexcept {
  return isShown_ && !awaited_.isActive() && !changing_.isActive() && !new_;
}

// At once, so that the window has its size before it is shown.
void ChannelColumn::componentComplete() {
  QQuickItem::componentComplete();
  arrange(Creation::ofAll);
}

// May run several times for one frame.
void ChannelColumn::updatePolish() {
  if (isShown_) return arrange(viewTop_ != arrangedTop_ ? Creation::ofScrolled : Creation::later);
  arrange(Creation::ofAll);
  awaited_.start(0, this); // its turn is after the first frame
}

void ChannelColumn::timerEvent(QTimerEvent* event) {
  if (event->timerId() == awaited_.timerId()) {
    if (!std::exchange(isShown_, true)) return polish(); // for those that are awaited
    createAwaited();
  } else if (event->timerId() == changing_.timerId()) {
    changing_.stop();
    polish();
  }
}

void ChannelColumn::insert(int first, int last) {
  const auto& channels = channels_->rows();
  std::vector<Row> added;
  for (int i = first; i <= last; ++i)
    added.push_back({.channel = channels[static_cast<std::size_t>(i)]});
  rows_.insert(rows_.begin() + first, added.begin(), added.end());
  noteChange();
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
  noteChange();
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
  noteChange();
}

void ChannelColumn::noteChange() {
  if (isShown_) changing_.start(kQuietMilliseconds, this);
  polish();
}

/// Places all rows, and creates those that are needed: now, or in the next turns of the event loop.
void ChannelColumn::arrange(Creation now) {
  if (!isComponentComplete()) return;
  if (isArranging_) return polish();
  const QScopedValueRollback<bool> guard(isArranging_, true);
  double usual = usualHeight();
  double y = 0.0;
  for (std::size_t i = 0; i < rows_.size(); ++i) {
    auto& row = rows_[i];
    const double height = row.item != nullptr ? row.item->height() : usual;
    const bool isPlaced = height > 0.0;
    const bool isInView = isPlaced && y < viewBottom_ && y + height > viewTop_;
    const bool wasInView = isPlaced && y < arrangedBottom_ && y + height > arrangedTop_;
    if (hasFocus(row) || isInView) row.isInUse = true;
    const bool isNow = now == Creation::ofAll || (now == Creation::ofScrolled && isInView && !wasInView);
    if (row.item == nullptr && isNow && isNeeded(i)) {
      create(i);
      if (!(usual > 0.0)) usual = usualHeight();
    } else if (row.item != nullptr && !isNeeded(i) && !changing_.isActive()) {
      discard(row);
    }
    row.isAwaited = row.item == nullptr && (isNeeded(i) || QAccessible::isActive());
    if (row.item != nullptr) row.item->setY(y);
    y += (row.item != nullptr ? row.item->height() : usual) + spacing_;
  }
  arrangedTop_ = viewTop_;
  arrangedBottom_ = viewBottom_;
  setImplicitHeight(usual > 0.0 ? std::max(0.0, y - spacing_) : 0.0);
  if (isShown_ && std::ranges::any_of(rows_, &Row::isAwaited)) awaited_.start(0, this);
}

/// The last row of a list that changes is not needed yet.
bool ChannelColumn::isNeeded(std::size_t index) const {
  const auto& row = rows_[index];
  if (row.isInUse || index == 0) return true;
  if (index + 1 == rows_.size() && !changing_.isActive()) return true;
  const bool isRead = row.item != nullptr && QAccessible::isActive();
  return isRead || hasFocus(rows_[index - 1]) || (index + 1 < rows_.size() && hasFocus(rows_[index + 1]));
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

void ChannelColumn::begin(std::size_t index, bool isAtOnce) {
  new_ = std::make_unique<NewItem>(*this, rows_[index].channel,
                                   isAtOnce ? QQmlIncubator::Synchronous : QQmlIncubator::Asynchronous);
  row_->create(*new_, row_->creationContext());
}

/// Completes the new item and gives it to its row, unless that was removed.
void ChannelColumn::finish() {
  new_->forceCompletion();
  const auto made = std::exchange(new_, nullptr);
  auto* const item = qobject_cast<QQuickItem*>(made->object());
  for (const auto& error : made->errors())
    qWarning("A row could not be created: %s", qPrintable(error.toString()));
  const auto row = std::ranges::find(rows_, made->channel(), &Row::channel);
  if (row != rows_.end()) row->isAwaited = false;
  if (item == nullptr) return;
  if (row == rows_.end()) return item->deleteLater();
  row->item = item;
  putInOrder(static_cast<std::size_t>(row - rows_.begin()));
  item->setVisible(true);
  connect(item, &QQuickItem::heightChanged, this, &QQuickItem::polish);
  // At once: the next press of the Tab key may follow before a frame.
  connect(item, &QQuickItem::activeFocusChanged, this, [this] { arrange(Creation::ofAll); });
}

/// Creates the row's item before it returns.
void ChannelColumn::create(std::size_t index) {
  if (new_ && new_->channel() != rows_[index].channel) {
    finish();
    polish(); // for its place
  }
  if (!new_) begin(index, true);
  finish();
}

void ChannelColumn::discard(Row& row) {
  if (row.item == nullptr) return;
  row.item->disconnect(this);
  row.item->setParentItem(nullptr);
  std::exchange(row.item, nullptr)->deleteLater(); // not now, because the item may have caused this
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

// One at a time, in steps, because a row takes longer than everything else that a turn does.
void ChannelColumn::createAwaited() {
  if (new_ && new_->isLoading()) return awaited_.stop(); // it starts the timer again
  if (new_) {
    finish();
    return polish();
  }
  const auto next = std::ranges::find(rows_, true, &Row::isAwaited);
  if (next == rows_.end()) return awaited_.stop();
  begin(static_cast<std::size_t>(next - rows_.begin()), false);
}

} // namespace sonvel
