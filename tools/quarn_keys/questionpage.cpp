#include "tools/quarn_keys/questionpage.h"

#include "platform/zaccessible.h"
#include "platform/zskinservice.h"
#include "platform/ztheme.h"
#include "plugins/support/plugintexts.h"
#include "tools/quarn_keys/keypadpicture.h"

#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

namespace
{

constexpr int Margin = 8;
constexpr int AskTop = 6;
constexpr int NameTop = 22;
constexpr int PictureTop = 48;
constexpr int MessageTop = 202;
constexpr int MessageHeight = 46;
constexpr int HintHeight = 28;
constexpr int SmallSize = 12;
constexpr int NameSize = 15;
constexpr int HintSize = 11;
constexpr int Bold = 75;
constexpr int Centred = Qt::AlignHCenter | Qt::AlignVCenter | Qt::TextWordWrap;

} // namespace

QuestionPage::QuestionPage(QWidget* parent) : QWidget(parent)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFocusPolicy(Qt::StrongFocus);
}

void QuestionPage::ask(const Question& question)
{
    question_ = question;
    setAccessibleName(pluginTexts().pressThisKey + QStringLiteral(": ") + question.name);
    setAccessibleDescription(question.message);
    ZAccessible::tellContent(this);
    update();
}

void QuestionPage::showHeld(double share)
{
    if (held_ == share)
        return;
    held_ = share;
    update();
}

void QuestionPage::paintEvent(QPaintEvent* /*event*/)
{
    const ZTheme& theme = ZTheme::current();
    const QString family = font().family();
    QPainter painter(this);
    painter.fillRect(rect(), theme.ground);
    painter.setFont(ZSkinService::font(family, SmallSize));
    painter.setPen(theme.secondText);
    painter.drawText(QRect(0, AskTop, width(), NameTop - AskTop), Centred,
                     pluginTexts().pressThisKey);
    painter.setFont(ZSkinService::font(family, NameSize, Bold));
    painter.setPen(theme.text);
    painter.drawText(QRect(0, NameTop, width(), PictureTop - NameTop - 4), Centred, question_.name);
    KeypadPicture::paint(painter, {(width() - KeypadPicture::Size.width()) / 2, PictureTop},
                         question_.code, question_.given);
    paintMessage(painter);
    paintHint(painter);
}

void QuestionPage::paintMessage(QPainter& painter)
{
    if (question_.message.isEmpty())
        return;
    const ZTheme& theme = ZTheme::current();
    const QChar sign(question_.isWarning ? u'!' : u'\u2713');
    painter.setFont(ZSkinService::font(font().family(), SmallSize));
    painter.setPen(question_.isWarning ? theme.warning : theme.done);
    painter.drawText(QRect(Margin, MessageTop, width() - 2 * Margin, MessageHeight), Centred,
                     sign + QStringLiteral(" ") + question_.message);
}

void QuestionPage::paintHint(QPainter& painter)
{
    constexpr int BarHeight = 4;
    const ZTheme& theme = ZTheme::current();
    const QRect area(Margin, height() - HintHeight - 2, width() - 2 * Margin, HintHeight);
    const bool isSkipping = held_ >= SkipShare;
    painter.setFont(ZSkinService::font(font().family(), HintSize));
    painter.setPen(isSkipping ? theme.text : theme.secondText);
    painter.drawText(area, Centred,
                     isSkipping ? pluginTexts().releaseToSkip : pluginTexts().holdToSkip);
    if (held_ <= 0)
        return;
    QRect bar(area.left(), area.top() - BarHeight, area.width(), BarHeight);
    painter.fillRect(bar, theme.hairline);
    bar.setWidth(int(bar.width() * std::min(held_, 1.0)));
    painter.fillRect(bar, theme.mark);
}

void QuestionPage::mousePressEvent(QMouseEvent* event)
{
    emit touched(true, event->timestamp());
}

void QuestionPage::mouseReleaseEvent(QMouseEvent* event)
{
    emit touched(false, event->timestamp());
}
