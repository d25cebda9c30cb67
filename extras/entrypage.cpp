#include "extras/entrypage.h"

#include "platform/keymap.h"
#include "platform/zlistbox.h"
#include "platform/zpixmap.h"
#include "platform/zscreen.h"
#include "platform/zskinservice.h"
#include "platform/zsoftkey.h"

#include <QApplication>
#include <QLabel>
#include <QVBoxLayout>

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

void EntryPage::setRows(const QList<Row>& rows, bool digits)
{
    rows_ = rows;
    digits_ = digits;
    list_->clear();
    bool haveNotes = false;
    for (int i = 0; i < int(rows.size()); ++i) {
        const QPixmap& icon = rows.at(i).icon;
        auto* item =
            new ZListBoxItem(list_, icon.isNull() ? QStringLiteral("%M") : QStringLiteral("%I%M"));
        item->setPixmap(0, icon);
        item->appendSubItem(1, rowName(i), false);
        item->appendSubItem(1, fittingDetail(rows.at(i)), false);
        list_->insertItem(item);
        haveNotes = haveNotes || !rows.at(i).notes.isEmpty();
    }
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
    list_->item(index)->setSubItemText(1, 0, rowName(index));
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

QString EntryPage::rowName(int index) const
{
    const QString& name = rows_.at(index).name;
    return digits_ && index < MostDigits ? QString::number(index + 1) + QStringLiteral("  ") + name
                                         : name;
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

void EntryPage::showNotes(int row)
{
    for (int i = 0; i < 2; ++i)
        notes_[i]->setText(elided(notes_[i]->font(), rows_.value(row).notes.value(i),
                                  Qt::ElideMiddle, ZScreen::Width - 2 * LineMargin));
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
