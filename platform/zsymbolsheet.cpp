#include "platform/zsymbolsheet.h"

#include "platform/keymap.h"
#include "platform/zlift.h"
#include "platform/zoptionsmenu.h"
#include "platform/zscreen.h"
#include "platform/zskinservice.h"
#include "platform/zsoftkey.h"

#include <QMouseEvent>
#include <QPainter>

namespace
{

constexpr int CellWidth = 72;
constexpr int CellHeight = 28;
constexpr int FootHeight = 12;
constexpr int SheetBorder = 1;
constexpr int FieldGap = 2;   ///< between the field and the sheet
constexpr int FrameWidth = 2; ///< around the current symbol
constexpr int SymbolSize = 20;
constexpr int DigitSize = 11;
constexpr int DotSize = 4;
constexpr int DotStep = 8;
constexpr QSize SheetSize(ZSymbolSheet::Columns* CellWidth + 2 * SheetBorder,
                          ZSymbolSheet::OnPage / ZSymbolSheet::Columns * CellHeight + FootHeight +
                              2 * SheetBorder);

} // namespace

ZSymbolSheet::ZSymbolSheet(QObject* owner) : QWidget(ZScreen::instance())
{
    hide();
    setObjectName(QStringLiteral("ZSymbolSheet"));
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_OpaquePaintEvent);
    resize(SheetSize);
    ZScreen::instance()->place(this, ZScreen::Layer::Box);
    const ZSkinService::Look& look = ZSkinService::look(ZSkinService::clsOptionsMenu);
    new ZLift(this, look.background, look.border);
    connect(ZScreen::instance(), &ZScreen::pressedOutside, this, [this] {
        if (ZScreen::instance()->active() == this)
            hide();
    });
    connect(owner, &QObject::destroyed, this, &QObject::deleteLater);
}

QString ZSymbolSheet::symbols()
{
    // Those that names of files have most often come first.
    return QStringLiteral(".,-_()'&+"
                          "@!=#*~%$^"
                          "[]{};:?\"/"
                          "\\|<>`€£§°");
}

QString ZSymbolSheet::current() const
{
    return symbols().mid(current_, 1);
}

void ZSymbolSheet::openBeside(const QRect& field)
{
    const int below = field.bottom() + 1 + FieldGap;
    const int floor = ZScreen::Height - ZSkinService::SoftKeyHeight;
    const int top = below + height() <= floor ? below : field.top() - FieldGap - height();
    QWidget::move((ZScreen::Width - width()) / 2, std::max(top, 0));
    current_ = 0;
    const auto tapped = [this](int key) {
        if (key == ZSoftKey::Left)
            choose();
        else
            hide();
    };
    ZScreen::instance()->setSoftKeys(this, {ZOptionsMenu::softKeyTexts(), tapped});
    show();
}

QRect ZSymbolSheet::cellRect(int place) const
{
    return {SheetBorder + place % Columns * CellWidth, SheetBorder + place / Columns * CellHeight,
            CellWidth, CellHeight};
}

int ZSymbolSheet::placeAt(QPoint point) const
{
    for (int place = 0; place < OnPage; ++place) {
        if (cellRect(place).contains(point))
            return place;
    }
    return -1;
}

void ZSymbolSheet::move(int steps)
{
    const int count = int(symbols().size());
    current_ = (current_ + steps + count) % count;
    ZAccessible::tellFocus(this, current_);
    update();
}

void ZSymbolSheet::focusInEvent(QFocusEvent* event)
{
    QWidget::focusInEvent(event);
    ZAccessible::tellFocusSoon(this);
}

void ZSymbolSheet::choose()
{
    const QString symbol = current();
    hide();
    emit chosen(symbol);
}

void ZSymbolSheet::keyPressEvent(QKeyEvent* event)
{
    event->accept();
    const int code = PhoneKey::code(*event);
    if (code == PhoneKey::Left || code == PhoneKey::Right)
        return move(code == PhoneKey::Left ? -1 : 1);
    if (code == PhoneKey::Up || code == PhoneKey::Down)
        return move(code == PhoneKey::Up ? -Columns : Columns);
    // A key still held from opening the sheet must neither turn nor choose.
    if (event->isAutoRepeat())
        return;
    if (code == '*' || code == '#') {
        move(code == '*' ? OnPage : -OnPage);
    } else if (code >= '1' && code <= '9') {
        current_ = page() * OnPage + code - '1';
        choose();
    } else if (PhoneKey::isSelect(code) || code == PhoneKey::SoftLeft) {
        choose();
    } else if (code == PhoneKey::Clear || code == PhoneKey::SoftRight) {
        hide();
    }
}

void ZSymbolSheet::mousePressEvent(QMouseEvent* event)
{
    event->accept();
    const int place = placeAt(event->position().toPoint());
    if (place >= 0)
        current_ = page() * OnPage + place;
    update();
}

void ZSymbolSheet::mouseReleaseEvent(QMouseEvent* event)
{
    event->accept();
    const QPoint point = event->position().toPoint();
    if (placeAt(point) == current_ % OnPage)
        choose();
    else if (placeAt(point) < 0 && rect().contains(point))
        move(OnPage);
}

void ZSymbolSheet::paintEvent(QPaintEvent* /*event*/)
{
    const ZSkinService::Look& look = ZSkinService::look(ZSkinService::clsOptionsMenu);
    QPainter painter(this);
    painter.fillRect(rect(), look.border);
    painter.fillRect(rect().adjusted(SheetBorder, SheetBorder, -SheetBorder, -SheetBorder),
                     look.background);
    for (int place = 0; place < OnPage; ++place)
        paintCell(painter, place);
    paintFoot(painter);
}

void ZSymbolSheet::paintCell(QPainter& painter, int place) const
{
    const ZSkinService::Look& look = ZSkinService::look(ZSkinService::clsOptionsMenu);
    const QRect cell = cellRect(place);
    const bool isCurrent = place == current_ % OnPage;
    if (isCurrent) {
        painter.fillRect(cell, look.mark);
        painter.fillRect(cell.adjusted(FrameWidth, FrameWidth, -FrameWidth, -FrameWidth),
                         look.highlight);
    }
    QFont digits = font();
    digits.setPixelSize(DigitSize);
    painter.setFont(digits);
    painter.setPen(look.secondaryText);
    painter.drawText(cell.adjusted(6, 2, 0, 0), Qt::AlignLeft | Qt::AlignTop,
                     QString::number(place + 1));
    QFont large = font();
    large.setPixelSize(SymbolSize);
    painter.setFont(large);
    painter.setPen(isCurrent ? look.highlightText : look.text);
    painter.drawText(cell, Qt::AlignCenter, symbols().mid(page() * OnPage + place, 1));
}

/// A dot for each nine, that which is shown being filled, beside the key that turns them.
void ZSymbolSheet::paintFoot(QPainter& painter) const
{
    const ZSkinService::Look& look = ZSkinService::look(ZSkinService::clsOptionsMenu);
    const int pages = int(symbols().size()) / OnPage;
    const int left = (width() - (pages * DotStep - (DotStep - DotSize))) / 2;
    const int top = height() - SheetBorder - (FootHeight + DotSize) / 2;
    painter.setPen(look.secondaryText);
    for (int each = 0; each < pages; ++each) {
        const QRect dot(left + each * DotStep, top, DotSize - 1, DotSize - 1);
        painter.setBrush(each == page() ? QBrush(look.text) : QBrush(look.background));
        painter.drawRect(dot);
    }
}
