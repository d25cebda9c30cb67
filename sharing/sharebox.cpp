#include "sharing/sharebox.h"

#include "platform/keymap.h"
#include "platform/zscreen.h"
#include "platform/zskinservice.h"
#include "sharing/sharetexts.h"
#include "widgets/boxparts.h"

#include <QLocale>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

namespace
{

constexpr int TitleHeight = 24;
constexpr int Margin = 8;
constexpr int BarHeight = 16;
constexpr int CountHeight = 18;
/// As much text as leaves the box on the screen.
constexpr int MostTextHeight = 230;
constexpr int TextFlags = Qt::AlignHCenter | Qt::TextWordWrap | Qt::TextWrapAnywhere;

QFont sized(QFont font, int pixels, QFont::Weight weight)
{
    font.setPixelSize(pixels);
    font.setWeight(weight);
    return font;
}

QFont textFont(const QWidget& box)
{
    return sized(box.font(), 13, std::min(QFont::Normal, box.font().weight()));
}

QString dataSize(qint64 bytes)
{
    return QLocale::c().formattedDataSize(bytes, 1, QLocale::DataSizeTraditionalFormat);
}

} // namespace

ShareBox::ShareBox(const QFont& font) : QWidget(ZScreen::instance())
{
    hide();
    setObjectName(QStringLiteral("ShareBox"));
    setFont(font);
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_OpaquePaintEvent);
    ZScreen::instance()->place(this, ZScreen::Layer::Box);
}

void ShareBox::showProgress(const QString& text, qint64 sent, qint64 size)
{
    result_ = false;
    text_ = text;
    size_ = std::max<qint64>(size, 0);
    sent_ = std::clamp<qint64>(sent, 0, size_);
    fit();
}

void ShareBox::showResult(const QString& text)
{
    result_ = true;
    text_ = text;
    fit();
}

int ShareBox::percent() const
{
    return result_ || size_ == 0 ? -1 : int(double(sent_) * 100 / double(size_));
}

int ShareBox::bodyHeight() const
{
    const QRect room(0, 0, Box::Width - 2 * Margin, MostTextHeight);
    const int text = QFontMetrics(textFont(*this)).boundingRect(room, TextFlags, text_).height();
    return std::min(text, MostTextHeight) + 2 * Margin;
}

void ShareBox::fit()
{
    int height = TitleHeight + bodyHeight();
    if (!result_)
        height += BarHeight + CountHeight + Margin + Box::KeyBarHeight;
    setGeometry(Box::geometry(height));
    update();
    show();
}

void ShareBox::paintEvent(QPaintEvent* /*event*/)
{
    const auto& dark = ZSkinService::look(ZSkinService::clsMainWidget);
    const auto& light = ZSkinService::look(ZSkinService::clsListBox);
    QPainter painter(this);
    painter.fillRect(rect(), dark.background);
    painter.setPen(dark.text);
    painter.setFont(sized(font(), 15, QFont::Black));
    painter.drawText(QRect(0, 0, Box::Width, TitleHeight), Qt::AlignCenter,
                     ShareTexts::instance().title);
    painter.setFont(textFont(*this));
    const int end = height() - (result_ ? 1 : Box::KeyBarHeight);
    painter.fillRect(1, TitleHeight, Box::Width - 2, end - TitleHeight, light.background);
    if (!result_)
        painter.drawText(QRect(0, end, Box::Width - 6, Box::KeyBarHeight),
                         Qt::AlignRight | Qt::AlignVCenter, ShareTexts::instance().cancel);
    painter.setPen(light.text);
    const QRect body(Margin, TitleHeight + Margin, Box::Width - 2 * Margin,
                     bodyHeight() - 2 * Margin);
    painter.drawText(body, TextFlags, text_);
    if (!result_)
        paintBar(painter, QRect(Margin, body.bottom() + 1 + Margin, body.width(), BarHeight));
}

void ShareBox::paintBar(QPainter& painter, const QRect& area) const
{
    const auto& light = ZSkinService::look(ZSkinService::clsListBox);
    painter.fillRect(area, light.border);
    const QRect inside = area.adjusted(1, 1, -1, -1);
    painter.fillRect(inside, light.background);
    if (percent() < 0)
        return;
    QRect filled = inside;
    filled.setWidth(int(double(inside.width()) * double(sent_) / double(size_)));
    painter.fillRect(filled, light.highlight);
    painter.drawText(inside, Qt::AlignCenter, QStringLiteral("%1%").arg(percent()));
    painter.drawText(area.translated(0, BarHeight + 2), Qt::AlignCenter,
                     QStringLiteral("%1 / %2").arg(dataSize(sent_), dataSize(size_)));
}

void ShareBox::keyPressEvent(QKeyEvent* event)
{
    event->accept();
    // A key that is still held from before must not dismiss what it has just brought up.
    if (event->isAutoRepeat())
        return;
    if (result_)
        emit closed();
    else if (PhoneKey::code(*event) == PhoneKey::SoftRight)
        emit cancelled();
}

void ShareBox::mouseReleaseEvent(QMouseEvent* event)
{
    event->accept();
    const QPoint point = event->position().toPoint();
    if (!rect().contains(point))
        return;
    if (result_)
        emit closed();
    else if (point.y() >= height() - 2 * Box::KeyBarHeight)
        emit cancelled();
}
