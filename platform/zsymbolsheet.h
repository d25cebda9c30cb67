#pragma once

#include "platform/zaccessible.h"

#include <QWidget>

/// A sheet of the characters that a keypad has no keys for, opened by openBeside() as a box of the
/// screen. It shows nine at a time, in the order of the keys 1 to 9.
///
/// A digit chooses what stands in its place. Arrows move, beyond the edge to the next nine and at
/// the end round, and Return or the left soft key chooses; "*" turns to the next nine, "#" back.
/// The clear key, the right soft key or a tap beside it closes the sheet without a choice.
class ZSymbolSheet : public QWidget, public ZAccessibleSource
{
    Q_OBJECT

public:
    static constexpr int Columns = 3;
    static constexpr int OnPage = 9;

    /// It is the screen's. It goes with `owner`, for which it is made.
    explicit ZSymbolSheet(QObject* owner);

    /// Opens at the first symbol, below `field` or, without room there, above it. The rectangle is
    /// in the screen's coordinates.
    void openBeside(const QRect& field);
    /// The symbol that Return would choose.
    QString current() const;
    /// All symbols, in the order of the sheet; a multiple of OnPage.
    static QString symbols();

    QAccessibleInterface* makeAccessible() override;

signals:
    /// The sheet is closed already.
    void chosen(const QString& symbol);

protected:
    void paintEvent(QPaintEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    class Accessible;

    int page() const { return current_ / OnPage; }
    QRect cellRect(int place) const;
    int placeAt(QPoint point) const;
    void move(int steps);
    void choose();
    void paintCell(QPainter& painter, int place) const;
    void paintFoot(QPainter& painter) const;

    int current_ = 0; ///< index of the highlighted symbol
};
