#pragma once

#include "platform/zaccessible.h"

#include <QPointer>
#include <QStringList>
#include <QWidget>

#include <array>

class ZOptionsMenu;

/// The bar at the bottom of a main widget that says what the two soft keys do, each with an
/// optional menu. A tap on a side works like its key.
///
/// Where the right key has no text, a status may stand: small, with less of a name if there is not
/// the room for it, and never over the text of the left key.
///
/// While its widget gets no keys the bar says what the soft keys do in the one that does
/// (ZScreen::setSoftKeys()), which may be nothing. Texts that do not fit beside each other are cut.
class ZSoftKey : public QWidget, public ZAccessibleSource
{
    Q_OBJECT

public:
    enum Key { Left = 0, Right = 1 };

    /// `resource` names a layout of the phone's skin and is not used; `receiver` is the widget that
    /// the bar serves (informative).
    ZSoftKey(const QString& resource, QWidget* parent, QWidget* receiver);
    ~ZSoftKey() override;

    /// The text over a key (0 left, 1 right). `priority` was for keys that shared a place.
    void setText(int key, const QString& text, int priority = 0);
    QString text(int key) const;
    /// What stands over a key now: its text, or that of what has the keys instead.
    QString shownText(int key) const;
    /// What stands at the right: a name, which is cut at its beginning where it must be, and behind
    /// it a text that is shown as a whole or, where it has no room, not at all. Both may be empty.
    void setStatus(const QString& name, const QString& text);
    /// What of the status stands there now: both texts as they are shown.
    QStringList shownStatus() const;
    /// The menu that a key opens; nullptr for none. Not owned.
    void setOptMenu(int key, ZOptionsMenu* menu);
    ZOptionsMenu* optMenu(int key) const;

    /// What pressing the key does: opens its menu. Without one it emits pressed(). False when there
    /// is neither a menu nor anybody connected.
    bool activate(int key);

    QAccessibleInterface* makeAccessible() override;

signals:
    /// A key that has no menu was pressed or tapped.
    void pressed(int key);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    class Accessible;

    struct Side {
        QString text;
        QPointer<ZOptionsMenu> menu;
    };
    using Texts = std::array<QString, 2>;

    /// What of the bar is not a key's.
    struct Status {
        QString name;
        QString text;
        bool operator==(const Status&) const = default;
    };
    struct Content {
        Texts texts;
        Status status;
        bool operator==(const Content&) const = default;
    };

    /// Behind the keys, to programs that read the screen.
    static constexpr int StatusPart = 2;

    bool isInert() const;
    Texts wantedTexts() const;
    Content wanted() const;
    Status fitting(int room) const;
    QRect inner() const;
    QFont fontOf(int size) const;
    void refresh();
    void tellNames(const Content& before);
    void paintStatus(QPainter& painter) const;

    std::array<Side, 2> sides_;
    Status status_;
    Content shown_;
};
