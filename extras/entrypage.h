#pragma once

#include "platform/zaccessible.h"
#include "widgets/listpage.h"

#include <QList>
#include <QPixmap>
#include <QString>
#include <QStringList>

#include <functional>

class QLabel;
class ZListBoxItem;

/// A page with a list, of entries or of what can be done: lines that tell what it is about above
/// it, and lines about the highlighted row below it. Return, a second tap, or the digit of one of
/// the first nine rows if they have digits, chooses a row; the soft keys do what they say, and one
/// without a text does nothing. Everything below the page on the screen is inert while it is shown.
class EntryPage : public ListPage, public ZAccessibleSource
{
    Q_OBJECT
    Q_PROPERTY(QStringList lines READ lines)
    Q_PROPERTY(QStringList notes READ notes)

public:
    struct Row {
        QString name;
        QString detail;    ///< below the name; what is behind a tab stands at the right edge
        QStringList notes; ///< about the row, below the list; up to two lines
        QPixmap icon{};    ///< before both; all rows of a page have one, or none has
        Qt::TextElideMode cut = Qt::ElideRight; ///< where a detail without room is cut
    };

    explicit EntryPage(const QString& title);

    /// What stands above the list. A line that does not fit is broken into two,
    /// without its middle if that is too little.
    void setLines(const QStringList& lines);
    /// `digits`: the first nine rows can be chosen by digits, which stand before their names.
    void setRows(const QList<Row>& rows, bool digits = false);
    /// The same for a list of any length: each row, by its number, is made when it is first painted
    /// or asked for, and its notes once more whenever it is highlighted. All have a detail, notes
    /// and an icon of that size.
    void setRowsLater(int count, QSize icon, std::function<Row(int)> make);
    /// What stands below the rows; said while there are none.
    void setEmptyText(const QString& text);
    /// Puts another row in the place of one.
    void setRow(int index, const Row& row);
    void setSoftKeys(const QString& left, const QString& right);

    /// The highlighted row; -1 while there is none.
    int currentRow() const;
    QStringList lines() const;
    QStringList notes() const;

    QAccessibleInterface* makeAccessible() override;

signals:
    void chosen(int row);
    void leftPressed();
    void rightPressed();

protected:
    void softKeyPressed(int key) override;
    void otherKeyPressed(int code) override;
    void showEvent(QShowEvent* event) override;

private:
    class Accessible;

    QStringList rowNotes(int row) const;
    void clearRows();
    ZListBoxItem* makeItem(const Row& row, int index) const;
    void endRows(bool haveNotes);
    QString rowName(const Row& row, int index) const;
    QString fittingDetail(const Row& row) const;
    void showNotes(int row);

    QList<Row> rows_;
    std::function<Row(int)> makeRow_; ///< where rows are made later; there are no others then
    bool digits_ = false;
    QLabel* lines_;
    QLabel* notes_[2];
};
