#include "widgets/textinput.h"

#include "files/paths.h"
#include "files/regularfile.h"
#include "platform/keymap.h"
#include "platform/shownname.h"
#include "platform/zapplication.h"
#include "platform/zmultilineedit.h"
#include "platform/zoptionsmenu.h"
#include "platform/zpicture.h"
#include "platform/zscreen.h"
#include "platform/zskinservice.h"
#include "platform/ztheme.h"

#include <QDebug>
#include <QFontInfo>
#include <QFontMetrics>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollArea>
#include <QScrollBar>
#include <QTextBoundaryFinder>
#include <QUrl>

#include <algorithm>
#include <array>
#include <utility>

namespace
{

constexpr int PageWidth = 220;
constexpr int FieldWidth = 215;
constexpr int LargestHeight = 300;
constexpr int Left = 10;
constexpr int TopOfLargest = 10;
constexpr int CopyText = 2;
constexpr int PasteText = 4;
/// How much of the page's foot answers to a finger.
constexpr int AnswerHeight = 28;

/// Parts of a text that no line is broken within are as wide as a page at most: what is wider would
/// be painted beyond it.
QString withFittingParts(const QString& text, const QFont& font, Qt::TextElideMode mode)
{
    constexpr int Edges = 4;
    const QFontMetrics metrics(font);
    QTextBoundaryFinder finder(QTextBoundaryFinder::Line, text);
    QString result;
    for (qsizetype start = 0; start < text.size();) {
        const qsizetype next = finder.toNextBoundary();
        const qsizetype end = next < 0 ? text.size() : next;
        result += metrics.elidedText(text.mid(start, end - start), mode, PageWidth - Edges);
        start = end;
    }
    return result;
}

/// The font of a page's title, which is larger by a step than the rest.
QFont pageTitleFont(QFont font)
{
    constexpr double Step = 1.2;
    font.setPixelSize(qRound(QFontInfo(font).pixelSize() * Step));
    font.setBold(true);
    return font;
}

/// An answer in half of the bar.
QString answerText(const QString& text, const QFont& font)
{
    constexpr int Edges = 8;
    return QFontMetrics(font).elidedText(text, Qt::ElideRight, PageWidth / 2 - Edges);
}

QString keyCell(const QString& text)
{
    return QStringLiteral("<td align=\"center\" ><font size=\"3\" color=\"#eeeeee\">") + text +
           QStringLiteral("</font></td>");
}

/// What stands for a picture in a page, without quotes, where a blank would end it. The toolkit
/// reads only files whose paths are text; others are put into the page.
QString imageSource(const QString& path)
{
    if (path.isValidUtf16())
        return QString::fromLatin1(QUrl::toPercentEncoding(path, "/"));
    constexpr qsizetype LargestIcon = 1024 * 1024;
    const QByteArray picture = readRegular(path, LargestIcon).value_or(QByteArray());
    return QStringLiteral("data:image/png;base64,") + QString::fromLatin1(picture.toBase64());
}

QString blackTable()
{
    return QStringLiteral("<table width=\"100%\" border=\"0\" cellspacing=\"0\" cellpadding=\"0\" "
                          "bgcolor=\"#000000\"><tr>");
}

/// A view without scroll bars, whose keys are the dialog's.
class PageView : public QScrollArea
{
public:
    explicit PageView(QWidget* parent) : QScrollArea(parent)
    {
        setFrameShape(QFrame::NoFrame);
        setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        setFocusPolicy(Qt::NoFocus);
    }

protected:
    void keyPressEvent(QKeyEvent* event) override { event->ignore(); }
};

} // namespace

TextInput::TextInput(const QString& programFolder)
    : QWidget(ZScreen::instance()),
      view_(new PageView(this)),
      label(new QLabel),
      progDir(programFolder)
{
    hide();
    setObjectName(QStringLiteral("TextInput"));
    resize(ZScreen::Width, ZScreen::Height);
    ZScreen::instance()->place(this, ZScreen::Layer::Box);
    view_->setObjectName(QStringLiteral("TextInput"));
    view_->setFixedWidth(PageWidth);
    label->setFixedWidth(PageWidth);
    label->setTextFormat(Qt::RichText);
    label->setWordWrap(true);
    // A click is the dialog's.
    label->setTextInteractionFlags(Qt::NoTextInteraction);
    label->setAlignment(Qt::AlignTop);
    label->setAutoFillBackground(true);
    const ZTheme& theme = ZTheme::current();
    QPalette colours = label->palette();
    colours.setColor(QPalette::Window, theme.ground);
    colours.setColor(QPalette::WindowText, theme.text);
    label->setPalette(colours);
    view_->setWidget(label);
    edit = new ZMultiLineEdit(label, false, 1, "ZLineEdit");
    edit->setFixedWidth(FieldWidth);
}

void TextInput::Init()
{
    menu = new ZOptionsMenu(QRect(), nullptr, nullptr, {}, ZSkinService::clsOptionsMenu);
    menu->setFont(font());
    connect(this, &QObject::destroyed, menu, &QObject::deleteLater);
    auto icon = ZPicture::fromFile(progDir + QStringLiteral("res/img/copy.png"));
    menu->insertItem(copyText, nullptr, icon, true, CopyText, CopyText);
    icon.cover(ZPicture::fromFile(progDir + QStringLiteral("res/img/paste.png")));
    menu->insertItem(pasteText, nullptr, icon, true, PasteText, PasteText);
    menu->connectItem(CopyText, this, "Copy()");
    menu->connectItem(PasteText, this, "Paste()");
    keyBarHtml = QStringLiteral("<br><br><br>") + blackTable() +
                 keyCell(answerText(yesText, font())) + keyCell(answerText(noText, font())) +
                 QStringLiteral("</tr></table>");
}

