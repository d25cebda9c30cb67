#pragma once

#include "platform/zaccessible.h"
#include "platform/zpicture.h"
#include "platform/ztapordrag.h"

#include <QPixmap>
#include <QPointer>
#include <QWidget>

#include <array>

class QVariantAnimation;
class ZGlide;

/// A menu of items with texts, icons and submenus, opened by show() as a box of the screen.
///
/// Up and Down move (going round, disabled items included), Return or the left soft key chooses or
/// opens a submenu, Right opens one, Left or the right soft key goes back. "1" to "9" choose one of
/// the first nine items at once; the digit stands at its right while it would. A tap chooses, a tap
/// beside the menu closes it and its openers. Choosing closes all of them, then runs the slots
/// that the item is connected to; these may change, disconnect and delete any menu.
///
/// With motion (ZMotion) a menu rises into its place; it answers to keys meanwhile. The text of the
/// highlighted item glides if it is too long for the menu.
///
/// A submenu leaves the icons of the menu that opened it in view and hides the rest beside it.
///
/// A menu whose parent is given is deleted with it; otherwise it is the screen's.
class ZOptionsMenu : public QWidget, public ZAccessibleSource
{
    Q_OBJECT

public:
    /// What the soft-key bar says from now on while a menu is open. Over an item that cannot be
    /// chosen it has nothing to say at the left.
    static void setSoftKeyTexts(const QString& select, const QString& back);
    /// What was set, for whatever else is chosen from like a menu.
    static std::array<QString, 2> softKeyTexts();

    /// An empty `rect` leaves the place to the menu: at the lower left, above the soft-key bar.
    ZOptionsMenu(const QRect& rect, QWidget* parent, const char* name, Qt::WindowFlags flags,
                 unsigned widgetClass);
    ~ZOptionsMenu() override;

    /// Inserts an item at position `index` (one past the end, or negative, appends). Tabs at the
    /// beginning of a text indent it past the icon, and all others with it: the texts of a menu
    /// begin below each other. The icon is copied, and decoded when
    /// the item is first painted; the submenu is not owned.
    void insertItem(const QString& text, ZOptionsMenu* submenu, const ZPicture& icon, bool enabled,
                    int id, int index);
    /// Changes the text and icon of the item `id`. False if there is none.
    bool changeItem(int id, const QString& text, const ZPicture& icon);
    void setItemEnabled(int id, bool enabled);
    bool isItemEnabled(int id) const;
    /// Lets choosing the item run an argument-free slot of `receiver` ("slot_Copy()"). A slot that
    /// is connected already stays connected once. False if there is no such item or slot.
    bool connectItem(int id, QObject* receiver, const char* slot);
    bool disconnectItem(int id, QObject* receiver, const char* slot);
    bool isItemConnected(int id, QObject* receiver, const char* slot) const;

    int count() const;
    /// Positions run from 0 to count() - 1.
    int idAt(int position) const;
    QString textAt(int position) const;
    QPixmap iconAt(int position) const;
    ZOptionsMenu* submenuAt(int position) const;
    /// The position of the highlighted item; -1 while the menu is empty.
    int currentPosition() const;

    /// The id of the item last chosen; -1 before the first.
    int getActiveItemId() const;
    /// The part of the screen within which the menu is placed. One without a size gives its top
    /// left corner, the room reaching to the soft-key bar.
    void setLimitRect(const QRect& rect);

    QAccessibleInterface* makeAccessible() override;

public slots:
    /// Closes the menu, its submenus and its openers.
    void closeAll();

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    class Accessible;

    /// So many items have a digit that chooses them.
    static constexpr int DigitCount = 9;

    struct Connection {
        QPointer<QObject> receiver;
        QByteArray slot;
        bool operator==(const Connection&) const = default;
    };
    struct Item {
        QString text;
        QPointer<ZOptionsMenu> submenu;
        ZPicture icon;
        bool enabled = true;
        int id = 0;
        QList<Connection> connections;
    };

    Item* itemOf(int id);
    const Item* itemOf(int id) const;
    QRect room() const;
    QRect placeFor(QSize content) const;
    QRect placeBeside(QSize content) const;
    QSize contentSize() const;
    int roomAtRight() const;
    bool scrolls() const { return count() > visibleRows(); }
    bool hasSubmenus() const;
    bool isSubmenuOpen() const;
    bool canChoose(int position) const;
    int visibleRows() const;
    QRect rowRect(int position) const;
    QRect textRect(int position) const;
    QString shownText(int position) const;
    int indent() const;
    void noteTabs(const QString& text);
    int positionAt(QPoint point) const;
    void moveTo(int position);
    void scrollTo(int first);
    void choose(int position);
    void chooseByDigit(int digit);
    void openSubmenu(ZOptionsMenu* submenu);
    void tellSoftKeys();
    void rise();
    void restartGlide();
    void paintRow(QPainter& painter, int position) const;
    void paintText(QPainter& painter, int position) const;
    void paintRowEnd(QPainter& painter, int position) const;
    void paintScrollMarks(QPainter& painter) const;

    QRect limit_;
    unsigned widgetClass_;
    QList<Item> items_;
    QPointer<ZOptionsMenu> opener_;
    int current_ = -1;
    int first_ = 0; ///< position of the topmost visible row
    int activeId_ = -1;
    ZTapOrDrag finger_;
    QRect place_;                       ///< when it has risen
    QVariantAnimation* rise_ = nullptr; ///< made when it is first needed
    ZGlide* glide_ = nullptr;           ///< likewise
    qsizetype tabs_ = 0;                ///< the most that a text has had at its beginning
};
