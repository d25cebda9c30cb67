#include "extras/entrypage.h"

#include "platform/shownname.h"
#include "platform/zaccessiblewidget.h"
#include "platform/zlistbox.h"
#include "platform/zpixmap.h"
#include "platform/zscreen.h"
#include "platform/zsoftkey.h"

#include <QApplication>
#include <QLabel>

#include <utility>

namespace
{

constexpr int DetailFontSize = 13;
constexpr int MostDigits = 9;

/// A page looks like what it comes up over.
QFont fontBelow()
{
    const QWidget* below = ZScreen::instance()->active();
    return below != nullptr ? below->font() : QApplication::font();
}

QString elided(const QFont& font, const QString& text, Qt::TextElideMode mode, int room)
{
    return QFontMetrics(font).elidedText(text, mode, room);
}

/// A text that has room in two lines, broken between its words; of one that has not,
/// and of each word that has none in a line, the middle is left out.
QString inTwoLines(const QFont& font, const QString& text, int room)
{
    QStringList words =
        elided(font, text, Qt::ElideMiddle, 2 * room - room / 4).split(QLatin1Char(' '));
    for (QString& word : words)
        word = elided(font, word, Qt::ElideMiddle, room);
    return words.join(QLatin1Char(' '));
}

} // namespace

/// It is called by its title, and says what stands above its rows.
class EntryPage::Accessible final : public ZAccessibleWidget
{
public:
    explicit Accessible(EntryPage* page) : ZAccessibleWidget(page, QAccessible::Dialog) {}

    QString text(QAccessible::Text kind) const override
    {
        const auto* page = qobject_cast<EntryPage*>(object());
        if (page != nullptr && kind == QAccessible::Name)
            return withMarks(page->mainWidgetTitle());
        return page != nullptr && kind == QAccessible::Description
                   ? page->lines().join(QLatin1Char('\n'))
                   : ZAccessibleWidget::text(kind);
    }

    QAccessible::State state() const override
    {
        QAccessible::State state = ZAccessibleWidget::state();
        state.modal = true;
        return state;
    }
};

QAccessibleInterface* EntryPage::makeAccessible()
{
    return new Accessible(this);
}

EntryPage::EntryPage(const QString& title)
    : ListPage(title, "EntryPage", fontBelow(), DetailFontSize),
      lines_(addLine(Line::Above, Tone::Quiet))
{
    lines_->setWordWrap(true);
    lines_->hide();
    for (QLabel*& note : notes_) {
        note = addLine(Line::Below, Tone::Quiet);
        note->hide();
    }
    list()->setAccessibleName(title);
    list()->setSpokenNotes([this](int row) { return rowNotes(row).join(QLatin1Char(' ')); });
    connect(list(), &ZListBox::highlighted, this, &EntryPage::showNotes);
    connect(list(), &ZListBox::selected, this, &EntryPage::chosen);
}

void EntryPage::setLines(const QStringList& lines)
{
    QStringList fitting;
    for (const QString& line : lines)
        fitting.append(inTwoLines(lines_->font(), line, LineRoom));
    lines_->setText(fitting.join(QLatin1Char('\n')));
    lines_->setVisible(!lines.isEmpty());
}

void EntryPage::clearRows()
{
    rows_.clear();
    makeRow_ = nullptr;
    digits_ = false;
    list()->clear();
}

void EntryPage::setRows(const QList<Row>& rows, bool digits)
{
    clearRows();
    rows_ = rows;
    digits_ = digits;
    bool haveNotes = false;
    for (int i = 0; i < int(rows.size()); ++i) {
        list()->insertItem(makeItem(rows.at(i), i));
        haveNotes = haveNotes || !rows.at(i).notes.isEmpty();
    }
    endRows(haveNotes);
}

void EntryPage::setRowsLater(int count, QSize icon, std::function<Row(int)> make)
{
    constexpr int Lines = 2;
    clearRows();
    makeRow_ = std::move(make);
    list()->appendLater(count, Lines, icon,
                        [this](int number) { return makeItem(makeRow_(number), number); });
    endRows(count > 0);
}

ZListBoxItem* EntryPage::makeItem(const Row& row, int index) const
{
    auto* item =
        new ZListBoxItem(list(), row.icon.isNull() ? QStringLiteral("%M") : QStringLiteral("%I%M"));
    item->setPixmap(0, row.icon);
    item->appendSubItem(1, rowName(row, index), false);
    item->appendSubItem(1, fittingDetail(row), false);
    return item;
}

void EntryPage::endRows(bool haveNotes)
{
    for (QLabel* note : notes_)
        note->setVisible(haveNotes);
    list()->setCurrentItem(0);
}

void EntryPage::setEmptyText(const QString& text)
{
    list()->setEmptyText(text);
}

void EntryPage::setRow(int index, const Row& row)
{
    rows_[index] = row;
    list()->item(index)->setSubItemText(1, 0, rowName(row, index));
    list()->item(index)->setSubItemText(1, 1, fittingDetail(row));
    if (index == list()->currentItem())
        showNotes(index);
}

void EntryPage::setSoftKeys(const QString& left, const QString& right)
{
    softKeys().setText(ZSoftKey::Left, left);
    softKeys().setText(ZSoftKey::Right, right);
}

int EntryPage::currentRow() const
{
    return list()->currentItem();
}

QStringList EntryPage::lines() const
{
    return lines_->text().split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

QStringList EntryPage::notes() const
{
    return {notes_[0]->text(), notes_[1]->text()};
}

QString EntryPage::rowName(const Row& row, int index) const
{
    return digits_ && index < MostDigits
               ? QString::number(index + 1) + QStringLiteral("  ") + row.name
               : row.name;
}

QString EntryPage::fittingDetail(const Row& row) const
{
    constexpr int IconGap = 3;
    const QString& detail = row.detail;
    const qsizetype tab = detail.indexOf(QLatin1Char('\t'));
    const QString end = tab < 0 ? QString() : detail.mid(tab);
    const int icon = row.icon.isNull() ? 0 : pixmapSize(row.icon).width() + IconGap;
    const int room =
        detailRoom() - icon -
        (tab < 0 ? 0 : QFontMetrics(detailFont()).horizontalAdvance(end.mid(1)) + EndGap);
    return elided(detailFont(), detail.left(tab), row.cut, room) + end;
}

QStringList EntryPage::rowNotes(int row) const
{
    return makeRow_ && row >= 0 ? makeRow_(row).notes : rows_.value(row).notes;
}

void EntryPage::showNotes(int row)
{
    const QStringList notes = rowNotes(row);
    for (int i = 0; i < 2; ++i)
        notes_[i]->setText(elided(notes_[i]->font(), notes.value(i), Qt::ElideMiddle, LineRoom));
}

void EntryPage::softKeyPressed(int key)
{
    if (softKeys().text(key).isEmpty())
        return;
    if (key == ZSoftKey::Left)
        emit leftPressed();
    else
        emit rightPressed();
}

void EntryPage::showEvent(QShowEvent* event)
{
    ListPage::showEvent(event);
    ZAccessible::tellAlert(this);
}

void EntryPage::otherKeyPressed(int code)
{
    const int digit = code - '0';
    if (digits_ && digit >= 1 && digit <= MostDigits && digit <= rows_.size())
        emit chosen(digit - 1);
}