QString TextInput::titleHtml(const QString& title, const QString& icon) const
{
    const QString image =
        icon.isEmpty() ? QString()
                       : QStringLiteral("<img src=%1 ><br>").arg(imageSource(progDir + icon));
    return blackTable() + QStringLiteral("<td align=\"center\" >") + image +
           QStringLiteral("<font size=\"4\" color=\"#eeeeee\"><b>") +
           withFittingParts(title, pageTitleFont(font()), Qt::ElideRight).toHtmlEscaped() +
           QStringLiteral("</b></font></td></tr></table>");
}

int TextInput::showText(const QString& title, const QString& prompt, const QString& icon)
{
    running = true;
    accepted = true;
    menu->closeAll();
    edit->setText(inputText);
    edit->selectAll();
    setWords(title, prompt);
    // A name may hold anything; it must be shown and not be taken for markup.
    layOut(titleHtml(title, icon) + QStringLiteral("<p align=\"center\" >") +
           withFittingParts(withMarks(prompt), font(), Qt::ElideMiddle).toHtmlEscaped() +
           QStringLiteral("</p>"));
    show();
    edit->setFocus();
    ZAccessible::tellAlert(this);
    // Of a page that is too high the field and the answers must be seen.
    view_->verticalScrollBar()->setValue(view_->verticalScrollBar()->maximum());
    if (!ZApplication::waitUntil([this] { return !running; }))
        finish(false);
    inputText = edit->text();
    return accepted ? 1 : 0;
}

/// For programs that read the screen, to which the page says too much in one.
void TextInput::setWords(const QString& title, const QString& prompt)
{
    setAccessibleName(title);
    setAccessibleDescription(prompt);
    label->setAccessibleName(withMarks(prompt));
    edit->setAccessibleName(withMarks(prompt));
}

ZBoxWords TextInput::boxWords() const
{
    return {accessibleName(), {accessibleDescription()}, {yesText, noText}, false, false};
}

void TextInput::chooseAnswer(int answer)
{
    finish(answer == 0);
}

int TextInput::pageHeight() const
{
    return label->heightForWidth(PageWidth);
}

void TextInput::layOut(const QString& page)
{
    // No page is measured smaller than a height that was fixed for another one.
    label->setMinimumHeight(0);
    label->setText(page);
    edit->move(1, pageHeight());
    label->setText(page + keyBarHtml);
    const int height = pageHeight();
    label->setFixedHeight(height);
    tellSoftKeys(std::min(height, LargestHeight));
    if (height >= LargestHeight) {
        view_->setFixedHeight(LargestHeight);
        view_->move(Left, TopOfLargest);
        menu->setLimitRect(QRect(QPoint(Left, TopOfLargest), QSize()));
        return;
    }
    const int top = (ZScreen::Height - height) / 2;
    view_->setFixedHeight(height);
    view_->move(Left, top);
    menu->setLimitRect(QRect(QPoint(Left, top), QSize()));
}

/// The soft-key bar below says what the page's own says. Where the page reaches into it that is one
/// black with it, and words on it would be cut in halves, below the same ones.
void TextInput::tellSoftKeys(int height)
{
    const bool isWhole = (ZScreen::Height - height) / 2 >= ZSkinService::SoftKeyHeight;
    ZScreen::instance()->setSoftKeys(
        this, {isWhole ? std::array{yesText, noText} : std::array<QString, 2>(), {}});
}

void TextInput::finish(bool confirmed)
{
    if (running)
        accepted = confirmed;
    running = false;
    hide();
}

/// A frame sets the page off from the list behind it.
void TextInput::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.setPen(ZTheme::current().frame);
    painter.drawRect(view_->geometry().adjusted(-1, -1, 0, 0));
}

void TextInput::keyPressEvent(QKeyEvent* event)
{
    event->accept();
    const int code = PhoneKey::code(*event);
    qDebug("KEY: %d", code);
    if (PhoneKey::isArrow(code) || event->isAutoRepeat())
        return;
    if (code == PhoneKey::Modifier)
        menu->show();
    else if (code == PhoneKey::SoftLeft)
        finish(true);
    else if (code == PhoneKey::SoftRight)
        finish(false);
    else if (!running)
        hide();
}

void TextInput::mousePressEvent(QMouseEvent* event)
{
    event->accept();
    pressed_ = true;
}

void TextInput::mouseReleaseEvent(QMouseEvent* event)
{
    event->accept();
    // The press may have been for the menu.
    if (!std::exchange(pressed_, false))
        return;
    const QPoint point = event->position().toPoint() - view_->pos();
    const bool onPage =
        view_->rect().contains(point) && point.y() >= view_->height() - AnswerHeight;
    const bool onBar = event->position().y() >= ZScreen::Height - ZSkinService::SoftKeyHeight;
    if (onPage || onBar)
        finish(event->position().x() < ZScreen::Width / 2.0);
}

void TextInput::Copy()
{
    edit->copy();
}

void TextInput::Paste()
{
    edit->paste();
}

QString TextInput::getProgramDir(const QString& path)
{
    return folderPart(path);
}
