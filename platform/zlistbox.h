#pragma once

#include "platform/zaccessible.h"
#include "platform/zlistboxitem.h"
#include "platform/zlistrowpainter.h"
#include "platform/ztapordrag.h"

#include <QListView>

#include <array>
#include <functional>

class ZGlide;

/// A list of rows of one height, of which one is current (highlighted).
///
/// Up and Down move, Return checks or unchecks a row that has a check box and selects the row. A
/// tap makes a row current, a tap on the current row or on one with a check box works like Return;
/// a drag or the wheel scrolls. All other keys are left to the parent. Only whole rows are shown.
/// With motion (ZMotion) a current row's name that does not fit glides, so that all of it is seen.
///
/// Rows inserted in a run become part of the list together: with the next call that needs them or
/// when the event loop is back. Of a long list the rows can be made when they are first painted or
/// asked for.
class ZListBox : public QListView, public ZAccessibleSource
{
    Q_OBJECT

public:
    /// `type` is the layout string that the phone's box took as its default; each item brings its
    /// own here.
    ZListBox(const QString& type, QWidget* parent, unsigned flags, unsigned widgetClass);
    ~ZListBox() override;

    /// Takes ownership. A negative index, or one past the end, appends. `updateLater` is accepted
    /// for the framework's sake: inserting never paints.
    void insertItem(ZListBoxItem* item, int index = -1, bool updateLater = true);
    /// Appends `rows` rows that `make` makes, each when it is first painted or asked for with
    /// item(): it gets a number from 0 on and gives an item, which the box owns. They are laid out
    /// as if one of them had `lines` (1 or 2) text lines and an icon of that size. Only once in a
    /// list.
    void appendLater(int rows, int lines, QSize icon, std::function<ZListBoxItem*(int)> make);
    /// Deletes all rows; nothing is current then. Emits nothing.
    void clear();
    int count() const { return int(rows_.size()); }
    /// The item of a row; nullptr if there is no such row.
    ZListBoxItem* item(int row) const;

    /// The current row; -1 while there is none.
    int currentItem() const;
    /// Makes a row current, scrolling as needed, and emits highlighted() if that is a change or the
    /// list was filled anew. A row past the end gives the last one; a negative one does nothing.
    void setCurrentItem(int row);
    bool itemChecked(int row) const;
    /// Whether a row is in view.
    bool itemVisible(int row);
    /// Scrolls so that a row is the lowest in view, as far as the list allows.
    void setBottomItem(int row);
    /// The rows in view: the first and how many (at most what is there).
    int topItem();
    int visibleItems();

    /// The font of a region of all rows, in the highlighted or the normal state. Region 2 is the
    /// text, the only one there is.
    void setItemFont(int region, const QFont& font, bool highlighted);
    /// Pixels from row to row.
    int rowHeight() const;
    /// What stands in the room below the rows, if that is not too small, until another text is set:
    /// why there are no more of them, or none.
    void setEmptyText(const QString& text);
    const QString& emptyText() const { return emptyText_; }
    /// What programs that read the screen are told of a row, by its number, besides its texts;
    /// asked whenever one of them asks.
    void setSpokenNotes(std::function<QString(int)> notes);

    QAccessibleInterface* makeAccessible() override;

signals:
    void highlighted(int row);
    void selected(int row);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;

private:
    class Accessible;
    class Model;
    class Delegate;
    friend class ZListBoxItem;

    /// A row: its item, or, while that is not made, its number for the one who makes it.
    struct Row {
        ZListBoxItem* item = nullptr;
        int number = 0;
    };

    void itemChanged(const ZListBoxItem& item);
    void fitRows(int lines, QSize icon);
    void makeVisibleRows();
    void queueCommit();
    void commitRows();
    void updateRowHeight();
    void fitViewport();
    void ensureVisible(int row);
    void selectRow(int row);
    int rowAt(QPoint point);
    QRect rowRect(int row);
    ZListRowPainter::State rowState(int row) const;
    void restartGlide();
    void paintEmptyText(QPainter& painter);
    void paintThumb(QPainter& painter);

    Model* model_;
    mutable std::vector<Row> rows_; ///< items are made when they are asked for
    std::function<ZListBoxItem*(int)> makeItem_;
    std::array<QFont, 2> fonts_; ///< normal, highlighted
    const ZSkinService::Look* look_;
    int iconWidth_ = 0;
    int iconHeight_ = 0;
    int lines_ = 1;
    int rowHeight_ = 0;
    bool uncommitted_ = false;
    mutable bool making_ = false; ///< an item that is not painted yet changes
    bool silent_ = false;         ///< a current row is being put back, which is no news
    ZTapOrDrag finger_;
    QString emptyText_;
    std::function<QString(int)> spokenNotes_;
    ZGlide* glide_; ///< of the current row's name, while the list has the focus
};
