#include "extras/operationbox.h"

#include "lang/texts.h"
#include "platform/keymap.h"
#include "platform/zscreen.h"
#include "widgets/boxparts.h"

#include <QFontMetrics>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

OperationBox::OperationBox(const QString& title)
    : QWidget(ZScreen::instance()),
      titleFont_(Box::titleFont()),
      textFont_(Box::textFont()),
      title_(Box::linesOf(title, titleFont_))
{
    hide();
    setObjectName(QStringLiteral("OperationBox"));
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_OpaquePaintEvent);
    ZScreen::instance()->place(this, ZScreen::Layer::Box);
}

void OperationBox::showLines(const QStringList& lines, int percent)
{
    // Programs that read the screen are told of each tenth, not of each block.
    constexpr int Tenth = 10;
    const bool isNews = isHidden() || percent / Tenth != percent_ / Tenth;
    const bool isOther = percent >= 0 && std::min(percent, 100) != percent_;
    const auto partCount = [this] { return boxWords().texts.size() + (percent_ < 0 ? 0 : 1); };
    const qsizetype partsBefore = partCount();
    const QFontMetrics metrics(textFont_.font());
    lines_.clear();
    for (const QString& line : lines)
        lines_.append(metrics.elidedText(line, Qt::ElideMiddle, Box::TextWidth));
    percent_ = std::min(percent, 100);
    setGeometry(Box::geometry(Box::blockHeight(title_, titleFont_) +
                              Box::blockHeight(lines_, textFont_) + progressHeight() +
                              Box::KeyBarHeight));
    if (partCount() != partsBefore)
        ZAccessible::tellParts(this);
    const bool comesUp = isHidden();
    show();
    update();
    if (comesUp)
        ZAccessible::tellAlert(this);
    else if (isNews)
        ZAccessible::tellContent(this);
    if (isOther)
        tellPercent(this);
}

int OperationBox::progressHeight() const
{
    return percent_ < 0 ? 0 : Box::ProgressHeight;
}

ZBoxWords OperationBox::boxWords() const
{
    QStringList texts = lines_;
    texts.removeAll(QString());
    return {title_.join(QLatin1Char(' ')), texts, {LANG_CANCEL}, true, false, percent_};
}

void OperationBox::chooseAnswer(int /*answer*/)
{
    emit cancelled();
}

void OperationBox::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.fillRect(rect(), Qt::black);
    painter.setPen(Qt::white);
    const int top = Box::drawLines(painter, titleFont_, title_, Box::Gap, Qt::AlignHCenter);
    const int end = top + Box::blockHeight(lines_, textFont_);
    Box::drawGround(painter, top, end - top);
    Box::drawLines(painter, textFont_, lines_, top + Box::Gap, Qt::AlignHCenter);
    if (percent_ >= 0)
        Box::drawProgress(painter, textFont_, end, percent_,
                          QString::number(percent_) + QLatin1Char('%'));
    Box::drawKeyBar(painter, textFont_, end + progressHeight(), {LANG_CANCEL});
}

void OperationBox::keyPressEvent(QKeyEvent* event)
{
    event->accept();
    // A key that is still held from before must not cancel what it has just begun.
    if (!event->isAutoRepeat() && PhoneKey::code(*event) == PhoneKey::SoftRight)
        emit cancelled();
}

void OperationBox::mouseReleaseEvent(QMouseEvent* event)
{
    event->accept();
    const QPoint point = event->position().toPoint();
    if (rect().contains(point) && point.y() >= height() - 2 * Box::KeyBarHeight)
        emit cancelled();
}
