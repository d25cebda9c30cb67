#pragma once

#include <QPointer>
#include <QWidget>

#include <array>

class ZOptionsMenu;

/// The bar at the bottom of a main widget that says what the two soft keys do, each with an
/// optional menu. A tap on a side works like its key.
///
/// While its widget gets no keys the bar says what the soft keys do in the one that does
/// (ZScreen::setSoftKeys()), which may be nothing. Texts that do not fit beside each other are cut.
class ZSoftKey : public QWidget
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
    /// The menu that a key opens; nullptr for none. Not owned.
    void setOptMenu(int key, ZOptionsMenu* menu);
    ZOptionsMenu* optMenu(int key) const;

    /// What pressing the key does: opens its menu. Without one it emits pressed(). False when there
    /// is neither a menu nor anybody connected.
    bool activate(int key);

signals:
    /// A key that has no menu was pressed or tapped.
    void pressed(int key);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    struct Side {
        QString text;
        QPointer<ZOptionsMenu> menu;
    };
    using Texts = std::array<QString, 2>;

    Texts wantedTexts() const;
    void refresh();

    std::array<Side, 2> sides_;
    Texts shown_;
};
