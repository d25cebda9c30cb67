#include "sharing/sharebox.h"

#include "platform/keymap.h"
#include "sharing/sharetexts.h"
#include "widgets/boxparts.h"

#include <QLocale>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <utility>

namespace
{

QString dataSize(qint64 bytes)
{
    const ShareTexts& texts = ShareTexts::instance();
    const std::pair<QLatin1String, const QString&> units[] = {
        {QLatin1String("bytes"), texts.bytes},
        {QLatin1String("kB"), texts.kilobytes},
        {QLatin1String("MB"), texts.megabytes},
        {QLatin1String("GB"), texts.gigabytes},
    };
    const QString size =
        QLocale::c().formattedDataSize(bytes, 1, QLocale::DataSizeTraditionalFormat);
    const qsizetype number = size.indexOf(QLatin1Char(' ')) + 1;
    for (const auto& [unit, text] : units) {
        if (QStringView(size).mid(number) == unit)
            return size.left(number) + text;
    }
    return size;
}

} // namespace

ShareBox::ShareBox() : BoxFrame(ShareTexts::instance().title)
{
    setObjectName(QStringLiteral("ShareBox"));
}

void ShareBox::showProgress(const QString& text, qint64 sent, qint64 size)
{
    say(text, false);
    size_ = std::max<qint64>(size, 0);
    sent_ = std::clamp<qint64>(sent, 0, size_);
    showFitting();
}

void ShareBox::showResult(const QString& text)
{
    say(text, true);
    showFitting();
}

/// Programs that read the screen are told what is new in it, not each block that is sent.
void ShareBox::say(const QString& text, bool isResult)
{
    if (text == text_ && isResult == result_)
        return;
    text_ = text;
    result_ = isResult;
    ZAccessible::tellParts(this);
    ZAccessible::tellContent(this);
    ZAccessible::tellAlert(this);
}

ZBoxWords ShareBox::boxWords() const
{
    const ShareTexts& texts = ShareTexts::instance();
    const QStringList answers = result_ ? QStringList() : QStringList(texts.cancel);
    return {texts.title, {text_}, answers, !result_, result_};
}

void ShareBox::chooseAnswer(int /*answer*/)
{
    if (result_)
        emit closed();
    else
        emit cancelled();
}

int ShareBox::percent() const
{
    return result_ || size_ == 0 ? -1 : int(double(sent_) * 100 / double(size_));
}

void ShareBox::showFitting()
{
    setText(text_);
    fit(result_ ? 0 : Box::ProgressHeight + Box::KeyBarHeight);
    show();
}

QString ShareBox::progressText() const
{
    if (percent() < 0)
        return {};
    return QStringLiteral("%1%  %2 / %3")
        .arg(QString::number(percent()), dataSize(sent_), dataSize(size_));
}

void ShareBox::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    drawUpToText(painter);
    if (result_)
        return;
    Box::drawProgress(painter, textFont(), textEnd(), std::max(percent(), 0), progressText());
    Box::drawKeyBar(painter, textFont(), textEnd() + Box::ProgressHeight,
                    {ShareTexts::instance().cancel});
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
    if (result_ && rect().contains(event->position().toPoint()))
        emit closed();
    else if (!result_ && isAtKeyBar(*event))
        emit cancelled();
}
