#pragma once

#include "model/channel_list.h"

#include <QBasicTimer>
#include <QQuickItem>
#include <memory>
#include <vector>

class QQmlComponent;

namespace sonvel {

/// The rows of the applications, one below the other, in the order of the list.
///
/// Not every row exists as an item, because creating one takes 2 to 4 ms: only those in the visible part of
/// the column, the first and the last one, and the neighbours of the one with the keyboard focus, so that the
/// Tab key reaches every row in order. Those that are needed for the first frame, after scrolling, or for the
/// keyboard focus are created at once; those that a change of the list or of the view's height needs, one
/// after the other in turns of the event loop, in steps as short as the engine's incubation controller makes
/// them. While the list changes, its end is not created anew. While a screen reader is in use all others
/// follow in the same way. A row that was seen or had the focus is kept, wherever the list moves it, until it
/// is removed from the list: the user may be dragging in it. Main thread.
class ChannelColumn : public QQuickItem {
  Q_OBJECT
  QML_ELEMENT
  Q_CLASSINFO("DefaultProperty", "row")
  Q_PROPERTY(sonvel::ChannelList* channels READ channels WRITE setChannels NOTIFY channelsChanged REQUIRED)
  Q_PROPERTY(QQmlComponent* row MEMBER row_ NOTIFY rowChanged REQUIRED)
  Q_PROPERTY(double spacing MEMBER spacing_ NOTIFY spacingChanged)
  Q_PROPERTY(double viewTop READ viewTop WRITE setViewTop NOTIFY viewChanged)
  Q_PROPERTY(double viewBottom READ viewBottom WRITE setViewBottom NOTIFY viewChanged)
  Q_PROPERTY(int count READ count NOTIFY countChanged)

 public:
  explicit ChannelColumn(QQuickItem* parent = nullptr);
  ~ChannelColumn() override;
  ChannelColumn(const ChannelColumn&) = delete;
  ChannelColumn& operator=(const ChannelColumn&) = delete;

  /// The list, and the component of a row: an Item with a property "ch" for its ChannelState. Set both once.
  [[nodiscard]] ChannelList* channels() const noexcept { return channels_; }

  void setChannels(ChannelList* channels);

  // The visible part, in the column's coordinates.

  [[nodiscard]] double viewTop() const noexcept { return viewTop_; }

  void setViewTop(double y);

  [[nodiscard]] double viewBottom() const noexcept { return viewBottom_; }

  void setViewBottom(double y);

  /// The length of the list.
  [[nodiscard]] int count() const noexcept { return static_cast<int>(rows_.size()); }

  /// False while rows will be created without a further change of the list or the view.
  [[nodiscard]] bool isSettled() const noexcept;

 Q_SIGNALS:
  void channelsChanged();
  void rowChanged();
  void spacingChanged();
  void viewChanged();
  void countChanged();

  /// The row with the keyboard focus is about to go; `next` takes its place in the list.
  void focusedRowRemoved(QQuickItem* next);

 private:
  struct Row {
    std::shared_ptr<ChannelState> channel;
    QQuickItem* item = nullptr; ///< null while it does not exist
    bool isInUse = false;       ///< it has been seen, or had the focus
    bool isAwaited = false;     ///< it will be created in one of the next turns of the event loop
  };

  /// What is created at once.
  enum class Creation {
    later,      ///< nothing
    ofScrolled, ///< the rows that scrolling brought into view
    ofAll,      ///< every row that is needed
  };

  class NewItem;

  void componentComplete() override;
  void updatePolish() override;
  void timerEvent(QTimerEvent* event) override;

  void insert(int first, int last);
  void remove(int first, int last);
  void move(int first, int last, int destination);

  void noteChange();

  void arrange(Creation now);
  [[nodiscard]] bool isNeeded(std::size_t index) const;
  [[nodiscard]] static bool hasFocus(const Row& row);
  [[nodiscard]] double usualHeight() const;
  void begin(std::size_t index, bool isAtOnce);
  void finish();
  void create(std::size_t index);
  void discard(Row& row);
  void putInOrder(std::size_t index);
  void createAwaited();

  ChannelList* channels_ = nullptr;
  QQmlComponent* row_ = nullptr;
  double spacing_ = 0.0;
  double viewTop_ = 0.0;
  double viewBottom_ = 0.0;
  std::vector<Row> rows_;        ///< as in the list
  std::unique_ptr<NewItem> new_; ///< null while none is being created
  double arrangedTop_ = 0.0;     ///< the view at the last arrangement
  double arrangedBottom_ = 0.0;
  bool isArranging_ = false;
  bool isShown_ = false; ///< in a frame
  QBasicTimer awaited_;  ///< runs while rows are awaited
  QBasicTimer changing_; ///< runs for a moment after each change of the list
};

} // namespace sonvel
