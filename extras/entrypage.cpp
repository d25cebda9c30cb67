#include "extras/entrypage.h"

#include "platform/keymap.h"
#include "platform/shownname.h"
#include "platform/zaccessiblewidget.h"
#include "platform/zlistbox.h"
#include "platform/zpixmap.h"
#include "platform/zscreen.h"
#include "platform/zskinservice.h"
#include "platform/zsoftkey.h"

#include <QApplication>
#include <QLabel>
#include <QVBoxLayout>

#include <utility>

namespace
{

constexpr int DetailFont = 13;
constexpr int LineMargin = 6;
constexpr int MostDigits = 9;

QFont sized(QFont font, int pixels)
{
    font.setPixelSize(pixels);
    return font;
}

QLabel* makeLine(QWidget* parent, const QFont& font, unsigned widgetClass)
{
    const auto& look = ZSkinService::look(widgetClass);
    auto* line = new QLabel(parent);
    line->setTextFormat(Qt::PlainText);
    line->setFont(sized(font, DetailFont));
    line->setContentsMargins(LineMargin, 1, LineMargin, 1);
    line->setAutoFillBackground(true);
    QPalette colours = line->palette();
    colours.setColor(QPalette::Window, look.background);
    colours.setColor(QPalette::WindowText, look.secondaryText);
    line->setPalette(colours);
    return line;
}

QString elided(const QFont& font, const QString& text, Qt::TextElideMode mode, int room)
{
    return QFontMetrics(font).elidedText(text, mode, room);
}

/// A text that has room in two lines of the screen, broken between its words; of one that has not,
/// and of each word that has none in a line, the middle is left out.
QString inTwoLines(const QFont& font, const QString& text)
{
    constexpr int Room = ZScreen::Width - 2 * LineMargin;
    QStringList words =
        elided(font, text, Qt::ElideMiddle, 2 * Room - Room / 4).split(QLatin1Char(' '));
    for (QString& word : words)
        word = elided(font, word, Qt::ElideMiddle, Room);
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
    : ZMainWidget(TitleUnderlined, ZScreen::instance(), "EntryPage", {})
{
    hide();
    ZScreen::instance()->place(this, ZScreen::Layer::Box);
    // A page looks like what it comes up over.
    const QWidget* below = ZScreen::instance()->active();
    setFont(below != nullptr ? below->font() : QApplication::font());
    setMainWidgetTitle(title);
    lines_ = makeLine(this, font(), ZSkinService::clsMainWidget);
    lines_->setWordWrap(true);
    lines_->hide();
    list_ = new ZListBox(QStringLiteral("%M"), this, 0, ZSkinService::clsListBox);
    for (const bool highlighted : {false, true})
        list_->setItemFont(2, sized(font(), DetailFont), highlighted);
    contentLayout()->addWidget(lines_);
    contentLayout()->addWidget(list_, 1);
    for (QLabel*& note : notes_) {
        note = makeLine(this, font(), ZSkinService::clsMainWidget);
        note->hide();
        contentLayout()->addWidget(note);
    }
    keys_ = new ZSoftKey(QString(), this, this);
    contentLayout()->addWidget(keys_);
    list_->setAccessibleName(title);
    list_->setSpokenNotes([this](int row) { return rowNotes(row).join(QLatin1Char(' ')); });
    setFocusProxy(list_);
    connect(list_, &ZListBox::highlighted, this, &EntryPage::showNotes);
    connect(list_, &ZListBox::selected, this, &EntryPage::chosen);
    connect(keys_, &ZSoftKey::pressed, this, &EntryPage::softKey);
}

void EntryPage::setLines(const QStringList& lines)
{
    QStringList fitting;
    for (const QString& line : lines)
        fitting.append(inTwoLines(lines_->font(), line));
    lines_->setText(fitting.join(QLatin1Char('\n')));
    lines_->setVisible(!lines.isEmpty());
}

void EntryPage::clearRows()
{
    rows_.clear();
    makeRow_ = nullptr;
    digits_ = false;
    list_->clear();
}

void EntryPage::setRows(const QList<Row>& rows, bool digits)
{
    clearRows();
    rows_ = rows;
    digits_ = digits;
    bool haveNotes = false;
    for (int i = 0; i < int(rows.size()); ++i) {
        list_->insertItem(makeItem(rows.at(i), i));
        haveNotes = haveNotes || !rows.at(i).notes.isEmpty();
    }
    endRows(haveNotes);
}

void EntryPage::setRowsLater(int count, QSize icon, std::function<Row(int)> make)
{
    constexpr int Lines = 2;
    clearRows();
    makeRow_ = std::move(make);
    list_->appendLater(count, Lines, icon,
                       [this](int number) { return makeItem(makeRow_(number), number); });
    endRows(count > 0);
}

ZListBoxItem* EntryPage::makeItem(const Row& row, int index) const
{
    auto* item =
        new ZListBoxItem(list_, row.icon.isNull() ? QStringLiteral("%M") : QStringLiteral("%I%M"));
    item->setPixmap(0, row.icon);
    item->appendSubItem(1, rowName(row, index), false);
    item->appendSubItem(1, fittingDetail(row), false);
    return item;
}

void EntryPage::endRows(bool haveNotes)
{
    for (QLabel* note : notes_)
        note->setVisible(haveNotes);
    list_->setCurrentItem(0);
}

void EntryPage::setEmptyText(const QString& text)
{
    list_->setEmptyText(text);
}

void EntryPage::setRow(int index, const Row& row)
{
    rows_[index] = row;
    list_->item(index)->setSubItemText(1, 0, rowName(row, index));
    list_->item(index)->setSubItemText(1, 1, fittingDetail(row));
    if (index == list_->currentItem())
        showNotes(index);
}

void EntryPage::setSoftKeys(const QString& left, const QString& right)
{
    keys_->setText(ZSoftKey::Left, left);
    keys_->setText(ZSoftKey::Right, right);
}

int EntryPage::currentRow() const
{
    return list_->currentItem();
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
    constexpr int IconGap = 4;
    const QString& detail = row.detail;
    constexpr int Beside = 24; // the edges, the scroll bar and a gap
    const QFont font = sized(this->font(), DetailFont);
    const qsizetype tab = detail.indexOf(QLatin1Char('\t'));
    const QString end = tab < 0 ? QString() : detail.mid(tab);
    const int icon = row.icon.isNull() ? 0 : pixmapSize(row.icon).width() + IconGap;
    const int room = ZScreen::Width - Beside - icon -
                     (tab < 0 ? 0 : QFontMetrics(font).horizontalAdvance(end.mid(1)));
    return elided(font, detail.left(tab), row.cut, room) + end;
}

QStringList EntryPage::rowNotes(int row) const
{
    return makeRow_ && row >= 0 ? makeRow_(row).notes : rows_.value(row).notes;
}

void EntryPage::showNotes(int row)
{
    const QStringList notes = rowNotes(row);
    for (int i = 0; i < 2; ++i)
        notes_[i]->setText(elided(notes_[i]->font(), notes.value(i), Qt::ElideMiddle,
                                  ZScreen::Width - 2 * LineMargin));
}

void EntryPage::softKey(int key)
{
    if (keys_->text(key).isEmpty())
        return;
    if (key == ZSoftKey::Left)
        emit leftPressed();
    else
        emit rightPressed();
}

void EntryPage::showEvent(QShowEvent* event)
{
    ZMainWidget::showEvent(event);
    ZAccessible::tellAlert(this);
}

void EntryPage::keyPressEvent(QKeyEvent* event)
{
    event->accept();
    // A key that is still held from before the page came up must not answer it.
    if (event->isAutoRepeat())
        return;
    const int code = PhoneKey::code(*event);
    const int digit = code - '0';
    if (code == PhoneKey::SoftLeft || code == PhoneKey::SoftRight)
        softKey(code == PhoneKey::SoftLeft ? ZSoftKey::Left : ZSoftKey::Right);
    else if (digits_ && digit >= 1 && digit <= MostDigits && digit <= rows_.size())
        emit chosen(digit - 1);
}
