#include "extras/operationbox.h"

#include "lang/texts.h"
#include "platform/keymap.h"
#include "platform/zapplication.h"
#include "widgets/boxparts.h"

#include <QFontMetrics>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

OperationBox::OperationBox(const QString& title)
    : BoxFrame(title), waitDepth_(ZApplication::waitDepth() + 1)
{
    setObjectName(QStringLiteral("OperationBox"));
}

void OperationBox::showLines(const QStringList& lines, int percent)
{
    if (isHidden() && ZApplication::waitDepth() > waitDepth_)
        return;
    // Programs that read the screen are told of each tenth, not of each block.
    constexpr int Tenth = 10;
    const bool isNews = isHidden() || percent / Tenth != percent_ / Tenth;
    const bool isOther = percent >= 0 && std::min(percent, 100) != percent_;
    const auto partCount = [this] { return boxWords().texts.size() + (percent_ < 0 ? 0 : 1); };
    const qsizetype partsBefore = partCount();
    const QFontMetrics metrics(textFont().font());
    QStringList fitting;
    for (const QString& line : lines)
        fitting.append(metrics.elidedText(line, Qt::ElideMiddle, Box::TextWidth));
    setLines(fitting);
    percent_ = std::min(percent, 100);
    fit(progressHeight() + Box::KeyBarHeight);
    if (partCount() != partsBefore)
        ZAccessible::tellParts(this);
    const bool comesUp = isHidden();
    show();
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

QString OperationBox::percentText() const
{
    return QString::number(percent_) + QLatin1Char('%');
}

ZBoxWords OperationBox::boxWords() const
{
    QStringList texts = lines();
    texts.removeAll(QString());
    return {titleLines().join(QLatin1Char(' ')), texts, {LANG_CANCEL}, true, false, percent_};
}

void OperationBox::chooseAnswer(int /*answer*/)
{
    emit cancelled();
}

void OperationBox::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    drawUpToText(painter);
    if (percent_ >= 0)
        Box::drawProgress(painter, textFont(), textEnd(), percent_, percentText());
    Box::drawKeyBar(painter, textFont(), textEnd() + progressHeight(), {LANG_CANCEL});
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
    if (isAtKeyBar(*event))
        emit cancelled();
}
