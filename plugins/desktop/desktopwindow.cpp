#include "plugins/desktop/desktopwindow.h"

#include "files/paths.h"
#include "platform/shownname.h"
#include "platform/zskinservice.h"
#include "plugins/support/brokenlines.h"
#include "plugins/support/plugintexts.h"

#include <QPainter>
#include <QVBoxLayout>

namespace
{

/// What a user calls a kind of file: ".pdf".
QString kindOf(const QString& file)
{
    constexpr qsizetype Longest = 16;
    const QString suffix = suffixOf(file);
    if (suffix.isEmpty())
        return pluginTexts().thisFile;
    const QString shown = suffix.size() > Longest ? suffix.left(Longest) + QChar(0x2026) : suffix;
    return QLatin1Char('.') + withMarks(shown);
}

QString problemOf(const QString& file, Handover outcome)
{
    switch (outcome) {
    case Handover::NoFile:
        return file.isEmpty() ? pluginTexts().noFile : pluginTexts().noSuchFile;
    case Handover::Failed:
        return pluginTexts().programFailed.arg(kindOf(file));
    default:
        return pluginTexts().noProgram.arg(kindOf(file));
    }
}

QString adviceFor(Handover outcome)
{
    switch (outcome) {
    case Handover::NoOpener:
        return pluginTexts().noOpener;
    case Handover::NoProgram:
        return pluginTexts().installProgram;
    case Handover::Failed:
        return pluginTexts().anotherWay;
    default:
        return {};
    }
}

} // namespace

class DesktopWindow::Message : public QWidget
{
public:
    explicit Message(DesktopWindow* window) : QWidget(window), window_(*window)
    {
        setAttribute(Qt::WA_OpaquePaintEvent);
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override
    {
        constexpr int Margin = 16;
        constexpr int Gap = 8;
        constexpr int ProblemSize = 15;
        constexpr int AdviceSize = 13;
        constexpr int Bold = 75;
        const auto& look = ZSkinService::look(ZSkinService::clsListBox);
        const QRect area = rect().adjusted(Margin, Margin, -Margin, -Margin);
        // However long the problem is, there is room for the advice.
        const Block problem(window_.problem(), area.width(), (area.height() - Gap) / 2,
                            ZSkinService::font(font().family(), ProblemSize, Bold));
        const Block advice(window_.advice(), area.width(), area.height() - Gap - problem.height(),
                           ZSkinService::font(font().family(), AdviceSize));
        QPainter painter(this);
        painter.fillRect(rect(), look.background);
        painter.setFont(problem.font);
        painter.setPen(look.text);
        const int whole = problem.height() + Gap + advice.height();
        const int top = area.center().y() - whole / 2;
        const int end = paintLines(painter, {area.left(), top, area.width(), whole}, problem.lines);
        painter.setFont(advice.font);
        painter.setPen(look.secondaryText);
        paintLines(painter, {area.left(), end + Gap, area.width(), whole}, advice.lines);
    }

private:
    /// A text broken for a room.
    struct Block {
        Block(const QString& text, int width, int height, const QFont& itsFont)
            : font(itsFont),
              lines(brokenLines(text, font, width, height / QFontMetrics(font).height()))
        {
        }

        int height() const { return int(lines.size()) * QFontMetrics(font).height(); }

        QFont font;
        QStringList lines;
    };

    const DesktopWindow& window_;
};

DesktopWindow::DesktopWindow(const QString& file, Handover outcome)
    : PluginWindow(QStringLiteral("Desktop")),
      problem_(problemOf(file, outcome)),
      advice_(adviceFor(outcome))
{
    contentLayout()->addWidget(new Message(this));
    showTitle(file.isEmpty() ? QStringLiteral("Desktop") : lastPart(file), QString());
}
