#pragma once

#include "model/channel_state.h"

#include <QAbstractListModel>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace sonvel {

/// The rows in display order. Every insertion, removal and move is announced and the list is never reset, so
/// that a view keeps its row, and a slider being dragged, while other rows change. Main thread.
class ChannelList : public QAbstractListModel {
  Q_OBJECT

 public:
  using Row = std::shared_ptr<ChannelState>;
  using Order = std::function<bool(const ChannelState&, const ChannelState&)>; ///< strict weak order

  enum Role { ChannelRole = Qt::UserRole }; ///< "channel": the ChannelState, owned by C++

  const std::vector<Row>& rows() const noexcept { return rows_; }

  /// Null if there is none.
  Row rowWithKey(const std::string& stableKey) const;

  /// Whether this object is in the list.
  bool contains(const ChannelState& row) const;

  /// The list must have no row with its key yet.
  void append(Row row);

  /// Does nothing if there is none.
  void removeRowWithKey(const std::string& stableKey);

  /// Sorts with as few moves as possible. Equal rows keep their order. A list in order costs one comparison
  /// for each row.
  void sort(const Order& comesBefore);

  using QAbstractListModel::sort;

  int rowCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QHash<int, QByteArray> roleNames() const override;

 private:
  void move(std::size_t from, std::size_t to);

  std::vector<Row> rows_;
  std::unordered_map<std::string, Row> byKey_;
};

} // namespace sonvel
