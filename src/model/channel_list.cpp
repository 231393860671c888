#include "model/channel_list.h"

#include <algorithm>

namespace sonvel {

ChannelList::Row ChannelList::rowWithKey(const std::string& stableKey) const {
  const auto found = byKey_.find(stableKey);
  return found != byKey_.end() ? found->second : nullptr;
}

bool ChannelList::contains(const ChannelState& row) const {
  return rowWithKey(row.stableKey()).get() == &row;
}

void ChannelList::append(Row row) {
  const int index = rowCount();
  beginInsertRows({}, index, index);
  byKey_.emplace(row->stableKey(), row);
  rows_.push_back(std::move(row));
  endInsertRows();
}

void ChannelList::removeRowWithKey(const std::string& stableKey) {
  const auto row = rowWithKey(stableKey);
  if (!row) return;
  const auto found = std::ranges::find(rows_, row);
  const auto index = static_cast<int>(found - rows_.begin());
  beginRemoveRows({}, index, index);
  rows_.erase(found);
  byKey_.erase(row->stableKey());
  endRemoveRows();
}

void ChannelList::sort(const Order& comesBefore) {
  const auto isBefore = [&](const Row& a, const Row& b) { return comesBefore(*a, *b); };
  // Usually all but a few rows are in order, and comparisons of names take most of the time.
  std::vector<Row> ordered;
  std::vector<Row> others;
  for (const auto& row : rows_)
    (ordered.empty() || !isBefore(row, ordered.back()) ? ordered : others).push_back(row);
  if (others.empty()) return;
  std::ranges::stable_sort(others, isBefore);
  auto sorted = std::move(ordered);
  for (auto& row : others)
    sorted.insert(std::ranges::upper_bound(sorted, row, isBefore), row);
  const auto indexIn = [](const std::vector<Row>& rows, const Row& row) {
    return static_cast<std::size_t>(std::ranges::find(rows, row) - rows.begin());
  };
  for (std::size_t i = 0; i < sorted.size();) {
    if (rows_[i] == sorted[i]) {
      ++i;
      continue;
    }
    // Two rows are out of place: the wanted one and the present one. Move the one with the longer way.
    const auto from = indexIn(rows_, sorted[i]);
    const auto to = indexIn(sorted, rows_[i]);
    if (to > from)
      move(i, to);
    else
      move(from, i);
  }
}

void ChannelList::move(std::size_t from, std::size_t to) {
  const auto source = static_cast<int>(from);
  const auto destination =
      static_cast<int>(from < to ? to + 1 : to); // Qt wants the index of the row that follows
  beginMoveRows({}, source, source, {}, destination);
  const auto first = rows_.begin();
  const auto at = [first](std::size_t index) { return first + static_cast<std::ptrdiff_t>(index); };
  if (from < to)
    std::rotate(at(from), at(from + 1), at(to + 1));
  else
    std::rotate(at(to), at(from), at(from + 1));
  endMoveRows();
}

int ChannelList::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

QVariant ChannelList::data(const QModelIndex& index, int role) const {
  if (role != ChannelRole || !hasIndex(index.row(), index.column())) return {};
  return QVariant::fromValue(rows_[static_cast<std::size_t>(index.row())].get());
}

QHash<int, QByteArray> ChannelList::roleNames() const {
  return {{ChannelRole, "channel"}};
}

} // namespace sonvel
